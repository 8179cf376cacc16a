// SPDX-License-Identifier: Apache-2.0
#include "session/run_session.h"

#include "model/number_format.h"
#include "results/json_report.h"
#include "results/openmetrics.h"
#include "results/run_history.h"
#include "results/store_report.h"
#include "sensors/temperature.h"
#include "session/card_writer.h"
#include "session/output_check.h"
#include "session/progress_line.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace quarbel::session {
namespace {

constexpr int kBarWidth = 24;
constexpr double kPlainReportEverySeconds = 5.0;

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const auto& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

// The results that count towards a score: ended ok with a positive score.
std::size_t scoredResults(const RunReport& report) {
    return static_cast<std::size_t>(
        std::count_if(report.results.begin(), report.results.end(), [](const auto& r) {
            return r.outcome.status == OutcomeStatus::ok && r.outcome.score > 0;
        }));
}

// "Sustained stability: CPU Single-Core 99.6 %, ..." for the benchmarks that have one.
std::string stabilityLine(const RunReport& report) {
    std::vector<std::string> parts;
    for (const auto& entry : report.results)
        if (entry.stabilityPercent)
            parts.push_back(std::string(title(entry.id)) + " " + stabilityText(*entry.stabilityPercent));
    return parts.empty() ? std::string()
                         : "Sustained stability (last fifth / first): " + joined(parts) + "\n";
}

// "Run-to-run floors: learned on this machine for CPU Single-Core (7 runs), ...; built in for
// ..." over the results whose interval added one.
std::string floorsLine(const RunReport& report) {
    std::vector<std::string> learned, builtIn;
    for (const auto& entry : report.results) {
        const auto& floor = entry.statistics.noiseFloor;
        if (!floor) continue;
        if (floor->runs > 0)
            learned.push_back(std::string(title(entry.id)) + " " + format(floor->percent, 1) + " % (" +
                              std::to_string(floor->runs) + " runs)");
        else
            builtIn.push_back(std::string(title(entry.id)));
    }
    if (learned.empty() && builtIn.empty()) return {};
    std::string text = "Run-to-run floors:";
    if (!learned.empty()) text += " learned on this machine for " + joined(learned);
    if (!builtIn.empty())
        text += std::string(learned.empty() ? "" : ";") + " built in for " + joined(builtIn) +
                " (fewer than " + std::to_string(kRunsToLearnFloor) + " earlier quiet runs like this one)";
    return text + "\n";
}

// The result table with the detail of every failed or skipped benchmark on an indented
// line under its row, so that the reason is on screen, not only in the JSON; under a GPU
// benchmark's row, how it used the device; under every row, what the sensors saw.
std::string resultTableText(const RunReport& report) {
    const std::string table = renderTable(resultTableCells(report));
    std::string text;
    std::size_t row = 0; // 0 is the header; row i holds report.results[i - 1]
    for (std::size_t start = 0; start < table.size(); ++row) {
        const std::size_t end = std::min(table.find('\n', start), table.size() - 1);
        text.append(table, start, end - start + 1);
        start = end + 1;
        if (row == 0 || row > report.results.size()) continue;
        const ReportEntry& entry = report.results[row - 1];
        const BenchmarkOutcome& outcome = entry.outcome;
        if (outcome.status != OutcomeStatus::ok && !outcome.detail.empty())
            text += "    " + outcome.detail + "\n";
        if (outcome.gpu) text += "    " + gpuExecutionText(*outcome.gpu) + "\n";
        if (const std::string sensors = sensorsText(entry); !sensors.empty()) text += "    " + sensors + "\n";
    }
    return text;
}

bool anyFailed(const RunReport& report) {
    return std::any_of(report.results.begin(), report.results.end(), [](const ReportEntry& entry) {
        return entry.outcome.status == OutcomeStatus::failed;
    });
}

} // namespace

RunSession::RunSession(BenchmarkStore& store, RunOptions options, std::FILE* out, bool terminal,
                       std::function<std::vector<std::pair<std::string, std::string>>()> systemRows)
    : store_(store), options_(std::move(options)), out_(out),
      outName_(out == stderr ? "standard error" : "standard output"), terminal_(terminal),
      systemRows_(std::move(systemRows)) {
    connect(&store_, &BenchmarkStore::logLineAppended, this, &RunSession::onLogLine);
    connect(&store_, &BenchmarkStore::currentRunTickChanged, this, &RunSession::onTick);
    connect(&store_, &BenchmarkStore::busyChanged, this, &RunSession::onBusyChanged);
    // What the store logged before the session was attached, its initial line aside
    // (a sensor that could not be started, say).
    const QStringList earlier = store_.logLines();
    for (qsizetype i = 1; i < earlier.size(); ++i)
        onLogLine(earlier[i]);
}

