// SPDX-License-Identifier: Apache-2.0
#include "run/run_state.h"

#include "model/comparison.h"
#include "model/number_format.h"
#include "model/trace_summary.h"

#include <algorithm>

namespace quarbel {

RunState::RunState(std::vector<BenchmarkID> runIDs, bool follows, bool accuracy, double scale,
                   std::optional<StabilityTarget> untilStableTarget)
    : ids(std::move(runIDs)), followsActiveTest(follows), accuracyMode(accuracy), budgetScale(scale),
      passes(accuracy ? kAccuracyPasses : 1) {
    // Accuracy Mode's three passes win when both are on.
    if (!accuracy && untilStableTarget) {
        untilStable = untilStableTarget;
        passes = std::max(untilStableTarget->maxPasses, 1);
    }
}

std::string RunState::startLine() const {
    const std::string mode = std::string(accuracyMode ? "Accuracy" : "Standard") +
                             (quick() ? " Mode, quick: a tenth of each time budget" : " Mode");
    if (ids.size() == 1) return "Running " + std::string(title(ids.front())) + " (" + mode + ")";
    if (ids.size() == kAllBenchmarks.size()) return "Running full suite (" + mode + ")";
    return "Running " + std::to_string(ids.size()) + " benchmarks (" + mode + ")";
}

void RunState::beginBenchmark(std::optional<CpuTickSample> ticks, std::optional<double> celsius) {
    passOutcomes.clear();
    stability.reset();
    spread.reset();
    passSlices.clear();
    passTraces.clear();
    combined = {};
    startTicks = ticks;
    startCelsius = celsius;
}

std::string RunState::passesLine() const {
    const std::string name(title(running()));
    if (untilStable)
        return name + ": rerun until stable (\u00b1 " + format(untilStable->ci95Percent, 1) + " %, at most " +
               std::to_string(passes) + " passes)";
    return name + ": Accuracy Mode " + std::to_string(passes) + "x median";
}

std::string RunState::passLine() const {
    const std::string total = std::to_string(passes) + (untilStable ? " at most" : "");
    return std::string(title(running())) + ": pass " + std::to_string(passOutcomes.size() + 1) + "/" + total;
}

std::string RunState::passText() const {
    return "pass " + std::to_string(passOutcomes.size() + 1) + (untilStable ? " of at most " : " of ") +
           std::to_string(passes);
}

void RunState::passEnded(std::vector<PhaseSlice> slices, std::optional<double> passStability) {
    passSlices.push_back(std::move(slices));
    if (passStability) stability = std::min(stability.value_or(*passStability), *passStability);
}

void RunState::combine(const NoiseFloors& floors) {
    combined = passesUncertainty(running(), quick() ? RunLength::quick : RunLength::full, passOutcomes,
                                 passSlices, floors);
}

std::optional<BenchmarkOutcome> RunState::passesOutcome() {
    if (!cancelled && !passesDone(passOutcomes, passes, untilStable, combined.uncertainty))
        return std::nullopt;
    if (!cancelled && untilStable) {
        const auto& uncertainty = combined.uncertainty;
        return untilStableOutcome(passOutcomes,
                                  uncertainty ? std::optional(uncertainty->ci95Percent()) : std::nullopt,
                                  *untilStable);
    }
    if (static_cast<int>(passOutcomes.size()) != passes) return accuracyStoppedOutcome();
    spread = accuracySpreadPercent(passOutcomes);
    return accuracyOutcome(passOutcomes);
}

BenchmarkEndState RunState::endState(OutcomeStatus status, const TemperatureSnapshot& temperature,
                                     const std::optional<CpuTickSample>& endTicks) {
    BenchmarkEndState end;
    end.temperature = temperature;
    end.accuracyMode = accuracyMode;
    end.stabilityPercent = stability;
    end.spreadPercent = spread;
    end.passes = std::max<int>(1, static_cast<int>(passOutcomes.size()));
    if (status == OutcomeStatus::ok) {
        end.uncertainty = combined.uncertainty;
        end.withinRun = combined.withinRun;
        end.noiseFloor = combined.noiseFloor;
        const std::size_t kept = medianPassIndex(passOutcomes);
        if (kept < passSlices.size()) end.slices = passSlices[kept];
        if (kept < passTraces.size()) {
            end.trace = std::move(passTraces[kept].trace);
            end.energy = std::move(passTraces[kept].energy);
            end.traceSummary = traceSummary(end.trace);
        }
        end.startCelsius = startCelsius;
        if (passOutcomes.size() > 1)
            for (const auto& pass : passOutcomes)
                end.passScores.push_back(pass.score);
    }
    if (startTicks && endTicks) end.interference = interferenceBetween(*startTicks, *endTicks);
    end.noisy = end.interference && isNoisy(*end.interference);
    return end;
}

std::string RunState::summaryTitle() const {
    const bool suite = ids.size() == kBenchmarkCount;
    return std::string(suite ? "Full Suite " : "Selected Test ") +
           (accuracyMode ? "Accuracy Summary" : "Summary");
}

std::string outcomeLine(BenchmarkID id, const BenchmarkOutcome& outcome) {
    const std::string name(title(id));
    switch (outcome.status) {
    case OutcomeStatus::ok:
        return name + ": " + scoreText(outcome.score) + " pts, " + outcome.primary.value + " " +
               outcome.primary.unit;
    case OutcomeStatus::failed: return name + ": failed";
    case OutcomeStatus::skipped: break;
    }
    return name + ": unavailable";
}

} // namespace quarbel
