// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"

#include "model/accuracy.h"
#include "model/comparison.h"
#include "model/number_format.h"
#include "model/trace_summary.h"
#include "run/background_tasks.h"
#include "run/pass_statistics.h"
#include "run/window_presenter.h"
#include "run/workload_dispatch.h"

#include <QTime>
#include <QUuid>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <sys/resource.h>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr double kIdleThermalInterval = 5.0;
constexpr double kRunningThermalInterval = 2.0;
constexpr int kClockIntervalMs = 250;
constexpr double kVisualSeconds = 20.0;
constexpr int kVisualWorkload = 2;

QString qs(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The five benchmarks that show a workload animation window while they run.
bool hasAnimationWindow(BenchmarkID id) {
    switch (id) {
    case BenchmarkID::cineTile:
    case BenchmarkID::metalCompute:
    case BenchmarkID::openCLCompute:
    case BenchmarkID::rawCPUDecode:
    case BenchmarkID::rawMetalDecode: return true;
    default: return false;
    }
}

std::string newUUIDText() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace

StoreServices StoreServices::standard() {
    return {[](BenchmarkID id, const WorkloadContext& context) { return quarbel::runWorkload(id, context); },
            [] { return QuarbelReadTemperatures(); },
            [] { return QDateTime::currentDateTime(); },
            [] { return sampleMachineCondition(); },
            [] { return readThrottleSample(); },
            [] { return readCpuTickSample(); },
            RunLock::defaultDirectory(),
            [] {
                // Opened once: finding NVML and the sensors' files is slower than a sample.
                static const auto sensors = std::make_shared<MachineSensors>();
                return std::make_unique<TraceRecorder>(sensors);
            }};
}

// The state of one run, owned by the store while the run is active.
struct BenchmarkStore::RunTask {
    std::vector<BenchmarkID> ids;
    bool followsActiveTest = false;
    bool accuracyMode = false;
    double budgetScale = 1.0; // of every workload's budget, fixed for the whole run
    int passes = 1;
    bool cancelled = false;
    std::size_t index = 0;                      // the benchmark now running
    std::vector<BenchmarkOutcome> passOutcomes; // Accuracy Mode passes so far
    std::optional<double> stability;            // the running benchmark's lowest pass stability
    std::optional<double> spread;               // its Accuracy Mode spread, once all passes ended
    std::optional<StabilityTarget> untilStable; // rerun each benchmark until its interval is narrow
    // The slices of each pass of the running benchmark, in run order (empty for a pass that
    // reported no progress), and what its combined result's interval became.
    std::vector<std::vector<PhaseSlice>> passSlices;
    std::vector<TracedPass> passTraces; // as passSlices: the sensors of each pass
    std::optional<RateUncertainty> uncertainty;
    std::optional<RateUncertainty> withinRun;
    std::optional<NoiseFloor> noiseFloor;    // added to withinRun for a single pass
    std::optional<CpuTickSample> startTicks; // as the running benchmark started
    std::optional<double> startCelsius;      // the CPU as the running benchmark started
    std::optional<CooldownWait> cooldown;    // how to wait before each benchmark but the first
    std::size_t cooledFor = 0;               // the benchmark the last wait came before
    // What a stop puts back: the running benchmark's row as the run reached it (an earlier
    // run's result, say), and the summary shown before the run, while none of it has ended.
    std::optional<BenchmarkRowState> rowBefore;
    std::optional<RunSummary> summaryBefore;
};

// Written by the workload's thread after each unit, read by the display clock.
class BenchmarkStore::PassProgress final : public ProgressSink {
  public:
    void report(const ProgressReport& progress) noexcept override {
        std::lock_guard lock(mutex_);
        latest_ = progress;
        series_.add(progress);
    }
    ProgressReport latest() const {
        std::lock_guard lock(mutex_);
        return latest_;
    }
    // Once the pass has ended: its reports, sliced.
    std::vector<PhaseSlice> slices() const {
        std::lock_guard lock(mutex_);
        return slicePhases(series_);
    }

  private:
    mutable std::mutex mutex_;
    ProgressReport latest_;
    ProgressSeries series_;
};

BenchmarkStore::BenchmarkStore(StoreServices services, WindowPresenter* presenter, QObject* parent)
    : QObject(parent), services_(std::move(services)), presenter_(presenter),
      background_(std::make_unique<BackgroundTasks>(this)) {
    if (!services_.runWorkload) services_.runWorkload = StoreServices::standard().runWorkload;
    if (!services_.readTemperatures) services_.readTemperatures = StoreServices::standard().readTemperatures;
    if (!services_.now) services_.now = StoreServices::standard().now;
    if (!services_.readCondition) services_.readCondition = StoreServices::standard().readCondition;
    if (!services_.readThrottle) services_.readThrottle = StoreServices::standard().readThrottle;
    if (!services_.readCpuTicks) services_.readCpuTicks = StoreServices::standard().readCpuTicks;
    if (!services_.startTrace) services_.startTrace = StoreServices::standard().startTrace;
    if (services_.runLockDirectory.empty()) services_.runLockDirectory = RunLock::defaultDirectory();
    currentRunTick_ = services_.now();
    startThermalMonitor(kIdleThermalInterval);
}

BenchmarkStore::~BenchmarkStore() {
    // Workloads stop at their next check point; the threads are joined below.
    if (workerToken_) workerToken_->cancel();
    background_->joinAll();
}

double BenchmarkStore::currentRunElapsed() const {
    if (!currentRunStartedAt_.isValid()) return 0;
    const double elapsed = static_cast<double>(currentRunStartedAt_.msecsTo(currentRunTick_)) / 1000.0;
    return elapsed > 0 ? elapsed : 0;
}

double BenchmarkStore::currentRunProgress() const {
    if (!(currentRunTargetSeconds_ > 0)) return 0;
    return std::min(currentRunElapsed() / currentRunTargetSeconds_, 1.0);
}

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
        if (const auto others = RunLock::runsIn(services_.runLockDirectory); !others.empty()) {
            switch (otherRunsQuestion_(qs(otherRunsText(others)))) {
            case OtherRunsChoice::cancel: return;
            case OtherRunsChoice::wait: waits = true; break;
            case OtherRunsChoice::runAnyway: break;
            }
        }
    }
    task_ = std::make_unique<RunTask>();
    task_->ids = ids;
    runIDs_ = ids;
    endedInRun_.clear();
    runStopped_ = false;
    task_->followsActiveTest = followsActiveTest;
    task_->accuracyMode = accuracyMode_;
    task_->budgetScale = budgetScale_;
    task_->passes = accuracyMode_ ? kAccuracyPasses : 1;
    if (!accuracyMode_ && untilStable_) {
        task_->untilStable = untilStable_;
        task_->passes = std::max(untilStable_->maxPasses, 1);
    }
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
    const auto others = RunLock::runsIn(services_.runLockDirectory);
    if (task_->cancelled || others.empty()) {
        if (!concurrentRuns_.isEmpty()) {
            concurrentRuns_.clear();
            Q_EMIT concurrentRunsChanged();
        }
        if (task_->cancelled)
            finishRunTask();
        else
            startRunTask();
        return;
    }
    const QString waiting = QStringLiteral("Waiting for the other Quarbel run to end (%1); Stop gives up.")
                                .arg(qs(otherRunsText(others)));
    if (waiting != concurrentRuns_) {
        concurrentRuns_ = waiting;
        Q_EMIT concurrentRunsChanged();
        appendLog(waiting);
    }
    QTimer::singleShot(kOtherRunPollMs, this, [this, task = task_.get()] {
        if (task_.get() == task) waitForOtherRuns();
    });
}

