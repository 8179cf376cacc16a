#include "cli/store_report.h"

namespace quarbel::cli {

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
    }
    const RunCondition& condition = store.runCondition();
    report.condition = condition.atStart;
    report.throttleSigns = condition.throttleSigns;
    report.badges = condition.badges;
    report.summary = store.runSummary();
    report.globalScore = store.totalScore();
    report.log = std::move(frame.log);
    return report;
}

} // namespace quarbel::cli
