// SPDX-License-Identifier: Apache-2.0
// The sensor trace and the energy of a result in the JSON report. A trace column is kept as
// its lowest and highest value and one hexadecimal byte per point (a step between the two,
// "ff" for a missing sample), so that a full suite's traces stay a small part of its report.
#pragma once

#include "model/sensor_trace.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace quarbel {

nlohmann::ordered_json traceJson(const SensorTrace& trace);
// `score` adds each measurement's points per joule.
nlohmann::ordered_json energyJson(const ResultEnergy& energy, double score);

// Read back; a malformed member gives its problem, e.g. "trace.columns.cpuWatts is not as long as seconds".
std::optional<std::string> readTrace(const nlohmann::json& value, SensorTrace& trace);
std::optional<std::string> readEnergy(const nlohmann::json& value, ResultEnergy& energy);

} // namespace quarbel
