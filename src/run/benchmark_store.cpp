// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"

#include "model/comparison.h"
#include "run/background_tasks.h"
#include "run/run_state.h"
#include "run/store_services.h"

#include <algorithm>

namespace quarbel {
namespace {

constexpr double kIdleThermalInterval = 5.0;
constexpr double kRunningThermalInterval = 2.0;

QString qs(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

BenchmarkStore::BenchmarkStore(StoreServices services, WindowPresenter* presenter, QObject* parent)
    : QObject(parent), background_(std::make_unique<BackgroundTasks>(this)),
      services_(completedServices(std::move(services))), clock_(services_.now, [this] { onRealtimeTick(); }),
      thermal_(*background_, services_.readTemperatures,
               {[this] { refreshThermalSnapshot(); },
                [this](const ThermalMonitor::Reading& reading) { onThermalReading(reading); },
                [this](const std::string& line) { appendLog(qs(line)); }}),
      cooldownPause_([this] { return cpuCelsiusNow(); }, [] { return monotonicSeconds(); },
                     {[this] { Q_EMIT cooldownTextChanged(); },
                      [this](const std::string& line) {
                          appendLog(qs(line));
                          beginNextBenchmark();
                      }}),
      runWatch_(services_.runLockDirectory),
      windows_(
          presenter, [this] { Q_EMIT visualBenchmarkRequestChanged(); },
          [this] { Q_EMIT visualLiveStatsChanged(); }),
      pass_(this, *background_, services_.runWorkload) {
    windows_.setStallLimit(kVisualStallLimit);
    startThermalMonitor(kIdleThermalInterval);
}

BenchmarkStore::~BenchmarkStore() {
    // Workloads stop at their next check point; the threads are joined below.
    pass_.cancel();
    background_->joinAll();
}

double BenchmarkStore::currentRunElapsed() const { return clock_.elapsed(); }

double BenchmarkStore::currentRunProgress() const { return clock_.progress(); }

int BenchmarkStore::completedCount() const { return quarbel::completedCount(rows_); }

double BenchmarkStore::totalScore() const { return globalScore(rows_); }

void BenchmarkStore::setSelectedID(BenchmarkID id) {
    if (id == selectedID_) return;
    selectedID_ = id;
    Q_EMIT selectedIDChanged();
}

void BenchmarkStore::setAccuracyMode(bool on) {
    if (on == accuracyMode_) return;
    accuracyMode_ = on;
    Q_EMIT accuracyModeChanged();
}

void BenchmarkStore::setBudgetScale(double scale) {
    const bool wasQuick = quickMode();
    budgetScale_ = scale;
    if (quickMode() != wasQuick) Q_EMIT quickModeChanged();
}

double BenchmarkStore::runBudgetScale() const { return task_ ? task_->budgetScale : budgetScale_; }

bool BenchmarkStore::runIsQuick() const { return runBudgetScale() < 1.0; }

void BenchmarkStore::runSelected() { run({selectedID_}, false); }

void BenchmarkStore::runAll() {
    run(std::vector<BenchmarkID>(kAllBenchmarks.begin(), kAllBenchmarks.end()), true);
}

void BenchmarkStore::run(const std::vector<BenchmarkID>& ids, bool followsActiveTest) {
    if (task_) return;
    // Another Quarbel run on this machine skews this one: the window may ask what to do.
    bool waits = false;
    if (otherRunsQuestion_) {
        if (const auto others = runWatch_.others(); !others.empty()) {
            switch (otherRunsQuestion_(qs(otherRunsText(others)))) {
            case OtherRunsChoice::cancel: return;
            case OtherRunsChoice::wait: waits = true; break;
            case OtherRunsChoice::runAnyway: break;
            }
        }
    }
    task_ = std::make_unique<RunState>(ids, followsActiveTest, accuracyMode_, budgetScale_, untilStable_);
    runIDs_ = ids;
    endedInRun_.clear();
    runStopped_ = false;
    Q_EMIT busyChanged();

    // The task body starts from the event loop, so run() returns at once.
    QMetaObject::invokeMethod(
        this,
        [this, task = task_.get(), waits] {
            if (task_.get() != task) return;
            if (waits)
                waitForOtherRuns();
            else
                startRunTask();
        },
        Qt::QueuedConnection);
}

void BenchmarkStore::waitForOtherRuns() {
    const auto others = runWatch_.others();
    if (task_->cancelled || others.empty()) {
        setConcurrentRuns({});
        if (task_->cancelled)
            finishRunTask();
        else
            startRunTask();
        return;
    }
    const QString waiting = QStringLiteral("Waiting for the other Quarbel run to end (%1); Stop gives up.")
                                .arg(qs(otherRunsText(others)));
    if (waiting != concurrentRuns_) {
        setConcurrentRuns(waiting);
        appendLog(waiting);
    }
    QTimer::singleShot(kOtherRunPollMs, this, [this, task = task_.get()] {
        if (task_.get() == task) waitForOtherRuns();
    });
}

void BenchmarkStore::startRunTask() {
    RunState* task = task_.get();
    activeRunStartedAt_ = std::chrono::system_clock::now();
    task->summaryBefore = runSummary_;
    if (runSummary_) {
        runSummary_.reset();
        Q_EMIT runSummaryChanged();
    }
    thermal_.beginRun();
    condition_.reset();
    Q_EMIT runConditionChanged();
    readRunCondition();
    startThermalMonitor(kRunningThermalInterval);
    const ConcurrentRunWatch::Start marked = runWatch_.begin();
    appendLog(qs(task->startLine()));
    if (!marked.othersWarning.empty()) appendLog(qs(marked.othersWarning));
    checkConcurrentRuns();
    if (!marked.unmarkedWarning.empty()) appendLog(qs(marked.unmarkedWarning));
    task->cooldown.emplace(cooldown_.value_or(defaultCooldown(task->quick())), cpuCelsiusNow());
    if (const auto reason = task->cooldown->unavailableReason(); !reason.empty() && task->ids.size() > 1)
        appendLog(QStringLiteral("No cooldown between benchmarks: %1").arg(qs(reason)));
    beginNextBenchmark();
}

std::optional<double> BenchmarkStore::cpuCelsiusNow() {
    const QLTemperatureReading reading = services_.readTemperatures();
    return reading.hasCPU != 0 ? std::optional(reading.cpu) : std::nullopt;
}

bool BenchmarkStore::startCooldown() {
    if (!task_->cooldown || !cooldownPause_.start(*task_->cooldown)) return false;
    appendLog(cooldownText());
    return true;
}

void BenchmarkStore::beginNextBenchmark() {
    RunState& task = *task_;
    if (task.cancelled || task.index >= task.ids.size()) {
        finishRunTask();
        return;
    }
    // Each benchmark but the first starts from a machine back near idle; the wait calls
    // this again when it ends.
    if (task.index > 0 && task.cooledFor != task.index) {
        task.cooledFor = task.index;
        if (startCooldown()) return;
    }
    const BenchmarkID id = task.ids[task.index];
    if (task.followsActiveTest) setSelectedID(id);
    setRunningID(id);
    task.rowBefore = rows_[id];
    runWatch_.setBenchmark(std::string(title(id)));
    setRow(id, {TestRunState::running, std::nullopt});
    task.beginBenchmark(services_.readCpuTicks(), cpuCelsiusNow());
    condition_.beginBenchmark();
    startRealtimeClock(id, task.passes);
    if (RunWindows::hasAnimationWindow(id)) windows_.showAnimation(id, task.passes);
    runBenchmark(id);
}

void BenchmarkStore::runBenchmark(BenchmarkID id) {
    if (!task_->severalPasses()) {
        runBenchmarkPass(id, [this](BenchmarkOutcome outcome) {
            task_->combine(noiseFloors_);
            benchmarkFinished(std::move(outcome));
        });
        return;
    }
    appendLog(qs(task_->passesLine()));
    runNextAccuracyPass();
}

void BenchmarkStore::runNextAccuracyPass() {
    RunState& task = *task_;
    if (auto outcome = task.passesOutcome()) {
        setPassText({});
        benchmarkFinished(std::move(*outcome));
        return;
    }
    appendLog(qs(task.passLine()));
    setPassText(qs(task.passText()));
    runBenchmarkPass(task.running(), [this](BenchmarkOutcome outcome) {
        task_->passOutcomes.push_back(std::move(outcome));
        task_->combine(noiseFloors_);
        runNextAccuracyPass();
    });
}

void BenchmarkStore::benchmarkFinished(BenchmarkOutcome outcome) {
    RunState& task = *task_;
    if (task.cancelled) {
        finishRunTask();
        return;
    }
    const BenchmarkID id = task.ids[task.index];
    if (RunWindows::hasAnimationWindow(id)) windows_.close();
    const QString line = qs(outcomeLine(id, outcome));
    BenchmarkEndState end = task.endState(outcome.status, thermal_.snapshot(), services_.readCpuTicks());
    end.frequencyDropPercent = condition_.frequencyDropPercent();
    endStates_[indexOf(id)] = std::move(end);
    task.passOutcomes.clear();
    if (task.stability && *task.stability < kThrottlingStabilityPercent) {
        condition_.markUnstable();
        Q_EMIT runConditionChanged();
    }
    setRow(id, {rowStateFor(outcome.status), std::move(outcome)});
    endedInRun_.push_back(id);
    appendLog(line);
    ++task.index;
    beginNextBenchmark();
}

void BenchmarkStore::finishRunTask() {
    std::unique_ptr<RunState> task = std::move(task_);
    setRunningID(std::nullopt);
    pass_.release();
    stopRealtimeClock();
    if (!task->cancelled) {
        runSummary_ = makeRunSummary(rows_, task->ids,
                                     {task->summaryTitle(), activeRunStartedAt_, thermal_.peakCPU(),
                                      thermal_.peakGPU(), std::chrono::system_clock::now()});
        Q_EMIT runSummaryChanged();
        appendLog(QStringLiteral("Summary: %1/%2 complete, total %3 pts")
                      .arg(runSummary_->completed)
                      .arg(task->ids.size())
                      .arg(qs(scoreText(totalScore()))));
    }
    runStopped_ = task->cancelled;
    if (task->cancelled && endedInRun_.empty() && task->summaryBefore) {
        runSummary_ = task->summaryBefore; // a run stopped before anything ended changed nothing
        Q_EMIT runSummaryChanged();
    }
    activeRunStartedAt_.reset();
    runWatch_.end();
    setConcurrentRuns({});
    startThermalMonitor(kIdleThermalInterval);
    appendLog(QStringLiteral("Ready"));
    Q_EMIT busyChanged();
}

void BenchmarkStore::runBenchmarkPass(BenchmarkID id, PassCompletion completion) {
    std::shared_ptr<TraceRecorder> recorder =
        traceEnabled_ && services_.startTrace ? services_.startTrace() : nullptr;
    completion = [this, recorder, inner = std::move(completion)](BenchmarkOutcome outcome) {
        if (task_) task_->passTraces.push_back(recorder ? recorder->finish() : TracedPass{});
        inner(std::move(outcome));
    };
    if (id == BenchmarkID::metalVisual && !windows_.headless()) {
        if (task_) task_->passSlices.emplace_back(); // the window's scene reports frames, not slices
        windows_.runVisual(RunWindows::kVisualSeconds * runBudgetScale(), std::move(completion));
        return;
    }
    pass_.start(id, runBudgetScale(), [this, completion = std::move(completion)](WorkloadPass::Ended ended) {
        if (task_) task_->passEnded(std::move(ended.slices), ended.stability);
        // stop() may have let go of the pass already; the run task still waits for it to end
        // and then notices the cancellation.
        completion(std::move(ended.outcome));
    });
}

void BenchmarkStore::stop() {
    if (!task_ && !pass_.running() && !runningID_ && !windows_.open()) return;
    const std::optional<BenchmarkRowState> rowBefore = task_ ? task_->rowBefore : std::nullopt;
    if (task_) task_->cancelled = true;
    pass_.cancel();
    // Releases a pass that waits for the visual window; the run task then sees the stop.
    windows_.endVisual(failedOutcome("Run stopped by the user."));
    windows_.close();
    stopRealtimeClock();
    activeRunStartedAt_.reset();
    startThermalMonitor(kIdleThermalInterval);
    if (runningID_) {
        // The stopped benchmark shows what it showed before this run, not "Not run yet".
        setRow(*runningID_, rowBefore.value_or(BenchmarkRowState{TestRunState::idle, std::nullopt}));
        setRunningID(std::nullopt);
    }
    setPassText({});
    appendLog(QStringLiteral("Run stopped"));
    // A run waiting for the machine to cool has nothing else to end it.
    if (cooldownPause_.cancel()) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (task_) beginNextBenchmark();
            },
            Qt::QueuedConnection);
    }
}