void BenchmarkStore::startRunTask() {
    RunTask* task = task_.get();
    QString mode = task->accuracyMode ? QStringLiteral("Accuracy") : QStringLiteral("Standard");
    if (task->budgetScale < 1.0)
        mode += QStringLiteral(" Mode, quick: a tenth of each time budget");
    else
        mode += QStringLiteral(" Mode");
    activeRunStartedAt_ = std::chrono::system_clock::now();
    task->summaryBefore = runSummary_;
    if (runSummary_) {
        runSummary_.reset();
        Q_EMIT runSummaryChanged();
    }
    peakCPU_ = temperatureSnapshot_.cpuCelsius;
    peakGPU_ = temperatureSnapshot_.gpuCelsius;
    condition_.reset();
    Q_EMIT runConditionChanged();
    readRunCondition();
    startThermalMonitor(kRunningThermalInterval);
    runLock_ = std::make_unique<RunLock>(services_.runLockDirectory);
    if (task->ids.size() == 1) {
        appendLog(QStringLiteral("Running %1 (%2)").arg(qs(title(task->ids.front())), mode));
    } else if (task->ids.size() == kAllBenchmarks.size()) {
        appendLog(QStringLiteral("Running full suite (%1)").arg(mode));
    } else {
        appendLog(QStringLiteral("Running %1 benchmarks (%2)").arg(task->ids.size()).arg(mode));
    }
    runsWarnedAbout_ = runLock_->otherRuns();
    if (const auto warning = concurrentRunWarning(runLock_->otherRuns()); !warning.empty())
        appendLog(qs(warning));
    checkConcurrentRuns();
    if (const auto warning = unmarkedRunWarning(*runLock_); !warning.empty()) appendLog(qs(warning));
    task->cooldown.emplace(cooldown_.value_or(defaultCooldown(task->budgetScale < 1.0)), cpuCelsiusNow());
    if (const auto reason = task->cooldown->unavailableReason(); !reason.empty() && task->ids.size() > 1)
        appendLog(QStringLiteral("No cooldown between benchmarks: %1").arg(qs(reason)));
    beginNextBenchmark();
}

