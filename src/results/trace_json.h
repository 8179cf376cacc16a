// SPDX-License-Identifier: Apache-2.0
// The sensor trace and the energy of a result in the JSON report. A trace is written as one
// packed base64 text: every column on its step (keptTraceColumn), as differences in a Rice
// code, so that a full suite's traces stay a few percent of its report. Reports of earlier
// versions, whose trace is an object of columns of hexadecimal steps, read as they always did.
#pragma once

#include "model/sensor_trace.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace quarbel {

nlohmann::ordered_json traceJson(const SensorTrace& trace);
// `score` adds each measurement's points per joule.
nlohmann::ordered_json energyJson(const ResultEnergy& energy, double score);

// Read back, either form; a malformed member gives its problem, e.g. "trace ends early" or
// "trace.columns.cpuWatts is not as long as seconds". readTrace(traceJson(t)) is t with every
// column kept to its step.
std::optional<std::string> readTrace(const nlohmann::json& value, SensorTrace& trace);
std::optional<std::string> readEnergy(const nlohmann::json& value, ResultEnergy& energy);

} // namespace quarbel