void BenchmarkStore::startRealtimeClock(BenchmarkID id, int passes) {
    // The previous benchmark's progress goes before the first tick: a view sampling on that
    // tick would otherwise take the old figures as the new benchmark's starting point.
    windows_.clearLiveStats();
    liveProgress_ = {};
    Q_EMIT liveProgressChanged();
    // Quick runs shorten every budget, so the target and the bar follow the shortened one.
    clock_.start(targetSeconds(id) * std::max(passes, 1) * runBudgetScale());
    Q_EMIT currentRunStartedAtChanged();
    Q_EMIT currentRunTargetSecondsChanged();
    Q_EMIT currentRunTickChanged();
}

void BenchmarkStore::onRealtimeTick() {
    if (const auto report = pass_.sample()) {
        LiveProgress progress{report->unitsDone, report->elapsedSeconds, report->unit};
        if (progress != liveProgress_) {
            liveProgress_ = std::move(progress);
            Q_EMIT liveProgressChanged();
        }
    }
    Q_EMIT currentRunTickChanged();
}

void BenchmarkStore::stopRealtimeClock() {
    clock_.stop();
    Q_EMIT currentRunStartedAtChanged();
    Q_EMIT currentRunTargetSecondsChanged();
    Q_EMIT currentRunTickChanged();
}

