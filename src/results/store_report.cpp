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
    report.results = reportEntries(store.rows(), frame.ids);
    for (ReportEntry& entry : report.results) {
        const BenchmarkEndState& end = store.endState(entry.id);
        entry.temperatureAtEnd = end.temperature;
        entry.accuracyMode = end.accuracyMode;
        entry.stabilityPercent = end.stabilityPercent;
        entry.spreadPercent = end.spreadPercent;
        entry.statistics = {end.passes, end.uncertainty, end.withinRun,    end.noiseFloor,
                            end.slices, end.passScores,  end.interference, end.frequencyDropPercent,
                            end.noisy};
    }
    const RunCondition& condition = store.runCondition();
    report.condition = condition.atStart;
    report.throttleSigns = condition.throttleSigns;
    report.badges = condition.badges;
    report.summary = store.runSummary();
    report.globalScore = store.totalScore();
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
