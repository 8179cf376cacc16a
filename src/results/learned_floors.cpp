// SPDX-License-Identifier: Apache-2.0
#include "results/learned_floors.h"

#include "model/number_format.h"

#include <map>
#include <vector>

namespace quarbel {

NoiseFloors learnNoiseFloors(const HistoryListing& history, const std::string& machineId,
                             const std::string& version) {
    NoiseFloors floors;
    if (machineId.empty()) return floors; // no way to tell this machine's runs from others'
    std::map<std::pair<BenchmarkID, RunLength>, std::vector<double>> scores;
    for (const SavedRun& run : history.runs) { // newest first
        if (run.machineId != machineId || run.version != version || run.mode != "standard") continue;
        const RunLength length = run.quick ? RunLength::quick : RunLength::full;
        for (const SavedResult& result : run.results) {
            const auto id = benchmarkFromRawValue(result.id);
            if (!id || result.status != "ok" || result.statistics.noisy || !(result.score > 0)) continue;
            auto& list = scores[{*id, length}];
            if (list.size() < static_cast<std::size_t>(kMostRunsForFloor)) list.push_back(result.score);
        }
    }
    for (const auto& [key, list] : scores)
        if (const auto percent = learnedFloorPercent(list))
            floors.learn(key.first, key.second, {*percent, static_cast<int>(list.size())});
    return floors;
}

std::string noiseFloorText(const NoiseFloor& floor) {
    const std::string head = "Run-to-run floor " + format(floor.percent, 1) + " %, ";
    if (floor.runs > 0)
        return head + "learned from " + std::to_string(floor.runs) + " earlier quiet runs on this machine";
    return head + "built in (fewer than " + std::to_string(kRunsToLearnFloor) +
           " earlier quiet runs on this machine)";
}

} // namespace quarbel