std::optional<double> BenchmarkStore::cpuCelsiusNow() {
    const QLTemperatureReading reading = services_.readTemperatures();
    return reading.hasCPU != 0 ? std::optional(reading.cpu) : std::nullopt;
}

bool BenchmarkStore::startCooldown() {
    const auto celsius = cpuCelsiusNow();
    if (!task_->cooldown || !task_->cooldown->keepWaiting(0, celsius)) return false;
    cooldownStartedAt_ = monotonicSeconds();
    cooldownText_ = qs(task_->cooldown->text(0, celsius));
    Q_EMIT cooldownTextChanged();
    appendLog(cooldownText_);
    if (cooldownTimer_ == nullptr) {
        cooldownTimer_ = new QTimer(this);
        cooldownTimer_->setInterval(250);
        connect(cooldownTimer_, &QTimer::timeout, this, &BenchmarkStore::cooldownTick);
    }
    cooldownTimer_->start();
    return true;
}

void BenchmarkStore::cooldownTick() {
    if (!task_ || task_->cancelled) {
        endCooldown();
        if (task_) beginNextBenchmark();
        return;
    }
    const double waited = monotonicSeconds() - cooldownStartedAt_;
    const auto celsius = cpuCelsiusNow();
    if (task_->cooldown->keepWaiting(waited, celsius)) {
        cooldownText_ = qs(task_->cooldown->text(waited, celsius));
        Q_EMIT cooldownTextChanged();
        return;
    }
    endCooldown();
    appendLog(celsius ? QStringLiteral("Cooled down to %1 \u00b0C in %2 s")
                            .arg(qs(format(*celsius, 0)), qs(format(waited, 0)))
                      : QStringLiteral("Waited %1 s").arg(qs(format(waited, 0))));
    beginNextBenchmark();
}

void BenchmarkStore::endCooldown() {
    if (cooldownTimer_ != nullptr) cooldownTimer_->stop();
    if (cooldownText_.isEmpty()) return;
    cooldownText_.clear();
    Q_EMIT cooldownTextChanged();
}

