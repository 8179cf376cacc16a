// Drives one `quarbel run` through the BenchmarkStore on the main thread: prints the
// log and live progress while it runs, then the table, summary and JSON report.
#pragma once

#include "run/benchmark_store.h"
#include "ui/run_report.h"

#include <QObject>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quarbel::cli {

struct RunOptions {
    std::vector<BenchmarkID> ids;
    bool accuracy = false;
    bool quick = false;
    std::string jsonPath; // empty: no report file
};

class RunSession : public QObject {
    Q_OBJECT
  public:
    // `terminal`: rewrite one live progress line in place instead of printing plain lines.
    RunSession(BenchmarkStore& store, RunOptions options, std::FILE* out, bool terminal,
               std::function<std::vector<std::pair<std::string, std::string>>()> systemRows);

    void start();
    // First call stops the run cooperatively; the session then finishes with 130.
    void requestStop();
    bool stopRequested() const { return stopRequested_; }

  Q_SIGNALS:
    // The run is over and everything is printed and written; `exitCode` for the process.
    void finished(int exitCode);

  private:
    void onLogLine(const QString& line);
    void onTick();
    void onBusyChanged();
    void clearProgressLine();
    void finish();

    BenchmarkStore& store_;
    RunOptions options_;
    std::FILE* out_;
    bool terminal_;
    std::function<std::vector<std::pair<std::string, std::string>>()> systemRows_;
    bool started_ = false;
    bool stopRequested_ = false;
    bool progressShown_ = false;
    double lastPlainReport_ = 0;
    SystemTimePoint startedAt_{};
    std::vector<std::string> log_;
};

} // namespace quarbel::cli
