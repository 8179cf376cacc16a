// SPDX-License-Identifier: Apache-2.0
// Drives one `quarbel run` through the BenchmarkStore on the main thread: prints the
// log and live progress while it runs, then the table, summary, JSON report and cards.
#pragma once

#include "model/accuracy.h"
#include "results/report_file.h"
#include "results/run_report.h"
#include "run/benchmark_store.h"

#include <QObject>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel::session {

struct RunOptions {
    std::vector<BenchmarkID> ids;
    bool accuracy = false;
    bool quick = false;
    std::optional<ReportTarget> report;         // absent: no JSON report
    std::optional<std::string> cardsDirectory;  // absent: no result cards; else checked, absolute
    std::string historyDirectory;               // where the report is also kept; empty: not kept
    std::optional<StabilityTarget> untilStable; // rerun each benchmark until its interval is narrow
    std::optional<ReportTarget> metrics;        // absent: no Prometheus text file
    bool trace = true;                          // record each benchmark's sensor trace and energy
    std::optional<CooldownSetting> cooldown =
        std::nullopt; // absent: automatic for full runs, none for quick ones
    // The run-to-run floors learned from this machine's history; none: the store's own.
    std::optional<NoiseFloors> noiseFloors = std::nullopt;
    // Given the report's JSON text once the run is over (the baseline gate reads it).
    std::function<void(const std::string& reportText)> reportSink = nullptr;
};

// The process exit status of a run.
enum ExitCode : int {
    kExitOk = 0,        // every benchmark ended ok or skipped
    kExitFailed = 1,    // a benchmark failed, or the results could not be written
    kExitBadInput = 2,  // refused before anything ran
    kExitStopped = 130, // stopped by SIGINT, SIGTERM or SIGHUP
};

class RunSession : public QObject {
    Q_OBJECT
  public:
    // `out` takes the log, progress and table. `terminal`: rewrite one live progress
    // line in place instead of printing plain lines.
    RunSession(BenchmarkStore& store, RunOptions options, std::FILE* out, bool terminal,
               std::function<std::vector<std::pair<std::string, std::string>>()> systemRows);

    void start();
    // A stop signal: the run stops cooperatively and the session finishes with 130.
    void requestStop();
    bool stopRequested() const { return stopRequested_; }

    // One line for the user, on standard error, apart from the results.
    void notice(std::string_view text);

  Q_SIGNALS:
    // The run is over and everything is printed and written; `exitCode` for the process.
    // Emitted once: after it the session no longer follows the store.
    void finished(int exitCode);

  private:
    void onLogLine(const QString& line);
    void onTick();
    void onBusyChanged();
    void clearProgressLine();
    // After every write: a failed or unread output stops the run, as a stop signal would.
    void checkOutput();
    void finish();
    int writeReport(const std::string& text);
    void keepInHistory(const std::string& startedAtIso, const std::string& text);

    BenchmarkStore& store_;
    RunOptions options_;
    std::FILE* out_;
    std::string outName_;
    bool terminal_;
    std::function<std::vector<std::pair<std::string, std::string>>()> systemRows_;
    bool started_ = false;
    bool finished_ = false; // the report is out; the store's later runs are not followed
    bool stopRequested_ = false;
    std::string outputProblem_; // the first failed write, empty while all is well
    bool progressShown_ = false;
    double lastPlainReport_ = 0;
    SystemTimePoint startedAt_{};
    std::vector<std::string> log_;
};

} // namespace quarbel::session