void BenchmarkStore::beginNextBenchmark() {
    RunTask& task = *task_;
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
    if (runLock_) runLock_->setBenchmark(std::string(title(id)));
    setRow(id, {TestRunState::running, std::nullopt});
    task.stability.reset();
    task.spread.reset();
    task.passSlices.clear();
    task.passTraces.clear();
    task.uncertainty.reset();
    task.withinRun.reset();
    task.noiseFloor.reset();
    task.startTicks = services_.readCpuTicks();
    if (const QLTemperatureReading reading = services_.readTemperatures(); reading.hasCPU != 0)
        task.startCelsius = reading.cpu;
    else
        task.startCelsius.reset();
    condition_.beginBenchmark();
    startRealtimeClock(id, task.passes);
    if (hasAnimationWindow(id)) presentAnimationWindow(id, task.passes);
    runBenchmark(id, task.passes);
}

void BenchmarkStore::runBenchmark(BenchmarkID id, int passes) {
    if (passes < 2 && !task_->untilStable) {
        runBenchmarkPass(id, [this](BenchmarkOutcome outcome) {
            combinePasses();
            benchmarkFinished(std::move(outcome));
        });
        return;
    }
    task_->passOutcomes.clear();
    if (task_->untilStable)
        appendLog(QStringLiteral("%1: rerun until stable (\u00b1 %2 %, at most %3 passes)")
                      .arg(qs(title(id)), qs(format(task_->untilStable->ci95Percent, 1)))
                      .arg(passes));
    else
        appendLog(QStringLiteral("%1: Accuracy Mode %2x median").arg(qs(title(id))).arg(passes));
    runNextAccuracyPass();
}

void BenchmarkStore::runNextAccuracyPass() {
    RunTask& task = *task_;
    const BenchmarkID id = task.ids[task.index];
    const auto done = static_cast<int>(task.passOutcomes.size());
    if (task.cancelled || passesDone(task.passOutcomes, task.passes, task.untilStable, task.uncertainty)) {
        BenchmarkOutcome outcome = accuracyStoppedOutcome();
        if (!task.cancelled && task.untilStable) {
            outcome = untilStableOutcome(task.passOutcomes,
                                         task.uncertainty ? std::optional(task.uncertainty->ci95Percent())
                                                          : std::nullopt,
                                         *task.untilStable);
        } else if (done == task.passes) {
            outcome = accuracyOutcome(task.passOutcomes);
            task.spread = accuracySpreadPercent(task.passOutcomes);
        }
        setPassText({});
        benchmarkFinished(std::move(outcome));
        return;
    }
    const QString total =
        task.untilStable ? QStringLiteral("%1 at most").arg(task.passes) : QString::number(task.passes);
    appendLog(QStringLiteral("%1: pass %2/%3").arg(qs(title(id))).arg(done + 1).arg(total));
    setPassText(task.untilStable ? QStringLiteral("pass %1 of at most %2").arg(done + 1).arg(task.passes)
                                 : QStringLiteral("pass %1 of %2").arg(done + 1).arg(task.passes));
    runBenchmarkPass(id, [this](BenchmarkOutcome outcome) {
        task_->passOutcomes.push_back(std::move(outcome));
        combinePasses();
        runNextAccuracyPass();
    });
}

void BenchmarkStore::combinePasses() {
    RunTask& task = *task_;
    PassUncertainty combined =
        passesUncertainty(task.ids[task.index], task.budgetScale < 1.0 ? RunLength::quick : RunLength::full,
                          task.passOutcomes, task.passSlices, noiseFloors_);
    task.uncertainty = combined.uncertainty;
    task.withinRun = combined.withinRun;
    task.noiseFloor = combined.noiseFloor;
}

