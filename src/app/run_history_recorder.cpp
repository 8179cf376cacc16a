// SPDX-License-Identifier: Apache-2.0
#include "app/run_history_recorder.h"

#include "results/json_report.h"
#include "results/run_history.h"
#include "results/store_report.h"
#include "run/benchmark_store.h"

namespace quarbel::app {

RunHistoryRecorder::RunHistoryRecorder(BenchmarkStore& store, std::string directory, QObject* parent)
    : QObject(parent), store_(store), directory_(std::move(directory)) {
    connect(&store_, &BenchmarkStore::busyChanged, this, &RunHistoryRecorder::onBusyChanged);
}

void RunHistoryRecorder::onBusyChanged() {
    if (store_.busy()) {
        // What the run is, taken as it starts: the switch may change while it runs.
        running_ = true;
        accuracy_ = store_.accuracyMode();
        quick_ = store_.budgetScale() < 1.0;
        startedAt_ = std::chrono::system_clock::now();
        return;
    }
    if (!running_ || directory_.empty()) return;
    running_ = false;
    std::vector<std::string> log;
    for (const QString& line : store_.logLines())
        log.push_back(line.toStdString());
    const RunReport report =
        reportFromStore(store_, {store_.runIDs(), accuracy_, quick_, startedAt_, systemRowPairs(), log});
    const HistorySave saved =
        saveToHistory(directory_, isoTimestamp(report.startedAt), jsonReportText(report));
    if (!saved.problem.empty()) {
        store_.logNotice(
            QStringLiteral("Run not kept in the history: %1").arg(QString::fromStdString(saved.problem)));
        return;
    }
    Q_EMIT runKept(QString::fromStdString(saved.path));
}

} // namespace quarbel::app
