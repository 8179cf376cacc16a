#include "cli/run_session.h"

#include "cli/json_report.h"
#include "cli/progress_line.h"
#include "model/number_format.h"
#include "sensors/temperature.h"

#include <algorithm>

namespace quarbel::cli {
namespace {

constexpr int kBarWidth = 24;
constexpr double kPlainReportEverySeconds = 5.0;

} // namespace

RunSession::RunSession(BenchmarkStore& store, RunOptions options, std::FILE* out, bool terminal,
                       std::function<std::vector<std::pair<std::string, std::string>>()> systemRows)
    : store_(store), options_(std::move(options)), out_(out), terminal_(terminal),
      systemRows_(std::move(systemRows)) {
    connect(&store_, &BenchmarkStore::logLineAppended, this, &RunSession::onLogLine);
    connect(&store_, &BenchmarkStore::currentRunTickChanged, this, &RunSession::onTick);
    connect(&store_, &BenchmarkStore::busyChanged, this, &RunSession::onBusyChanged);
}

void RunSession::start() {
    store_.setAccuracyMode(options_.accuracy);
    store_.setBudgetScale(options_.quick ? 0.1 : 1.0);
    startedAt_ = std::chrono::system_clock::now();
    started_ = true;
    store_.run(options_.ids, true);
}

void RunSession::requestStop() {
    if (stopRequested_) return;
    stopRequested_ = true;
    clearProgressLine();
    std::fputs("Stopping: the running benchmark ends at its next check point...\n", stderr);
    store_.stop();
}

void RunSession::onLogLine(const QString& line) {
    log_.push_back(line.toStdString());
    clearProgressLine();
    std::fprintf(out_, "%s\n", line.toUtf8().constData());
    std::fflush(out_);
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
    // Quick runs shorten every budget, so the bar measures against the shortened target.
    const double target = store_.currentRunTargetSeconds() * store_.budgetScale();
    const double elapsed = store_.currentRunElapsed();
    const ProgressState state{title(*running), elapsed,
                              target,          target > 0 ? std::min(elapsed / target, 1.0) : 0.0,
                              live.unitsDone,  live.elapsedSeconds,
                              live.unit};
    if (terminal_) {
        std::fprintf(out_, "\r\033[K%s", progressLine(state, kBarWidth).c_str());
        progressShown_ = true;
    } else {
        // Off a terminal, a plain line every few seconds keeps logs readable.
        if (state.elapsedSeconds - lastPlainReport_ < kPlainReportEverySeconds) {
            if (state.elapsedSeconds < lastPlainReport_) lastPlainReport_ = 0;
            return;
        }
        lastPlainReport_ = state.elapsedSeconds;
        std::fprintf(out_, "  %s\n", progressLine(state, kBarWidth).c_str());
    }
    std::fflush(out_);
}

void RunSession::onBusyChanged() {
    if (started_ && !store_.busy()) finish();
}

void RunSession::finish() {
    clearProgressLine();
    RunReport report;
    report.appName = "Quarbel";
    report.appVersion = QUARBEL_VERSION;
    report.accuracyMode = options_.accuracy;
    report.quick = options_.quick;
    report.startedAt = startedAt_;
    report.finishedAt = std::chrono::system_clock::now();
    if (systemRows_) report.system = systemRows_();
    report.results = reportEntries(store_.rows(), options_.ids);
    report.summary = store_.runSummary();
    report.globalScore = store_.totalScore();
    report.log = log_;

    std::fputs("\n", out_);
    std::fputs(renderTable(resultTableCells(report)).c_str(), out_);
    if (report.summary) {
        const RunSummary& s = *report.summary;
        std::fprintf(out_, "\n%s%s: %d of %d complete (%d skipped, %d failed), run score %s pts, %s s\n",
                     s.title.c_str(), options_.quick ? " (quick)" : "", s.completed, s.total, s.skipped,
                     s.failed, scoreText(s.score).c_str(), format(s.duration, 1).c_str());
        std::fprintf(out_, "Peak temperatures: CPU %s, GPU %s\n", temperatureText(s.peakCPU).c_str(),
                     temperatureText(s.peakGPU).c_str());
    } else {
        std::fputs("\nRun stopped: no summary.\n", out_);
    }
    std::fprintf(out_, "Global score: %s pts\n", scoreText(report.globalScore).c_str());
    std::fflush(out_);

    int exitCode = stopRequested_ ? 130 : 0;
    if (!options_.jsonPath.empty()) {
        const std::string problem = writeFileAtomically(options_.jsonPath, jsonReportText(report));
        if (!problem.empty()) {
            std::fprintf(stderr, "quarbel: %s\n", problem.c_str());
            if (exitCode == 0) exitCode = 1;
        }
    }
    Q_EMIT finished(exitCode);
}

} // namespace quarbel::cli