void BenchmarkStore::benchmarkFinished(BenchmarkOutcome outcome) {
    RunTask& task = *task_;
    if (task.cancelled) {
        finishRunTask();
        return;
    }
    const BenchmarkID id = task.ids[task.index];
    if (hasAnimationWindow(id)) closeAnimationWindow();
    const OutcomeStatus status = outcome.status;
    const QString line = [&] {
        switch (status) {
        case OutcomeStatus::ok:
            return QStringLiteral("%1: %2 pts, %3 %4")
                .arg(qs(title(id)), qs(scoreText(outcome.score)), qs(outcome.primary.value),
                     qs(outcome.primary.unit));
        case OutcomeStatus::failed: return QStringLiteral("%1: failed").arg(qs(title(id)));
        case OutcomeStatus::skipped: break;
        }
        return QStringLiteral("%1: unavailable").arg(qs(title(id)));
    }();
    BenchmarkEndState end;
    end.temperature = temperatureSnapshot_;
    end.accuracyMode = task.accuracyMode;
    end.stabilityPercent = task.stability;
    end.spreadPercent = task.spread;
    end.passes = std::max<int>(1, static_cast<int>(task.passOutcomes.size()));
    if (status == OutcomeStatus::ok) {
        end.uncertainty = task.uncertainty;
        end.withinRun = task.withinRun;
        end.noiseFloor = task.noiseFloor;
        const std::size_t kept = medianPassIndex(task.passOutcomes);
        if (kept < task.passSlices.size()) end.slices = task.passSlices[kept];
        if (kept < task.passTraces.size()) {
            end.trace = std::move(task.passTraces[kept].trace);
            end.energy = std::move(task.passTraces[kept].energy);
            end.traceSummary = traceSummary(end.trace);
        }
        end.startCelsius = task.startCelsius;
        if (task.passOutcomes.size() > 1)
            for (const auto& pass : task.passOutcomes)
                end.passScores.push_back(pass.score);
    }
    if (const auto endTicks = services_.readCpuTicks(); task.startTicks && endTicks)
        end.interference = interferenceBetween(*task.startTicks, *endTicks);
    end.frequencyDropPercent = condition_.frequencyDropPercent();
    end.noisy = end.interference && isNoisy(*end.interference);
    endStates_[indexOf(id)] = std::move(end);
    task.passOutcomes.clear();
    if (task.stability && *task.stability < kThrottlingStabilityPercent) {
        condition_.markUnstable();
        Q_EMIT runConditionChanged();
    }
    setRow(id, {rowStateFor(status), std::move(outcome)});
    endedInRun_.push_back(id);
    appendLog(line);
    ++task.index;
    beginNextBenchmark();
}

