// SPDX-License-Identifier: Apache-2.0
// Sustained stability: whether a workload kept its pace to the end of its budget. A
// machine that throttles shows it as a last fifth slower than the first.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace quarbel {

// One progress report of a workload: its units done after `elapsedSeconds` of its budget.
struct ProgressPoint {
    double elapsedSeconds = 0;
    std::int64_t unitsDone = 0;
};

inline constexpr int kMinimumStabilityReports = 5;
// Below this a result is marked as throttling.
inline constexpr double kThrottlingStabilityPercent = 90.0;

// The rate over the last fifth of the series' time over the rate over its first fifth,
// in percent; the units done at a fifth's edge are interpolated between reports, from a
// start at (0, 0). Nothing with fewer than five reports, or when the first fifth did no
// work. Reports must come in time order; a report that goes back in time or in units
// (a new pass) makes the series unusable and gives nothing.
std::optional<double> stabilityPercent(std::span<const ProgressPoint> series);

} // namespace quarbel
