// SPDX-License-Identifier: Apache-2.0
#include "results/store_report.h"

#include "sensors/system_snapshot.h"

namespace quarbel {

RunReport reportFromStore(const BenchmarkStore& store, ReportFrame frame) {
    RunReport report;
    report.appName = "Quarbel";
    report.appVersion = QUARBEL_VERSION;
    report.accuracyMode = frame.accuracy;
    report.quick = frame.quick;
    report.startedAt = frame.startedAt;
    report.finishedAt = std::chrono::system_clock::now();
    report.system = std::move(frame.system);
    // Only what this run measured: the rows of benchmarks it did not reach may still show an
    // earlier run's results.
    BenchmarkRows measured;
    for (BenchmarkID id : store.endedInRun())
        measured[id] = store.rows()[id];
    report.results = reportEntries(measured, frame.ids);
    for (ReportEntry& entry : report.results) {
        const BenchmarkEndState& end = store.endState(entry.id);
        entry.temperatureAtEnd = end.temperature;
        entry.accuracyMode = end.accuracyMode;
        entry.stabilityPercent = end.stabilityPercent;
        entry.spreadPercent = end.spreadPercent;
        entry.statistics = {end.passes,      end.uncertainty, end.withinRun,    end.noiseFloor,
                            end.slices,      end.passScores,  end.interference, end.frequencyDropPercent,
                            end.noisy,       end.trace,       end.energy,       end.traceSummary,
                            end.startCelsius};
    }
    const RunCondition& condition = store.runCondition();
    report.condition = condition.atStart;
    report.throttleSigns = condition.throttleSigns;
    report.badges = condition.badges;
    // A stopped run has no summary of its own (the window may show the one before it).
    report.summary = store.runStopped() ? std::nullopt : store.runSummary();
    report.globalScore = store.runStopped() ? globalScore(measured) : store.totalScore();
    report.log = std::move(frame.log);
    report.machine = readMachineIdentity();
    report.manifest = readSystemManifest();
    return report;
}

std::vector<std::pair<std::string, std::string>> systemRowPairs() {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto& row : SystemSnapshot::rows())
        pairs.emplace_back(row.label, row.value);
    return pairs;
}

} // namespace quarbel