void BenchmarkStore::finishRunTask() {
    std::unique_ptr<RunTask> task = std::move(task_);
    setRunningID(std::nullopt);
    workerToken_.reset();
    workerProgress_.reset();
    stopRealtimeClock();
    if (!task->cancelled) {
        const bool suite = task->ids.size() == kBenchmarkCount;
        const QString title = suite ? (task->accuracyMode ? QStringLiteral("Full Suite Accuracy Summary")
                                                          : QStringLiteral("Full Suite Summary"))
                                    : (task->accuracyMode ? QStringLiteral("Selected Test Accuracy Summary")
                                                          : QStringLiteral("Selected Test Summary"));
        runSummary_ = makeRunSummary(
            rows_, task->ids,
            {title.toStdString(), activeRunStartedAt_, peakCPU_, peakGPU_, std::chrono::system_clock::now()});
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
    runLock_.reset();
    runsWarnedAbout_.clear();
    if (!concurrentRuns_.isEmpty()) {
        concurrentRuns_.clear();
        Q_EMIT concurrentRunsChanged();
    }
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
    if (id == BenchmarkID::metalVisual && presenter_ != nullptr) {
        runVisibleMetalBenchmark(std::move(completion));
        return;
    }
    auto token = std::make_shared<CancellationToken>();
    auto progress = std::make_shared<PassProgress>();
    passSeries_.clear();
    workerToken_ = token;
    workerProgress_ = progress;
    WorkloadContext context;
    context.cancellation = token.get();
    context.progress = progress.get();
    context.budgetScale = runBudgetScale();
    auto runWorkload = services_.runWorkload;
    // Shared so that the pass can still be answered when its thread never starts.
    auto pending = std::make_shared<PassCompletion>(std::move(completion));
    const auto problem = background_->start(
        // The thread keeps the token and sink alive even after the store lets go of them.
        [runWorkload, id, context, token, progress] { return runWorkload(id, context); },
        [this, id, token, progress, pending,
         fullBudget = context.budgetScale >= 1.0](BenchmarkOutcome outcome) {
            sampleProgress(progress->latest());
            if (task_) task_->passSlices.push_back(progress->slices());
            // The storage benchmarks change pace by design (writes, then reads), so a slower
            // last fifth says nothing about throttling there. In a quick run a fifth lasts a
            // fraction of a second, short enough for one preempted tick to look like heat.
            const bool measurable = fullBudget && category(id) != BenchmarkCategory::storage;
            if (task_ && outcome.status == OutcomeStatus::ok && measurable) {
                if (const auto stability = stabilityPercent(passSeries_))
                    task_->stability = std::min(task_->stability.value_or(*stability), *stability);
            }
            if (workerToken_ == token) {
                workerToken_.reset();
                workerProgress_.reset();
            }
            // stop() may have dropped the handle already; the run task still waits for
            // the pass to end and then notices the cancellation.
            (*pending)(std::move(outcome));
        });
    if (!problem) return;
    if (task_) task_->passSlices.emplace_back();
    workerToken_.reset();
    workerProgress_.reset();
    // The benchmark fails and the run goes on; the outcome arrives from the event loop,
    // as a finished pass's would.
    QMetaObject::invokeMethod(
        this,
        [pending, outcome = failedOutcome("Quarbel could not start a worker thread: " + *problem + ".")] {
            (*pending)(outcome);
        },
        Qt::QueuedConnection);
}

void BenchmarkStore::runVisibleMetalBenchmark(PassCompletion completion) {
    // The window's scene reports frame statistics, not slices.
    if (task_) task_->passSlices.emplace_back();
    if (!presenter_->hasVisualDevice()) {
        completion(skippedOutcome("Metal is not available on this machine."));
        return;
    }
    VisualBenchmarkRequest request{newUUIDText(), kVisualSeconds * runBudgetScale(), kVisualWorkload};
    visualRunID_ = request.id;
    visualLiveStats_.reset();
    Q_EMIT visualLiveStatsChanged();
    visualContinuation_ = std::move(completion);
    visualRequest_ = request;
    Q_EMIT visualBenchmarkRequestChanged();
    QPointer<BenchmarkStore> self(this);
    const std::string requestID = request.id;
    animationWindowOpen_ = true;
    // Started before the window opens: a window that fails at once still ends the wait.
    if (visualWatchdog_ == nullptr) {
        visualWatchdog_ = new QTimer(this);
        visualWatchdog_->setSingleShot(true);
        connect(visualWatchdog_, &QTimer::timeout, this, &BenchmarkStore::visualBenchmarkStalled);
    }
    visualWatchdog_->start(static_cast<int>(std::lround(visualStallLimit_ * 1000.0)));
    presenter_->showVisualBenchmark(
        request,
        [self, requestID](const VisualBenchmarkLiveStats& stats) {
            if (self) self->updateVisualLiveStats(requestID, stats);
        },
        [self, requestID](const BenchmarkOutcome& outcome) {
            if (self) self->finishVisualBenchmark(requestID, outcome);
        });
}

void BenchmarkStore::updateVisualLiveStats(const std::string& id, const VisualBenchmarkLiveStats& stats) {
    if (visualRunID_ != id) return;
    if (visualWatchdog_ != nullptr && visualWatchdog_->isActive()) visualWatchdog_->start();
    visualLiveStats_ = stats;
    Q_EMIT visualLiveStatsChanged();
}

void BenchmarkStore::finishVisualBenchmark(const std::optional<std::string>& id,
                                           const BenchmarkOutcome& outcome) {
    if (id && visualRunID_ != id) return;
    if (!visualContinuation_) return;
    PassCompletion continuation = std::move(*visualContinuation_);
    visualContinuation_.reset();
    if (visualWatchdog_ != nullptr) visualWatchdog_->stop();
    visualRunID_.reset();
    visualRequest_.reset();
    Q_EMIT visualBenchmarkRequestChanged();
    visualLiveStats_.reset();
    Q_EMIT visualLiveStatsChanged();
    closeAnimationWindow();
    // Resumed from the event loop, as an awaiting task would be: a stop() that gets
    // here finishes its own steps before the run task sees the outcome.
    QMetaObject::invokeMethod(
        this, [continuation = std::move(continuation), outcome] { continuation(outcome); },
        Qt::QueuedConnection);
}

void BenchmarkStore::visualBenchmarkStalled() {
    const std::string problem = presenter_ != nullptr ? presenter_->visualProblem() : std::string();
    const std::string detail = problem.empty() ? "The visual benchmark window showed no frame for " +
                                                     format(visualStallLimit_, 0) + " seconds."
                                               : "The visual benchmark could not render: " + problem + ".";
    finishVisualBenchmark(visualRunID_, failedOutcome(detail));
}

void BenchmarkStore::stop() {
    if (!task_ && !workerToken_ && !runningID_ && !animationWindowOpen_) return;
    const std::optional<BenchmarkRowState> rowBefore = task_ ? task_->rowBefore : std::nullopt;
    if (task_) task_->cancelled = true;
    if (workerToken_) workerToken_->cancel();
    workerToken_.reset();
    workerProgress_.reset();
    // Releases a pass that waits for the visual window; the run task then sees the stop.
    finishVisualBenchmark(visualRunID_, failedOutcome("Run stopped by the user."));
    closeAnimationWindow();
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
    if (cooldownTimer_ != nullptr && cooldownTimer_->isActive()) {
        endCooldown();
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
    if (visualLiveStats_) {
        visualLiveStats_.reset();
        Q_EMIT visualLiveStatsChanged();
    }
    liveProgress_ = {};
    Q_EMIT liveProgressChanged();
    const QDateTime now = services_.now();
    currentRunStartedAt_ = now;
    Q_EMIT currentRunStartedAtChanged();
    currentRunTick_ = now;
    // Quick runs shorten every budget, so the target and the bar follow the shortened one.
    currentRunTargetSeconds_ = targetSeconds(id) * std::max(passes, 1) * runBudgetScale();
    Q_EMIT currentRunTargetSecondsChanged();
    Q_EMIT currentRunTickChanged();
    delete realtimeTimer_;
    realtimeTimer_ = new QTimer(this);
    realtimeTimer_->setInterval(kClockIntervalMs);
    connect(realtimeTimer_, &QTimer::timeout, this, &BenchmarkStore::onRealtimeTick);
    realtimeTimer_->start();
}

void BenchmarkStore::onRealtimeTick() {
    currentRunTick_ = services_.now();
    if (workerProgress_) {
        const ProgressReport report = workerProgress_->latest();
        sampleProgress(report);
        LiveProgress progress{report.unitsDone, report.elapsedSeconds, report.unit};
        if (progress != liveProgress_) {
            liveProgress_ = std::move(progress);
            Q_EMIT liveProgressChanged();
        }
    }
    Q_EMIT currentRunTickChanged();
}

void BenchmarkStore::stopRealtimeClock() {
    delete realtimeTimer_;
    realtimeTimer_ = nullptr;
    currentRunStartedAt_ = QDateTime();
    Q_EMIT currentRunStartedAtChanged();
    currentRunTargetSeconds_ = 0;
    Q_EMIT currentRunTargetSecondsChanged();
    currentRunTick_ = services_.now();
    Q_EMIT currentRunTickChanged();
}

void BenchmarkStore::presentAnimationWindow(BenchmarkID id, int passes) {
    closeAnimationWindow();
    if (presenter_ == nullptr) return;
    presenter_->showAnimationWindow(id, passes);
    animationWindowOpen_ = true;
}

void BenchmarkStore::closeAnimationWindow() {
    if (!animationWindowOpen_) return;
    animationWindowOpen_ = false;
    if (presenter_ != nullptr) presenter_->closeWindow();
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
    Q_EMIT runningIDChanged();
}

void BenchmarkStore::startThermalMonitor(double intervalSeconds) {
    refreshThermalSnapshot();
    if (thermalTimer_ != nullptr && std::abs(thermalMonitorInterval_ - intervalSeconds) < 0.001) return;
    delete thermalTimer_;
    thermalMonitorInterval_ = intervalSeconds;
    thermalTimer_ = new QTimer(this);
    thermalTimer_->setInterval(static_cast<int>(std::lround(intervalSeconds * 1000.0)));
    connect(thermalTimer_, &QTimer::timeout, this, &BenchmarkStore::refreshThermalSnapshot);
    thermalTimer_->start();
}

void BenchmarkStore::refreshThermalSnapshot() {
    if (task_ && runLock_) checkConcurrentRuns(); // once this run is marked
    if (thermalReadInFlight_) return;
    thermalReadInFlight_ = true;
    auto read = services_.readTemperatures;
    // Throttling is only looked for while benchmarks run.
    auto readThrottle = task_ ? services_.readThrottle : std::function<ThrottleSample()>{};
    const auto problem = background_->start(
        [read, readThrottle] {
            // A low priority keeps a slow sensor read from competing with the workload.
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
            auto snapshot = makeTemperatureSnapshot(read(), std::chrono::system_clock::now());
            return std::pair{snapshot, readThrottle ? std::optional(readThrottle()) : std::nullopt};
        },
        [this](std::pair<TemperatureSnapshot, std::optional<ThrottleSample>> reading) {
            applyTemperatureSnapshot(reading.first);
            if (reading.second && runningID_) {
                const auto signs = condition_.observe(*reading.second);
                for (const auto& sign : signs)
                    appendLog(QStringLiteral("Throttling: %1").arg(qs(sign)));
                if (!signs.empty()) Q_EMIT runConditionChanged();
            }
            thermalReadInFlight_ = false;
        });
    if (!problem) return;
    // This reading is skipped; the next tick tries again, without repeating the message.
    thermalReadInFlight_ = false;
    if (thermalStartFailureLogged_) return;
    thermalStartFailureLogged_ = true;
    appendLog(QStringLiteral("Temperatures not read: Quarbel could not start a thread for them (%1)")
                  .arg(qs(*problem)));
}

void BenchmarkStore::applyTemperatureSnapshot(const TemperatureSnapshot& snapshot) {
    temperatureSnapshot_ = snapshot;
    Q_EMIT temperatureSnapshotChanged();
    if (!runningID_) return;
    // A reading equal to the peak replaces it; a peak never falls during a run.
    if (snapshot.cpuCelsius)
        peakCPU_ = peakCPU_ ? std::max(*peakCPU_, *snapshot.cpuCelsius) : *snapshot.cpuCelsius;
    if (snapshot.gpuCelsius)
        peakGPU_ = peakGPU_ ? std::max(*peakGPU_, *snapshot.gpuCelsius) : *snapshot.gpuCelsius;
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

void BenchmarkStore::sampleProgress(const ProgressReport& report) {
    if (report.elapsedSeconds <= 0) return;
    if (!passSeries_.empty() && passSeries_.back().elapsedSeconds >= report.elapsedSeconds) return;
    passSeries_.push_back({report.elapsedSeconds, report.unitsDone});
}

void BenchmarkStore::setPassText(const QString& text) {
    if (text == passText_) return;
    passText_ = text;
    Q_EMIT passTextChanged();
}

void BenchmarkStore::checkConcurrentRuns() {
    const std::vector<RunLock::OtherRun> others = RunLock::runsIn(services_.runLockDirectory);
    const QString warning = qs(runsBesideThisWarning(others));
    if (warning != concurrentRuns_) {
        concurrentRuns_ = warning;
        Q_EMIT concurrentRunsChanged();
    }
    // A run that started after this one is logged once, here as in its own window.
    for (const RunLock::OtherRun& other : others) {
        if (std::find(runsWarnedAbout_.begin(), runsWarnedAbout_.end(), other.pid) != runsWarnedAbout_.end())
            continue;
        runsWarnedAbout_.push_back(other.pid);
        appendLog(qs(runsBesideThisWarning({other})));
    }
}

} // namespace quarbel