void BenchmarkStore::logNotice(const QString& text) { appendLog(text); }

void BenchmarkStore::appendLog(const QString& text) {
    const QString line = log_.append(text, services_.now().time());
    Q_EMIT logLinesChanged();
    Q_EMIT logLineAppended(line);
}

void BenchmarkStore::setRow(BenchmarkID id, BenchmarkRowState row) {
    rows_[id] = std::move(row);
    Q_EMIT rowsChanged();
}

void BenchmarkStore::setRunningID(OptionalBenchmarkID id) {
    if (id == runningID_) return;
    runningID_ = id;
    thermal_.setPeaksRising(id.has_value());
    Q_EMIT runningIDChanged();
}

void BenchmarkStore::startThermalMonitor(double intervalSeconds) {
    refreshThermalSnapshot();
    thermal_.setInterval(intervalSeconds);
}

void BenchmarkStore::refreshThermalSnapshot() {
    if (task_ && runWatch_.active()) checkConcurrentRuns(); // once this run is marked
    // Throttling is only looked for while benchmarks run.
    thermal_.read(task_ ? services_.readThrottle : std::function<ThrottleSample()>{});
}

void BenchmarkStore::onThermalReading(const ThermalMonitor::Reading& reading) {
    Q_EMIT temperatureSnapshotChanged();
    if (!reading.throttle || !runningID_) return;
    const auto signs = condition_.observe(*reading.throttle);
    for (const auto& sign : signs)
        appendLog(QStringLiteral("Throttling: %1").arg(qs(sign)));
    if (!signs.empty()) Q_EMIT runConditionChanged();
}

void BenchmarkStore::readRunCondition() {
    // Sampling other processes takes half a second: off the main thread, beside the first benchmark.
    const auto problem = background_->start([read = services_.readCondition] { return read(); },
                                            [this](MachineCondition condition) {
                                                condition_.setAtStart(std::move(condition));
                                                Q_EMIT runConditionChanged();
                                            });
    if (problem) { // the run goes on without it
        condition_.setAtStart(std::nullopt);
        Q_EMIT runConditionChanged();
    }
}

void BenchmarkStore::setPassText(const QString& text) {
    if (text == passText_) return;
    passText_ = text;
    Q_EMIT passTextChanged();
}

void BenchmarkStore::checkConcurrentRuns() {
    const std::vector<std::string> appeared = runWatch_.look();
    setConcurrentRuns(qs(runWatch_.warning()));
    for (const std::string& line : appeared)
        appendLog(qs(line));
}

void BenchmarkStore::setConcurrentRuns(const QString& text) {
    if (text == concurrentRuns_) return;
    concurrentRuns_ = text;
    Q_EMIT concurrentRunsChanged();
}

} // namespace quarbel
