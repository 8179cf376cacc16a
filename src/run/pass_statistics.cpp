// SPDX-License-Identifier: Apache-2.0
#include "run/pass_statistics.h"

namespace quarbel {

PassUncertainty passesUncertainty(BenchmarkID id, RunLength length,
                                  const std::vector<BenchmarkOutcome>& passes,
                                  const std::vector<std::vector<PhaseSlice>>& passSlices,
                                  const NoiseFloors& floors) {
    PassUncertainty result;
    if (passes.size() < 2) {
        if (passSlices.empty()) return result;
        result.withinRun = passRateUncertainty(passSlices.back());
        if (!result.withinRun) return result;
        result.noiseFloor = floors.floorFor(id, length);
        result.uncertainty = withRunToRunFloor(*result.withinRun, result.noiseFloor->percent / 100.0);
        return result;
    }
    std::vector<double> scores;
    std::vector<RateUncertainty> own;
    for (std::size_t pass = 0; pass < passes.size(); ++pass) {
        if (passes[pass].status != OutcomeStatus::ok) return result;
        scores.push_back(passes[pass].score);
        if (pass < passSlices.size())
            if (const auto measured = passRateUncertainty(passSlices[pass])) own.push_back(*measured);
    }
    result.uncertainty = passUncertainty(scores, own);
    return result;
}

bool passesDone(const std::vector<BenchmarkOutcome>& passes, int planned,
                const std::optional<StabilityTarget>& untilStable,
                const std::optional<RateUncertainty>& uncertainty) {
    const auto done = static_cast<int>(passes.size());
    if (done >= planned) return true;
    if (!untilStable || done == 0) return false;
    if (passes.back().status != OutcomeStatus::ok) return true;
    return uncertainty && uncertainty->ci95Percent() <= untilStable->ci95Percent;
}

} // namespace quarbel
