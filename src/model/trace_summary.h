// SPDX-License-Identifier: Apache-2.0
// One line on what a benchmark's sensor trace shows: why it may have run slower than it
// could, or "steady".
#pragma once

#include "model/sensor_trace.h"

#include <string>

namespace quarbel {

// The CPU counts as hot from this close to its critical temperature, or from kHotCelsius
// when the sensor names no critical one.
inline constexpr double kHotMarginCelsius = 5.0;
inline constexpr double kHotCelsius = 95.0;
// Package power this close to its long-term limit, two samples running, is the limit at work.
inline constexpr double kAtLimitFraction = 0.95;
// Clocks this much lower at the end than at the start are worth a remark.
inline constexpr double kClockDropPercent = 5.0;
// Other processes using this many cores on average took a noticeable share.
inline constexpr double kOtherCoresWorthNaming = 0.25;

// "power-limited from 4.1 s (package 28 W cap)", "thermal: 97 °C, clocks −18 %", "GPU
// power-limited from 2.0 s", "another process took 0.8 cores", "on battery", "clocks −12 %
// with no thermal or power limit seen", "steady"; the first two that apply, joined by "; ".
// Empty for an empty trace.
std::string traceSummary(const SensorTrace& trace);

// How much lower the mean core clock was over the last quarter than over the first, in
// percent (positive for a drop); none without clocks over at least four samples.
std::optional<double> clockDropPercent(const SensorTrace& trace);

} // namespace quarbel
