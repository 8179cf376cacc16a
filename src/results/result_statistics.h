// SPDX-License-Identifier: Apache-2.0
// What a result carries besides its outcome to be trusted: the score's 95 % interval and the
// slices it comes from, the passes it combines, and how much the rest of the machine
// disturbed it. Written into the JSON report and read back by both report readers.
#pragma once

#include "model/noise_floor.h"
#include "model/progress_series.h"
#include "model/rate_slices.h"
#include "model/sensor_trace.h"
#include "sensors/interference.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct ResultStatistics {
    int passes = 1;
    std::optional<RateUncertainty> uncertainty; // of the score, as it is shown ("± x %")
    std::optional<RateUncertainty> withinRun;   // of a single pass, from its slices alone
    std::optional<NoiseFloor> noiseFloor;       // the run-to-run floor added to withinRun
    std::vector<PhaseSlice> slices;             // of the pass whose outcome is kept
    std::vector<double> passScores;             // in run order, when several passes were combined
    std::optional<Interference> interference;
    std::optional<double> frequencyDropPercent;
    bool noisy = false;                 // interference above the thresholds: "(noisy machine)"
    SensorTrace trace;                  // of the pass whose outcome is kept
    ResultEnergy energy;                // of that pass
    std::string traceSummary;           // "steady", "thermal: 97 °C, clocks −18 %", ...
    std::optional<double> startCelsius; // the CPU as the benchmark started
    bool operator==(const ResultStatistics&) const = default;
};

// "± 1.3 %", or empty without an interval.
std::string uncertaintyText(const std::optional<RateUncertainty>& uncertainty);

// Adds the statistics' members to a result object of the report.
void writeStatistics(nlohmann::ordered_json& result, const ResultStatistics& statistics);

// Reads them from a result object. Members that are absent (reports from before results
// carried them) stay empty; a member that is present but malformed gives its problem, e.g.
// "sliceRates is not a list of numbers".
std::optional<std::string> readStatistics(const nlohmann::json& result, ResultStatistics& statistics);

} // namespace quarbel