void RunSession::start() {
    store_.setAccuracyMode(options_.accuracy);
    store_.setBudgetScale(options_.quick ? 0.1 : 1.0);
    store_.setUntilStable(options_.untilStable);
    store_.setTraceEnabled(options_.trace);
    store_.setCooldown(options_.cooldown);
    if (options_.noiseFloors) store_.setNoiseFloors(*options_.noiseFloors);
    startedAt_ = std::chrono::system_clock::now();
    started_ = true;
    if (stopRequested_ || !outputProblem_.empty()) {
        finish(); // stopped before it began, or nobody would see it
        return;
    }
    store_.run(options_.ids, true);
}

void RunSession::requestStop() {
    if (finished_) return; // a later run of the store is not this session's to stop
    const bool stopping = stopRequested_ || !outputProblem_.empty();
    stopRequested_ = true;
    if (stopping) return;
    clearProgressLine();
    std::fputs("Stopping: the running benchmark ends at its next check point...\n", stderr);
    store_.stop();
}

void RunSession::notice(std::string_view text) {
    // The live progress line comes back at the next tick.
    clearProgressLine();
    std::fflush(out_);
    std::fprintf(stderr, "quarbel: %.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stderr);
}

void RunSession::checkOutput() {
    if (!outputProblem_.empty()) return;
    std::string problem = flushProblem(out_, outName_);
    const bool reportToStandardOutput = (options_.report && options_.report->standardOutput) ||
                                        (options_.metrics && options_.metrics->standardOutput);
    if (problem.empty() && readerGone(fileno(out_)))
        problem = "cannot write to " + outName_ + ": " + std::strerror(EPIPE);
    if (problem.empty() && reportToStandardOutput && readerGone(STDOUT_FILENO))
        problem = std::string("cannot write to standard output: ") + std::strerror(EPIPE);
    if (problem.empty()) return;
    outputProblem_ = std::move(problem);
    if (!store_.busy() || stopRequested_) {
        notice(outputProblem_);
        return;
    }
    notice(outputProblem_ + "; stopping the run");
    // Not from inside the store's own signal: the stop runs from the event loop.
    QMetaObject::invokeMethod(
        this, [this] { store_.stop(); }, Qt::QueuedConnection);
}

void RunSession::onLogLine(const QString& line) {
    log_.push_back(line.toStdString());
    clearProgressLine();
    std::fprintf(out_, "%s\n", line.toUtf8().constData());
    checkOutput();
}

void RunSession::clearProgressLine() {
    if (!progressShown_) return;
    std::fputs("\r\033[K", out_);
    progressShown_ = false;
}

void RunSession::onTick() {
    const auto running = store_.runningID();
    if (!running) return;
    const LiveProgress live = store_.liveProgress();
    const double target = store_.currentRunTargetSeconds();
    const double elapsed = store_.currentRunElapsed();
    const ProgressState state{title(*running), elapsed,
                              target,          target > 0 ? std::min(elapsed / target, 1.0) : 0.0,
                              live.unitsDone,  live.elapsedSeconds,
                              live.unit};
    if (terminal_) {
        std::fprintf(out_, "\r\033[K%s", progressLine(state, kBarWidth).c_str());
        progressShown_ = true;
    } else if (state.elapsedSeconds < lastPlainReport_) {
        lastPlainReport_ = 0;
    } else if (state.elapsedSeconds - lastPlainReport_ >= kPlainReportEverySeconds) {
        // Off a terminal, a plain line every few seconds keeps logs readable.
        lastPlainReport_ = state.elapsedSeconds;
        std::fprintf(out_, "  %s\n", progressLine(state, kBarWidth).c_str());
    }
    // Every tick, printed or not, so a reader that went away stops the run promptly.
    checkOutput();
}

void RunSession::onBusyChanged() {
    if (started_ && !store_.busy()) finish();
}

void RunSession::finish() {
    // Once only: the store may serve further runs (a window's), and this run's report, history
    // entry and exit code stay as they are.
    if (finished_) return;
    finished_ = true;
    disconnect(&store_, nullptr, this, nullptr);
    clearProgressLine();
    const RunReport report = reportFromStore(
        store_, {options_.ids, options_.accuracy, options_.quick, startedAt_,
                 systemRows_ ? systemRows_() : std::vector<std::pair<std::string, std::string>>{}, log_});

    std::fputs("\n", out_);
    std::fputs(resultTableText(report).c_str(), out_);
    if (report.summary) {
        const RunSummary& s = *report.summary;
        std::fprintf(out_,
                     "\n%s%s: %d of %d complete (%d skipped, %d failed), run score %s pts (over this run's "
                     "%d benchmark%s), %s s\n",
                     s.title.c_str(), options_.quick ? " (quick)" : "", s.completed, s.total, s.skipped,
                     s.failed, scoreText(s.score).c_str(), s.total, s.total == 1 ? "" : "s",
                     format(s.duration, 1).c_str());
        std::fprintf(out_, "Peak temperatures: CPU %s, GPU %s\n", temperatureText(s.peakCPU).c_str(),
                     temperatureText(s.peakGPU).c_str());
    } else {
        std::fputs("\nRun stopped: no summary.\n", out_);
    }
    // The figure the window's gauge shows: every benchmark counts, one that did not run as missing.
    std::fprintf(out_, "Global score: %s pts (over all %zu benchmarks, %zu of them scored here)\n",
                 scoreText(report.globalScore).c_str(), kAllBenchmarks.size(), scoredResults(report));
    std::fputs(stabilityLine(report).c_str(), out_);
    std::fputs(floorsLine(report).c_str(), out_);
    if (!report.badges.empty()) std::fprintf(out_, "Machine condition: %s\n", joined(report.badges).c_str());
    for (const auto& sign : report.throttleSigns)
        std::fprintf(out_, "Throttling: %s\n", sign.c_str());
    checkOutput();

    int exitCode = anyFailed(report) || !outputProblem_.empty() ? kExitFailed : kExitOk;
    const std::string reportText = jsonReportText(report);
    if (options_.report) exitCode = std::max(exitCode, writeReport(reportText));
    if (options_.metrics && options_.metrics->standardOutput) {
        std::fputs(openMetricsText(report).c_str(), stdout);
        if (const std::string problem = flushProblem(stdout, "standard output"); !problem.empty()) {
            notice(problem + "; the metrics are lost");
            exitCode = std::max(exitCode, int(kExitFailed));
        }
    } else if (options_.metrics) {
        const ReportWrite written = writeReportFile(*options_.metrics, openMetricsText(report));
        if (!written.problem.empty()) {
            // A half-written metrics file would be scraped as it is: none is better.
            if (!written.keptAt.empty()) std::remove(written.keptAt.c_str());
            notice("the metrics file was not written: " + written.problem);
            exitCode = std::max(exitCode, int(kExitFailed));
        }
    }
    if (options_.cardsDirectory)
        exitCode = std::max(exitCode, writeCards(report, *options_.cardsDirectory, out_));
    keepInHistory(isoTimestamp(report.startedAt), reportText);
    if (options_.reportSink) options_.reportSink(reportText);
    Q_EMIT finished(stopRequested_ ? kExitStopped : exitCode);
}

void RunSession::keepInHistory(const std::string& startedAtIso, const std::string& text) {
    if (options_.historyDirectory.empty()) return;
    const HistorySave saved = saveToHistory(options_.historyDirectory, startedAtIso, text);
    // The run itself went well: a history that cannot be written is worth a line, not a failure.
    if (!saved.problem.empty())
        notice("the run was not kept in the history: " + saved.problem);
    else
        notice("kept in the history as " + saved.path + " (see 'quarbel history')");
}

int RunSession::writeReport(const std::string& text) {
    if (options_.report->standardOutput) {
        std::fputs(text.c_str(), stdout);
        const std::string problem = flushProblem(stdout, "standard output");
        if (problem.empty()) return kExitOk;
        notice(problem + "; the JSON report is lost");
        return kExitFailed;
    }
    const ReportWrite written = writeReportFile(*options_.report, text);
    if (written.problem.empty()) return kExitOk;
    if (!written.keptAt.empty()) {
        notice(written.problem + "; the report is kept in " + written.keptAt);
    } else {
        // Nowhere else to put it: the results go to standard error rather than nowhere.
        notice(written.problem + "; the report follows on standard error");
        std::fputs(text.c_str(), stderr);
        std::fflush(stderr);
    }
    return kExitFailed;
}

} // namespace quarbel::session
