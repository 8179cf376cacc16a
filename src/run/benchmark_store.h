// SPDX-License-Identifier: Apache-2.0
// BenchmarkStore: the single owner of run state. It lives on the main thread; views
// and the command line read its properties, listen to their change signals and call
// its operations. Workloads run one pass at a time on a background thread and hand
// their outcome back to the main thread before any property changes.
#pragma once

#include "model/accuracy.h"
#include "model/catalogue.h"
#include "model/noise_floor.h"
#include "model/outcome.h"
#include "model/progress_series.h"
#include "model/sensor_trace.h"
#include "model/stability.h"
#include "model/visual.h"
#include "model/workload_context.h"
#include "run/concurrent_run_watch.h"
#include "run/cooldown.h"
#include "run/cooldown_pause.h"
#include "run/run_clock.h"
#include "run/run_condition_tracker.h"
#include "run/run_lock.h"
#include "run/run_log.h"
#include "run/run_windows.h"
#include "run/thermal_monitor.h"
#include "run/workload_pass.h"
#include "sensors/interference.h"
#include "sensors/machine_condition.h"
#include "sensors/temperature.h"
#include "sensors/trace_recorder.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quarbel {

class BackgroundTasks;
class WindowPresenter;
struct RunState;

using OptionalBenchmarkID = std::optional<BenchmarkID>;
using OptionalRunSummary = std::optional<RunSummary>;
using OptionalVisualRequest = std::optional<VisualBenchmarkRequest>;
using OptionalVisualLiveStats = std::optional<VisualBenchmarkLiveStats>;

// Live progress of the pass now running, as its workload last reported it.
struct LiveProgress {
    std::int64_t unitsDone = 0;
    double elapsedSeconds = 0;
    ProgressUnit unit; // no name until the workload reports
    bool operator==(const LiveProgress&) const = default;
};

// The circumstances of a benchmark's last stored outcome, for the report and the cards.
struct BenchmarkEndState {
    TemperatureSnapshot temperature; // read when it ended; all absent: unavailable
    bool accuracyMode = false;       // the outcome is the median of Accuracy Mode's passes
    // The last fifth's rate over the first fifth's, in percent: the lowest of its passes.
    // Absent for a workload that reported its progress fewer than five times, and for the
    // storage benchmarks, whose phases run at different rates by design.
    std::optional<double> stabilityPercent;
    std::optional<double> spreadPercent; // Accuracy Mode's spread of the pass scores
    int passes = 1;                      // passes the result combines
    // The score's uncertainty: one pass's slices with its benchmark's run-to-run noise added,
    // or the spread of several passes. Absent when too few slices or passes were measured.
    std::optional<RateUncertainty> uncertainty;
    std::optional<RateUncertainty> withinRun; // a single pass's own, from its slices alone
    std::optional<NoiseFloor> noiseFloor;     // the run-to-run floor added to withinRun
    std::vector<PhaseSlice> slices;           // of the pass whose outcome is kept
    std::vector<double> passScores;           // in run order, when the result combines several passes
    // What the rest of the machine took while the benchmark ran; absent where unreadable.
    std::optional<Interference> interference;
    std::optional<double> frequencyDropPercent; // the fastest CPU's lowest frequency below its highest
    bool noisy = false;                         // interference above the thresholds of isNoisy
    SensorTrace trace;                          // of the pass whose outcome is kept
    ResultEnergy energy;                        // of that pass
    std::string traceSummary;                   // one line on what the trace shows
    std::optional<double> startCelsius;         // the CPU as the benchmark started
    bool operator==(const BenchmarkEndState&) const = default;
};

// What the store runs and reads; the defaults are the real workloads and sensors.
struct StoreServices {
    // Runs one pass of a benchmark on the calling (background) thread.
    std::function<BenchmarkOutcome(BenchmarkID, const WorkloadContext&)> runWorkload;
    // Reads the temperatures once on the calling (background) thread.
    std::function<QLTemperatureReading()> readTemperatures;
    // The wall clock of the display clock and the log (main thread).
    std::function<QDateTime()> now;
    // What makes a result less trustworthy, sampled as a run starts (background thread).
    std::function<MachineCondition()> readCondition;
    // Frequencies and critical sensors, read with the temperatures while a run is active.
    std::function<ThrottleSample()> readThrottle;
    // The machine's and this process's CPU ticks, read as each benchmark starts and ends.
    std::function<std::optional<CpuTickSample>()> readCpuTicks;
    // Where runs mark themselves, to find another Quarbel's run (RunLock); empty: the default.
    std::string runLockDirectory;
    // Starts recording the sensors for one pass (main thread); null records nothing.
    std::function<std::unique_ptr<TraceRecorder>()> startTrace;

    static StoreServices standard();
};

// What to do about other Quarbel runs found as a run is asked for.
enum class OtherRunsChoice { wait, runAnyway, cancel };

class BenchmarkStore : public QObject {
    Q_OBJECT
    Q_PROPERTY(quarbel::BenchmarkRows rows READ rows NOTIFY rowsChanged)
    Q_PROPERTY(quarbel::BenchmarkID selectedID READ selectedID WRITE setSelectedID NOTIFY selectedIDChanged)
    Q_PROPERTY(quarbel::OptionalBenchmarkID runningID READ runningID NOTIFY runningIDChanged)
    Q_PROPERTY(QStringList logLines READ logLines NOTIFY logLinesChanged)
    Q_PROPERTY(quarbel::OptionalVisualRequest visualBenchmarkRequest READ visualBenchmarkRequest NOTIFY
                   visualBenchmarkRequestChanged)
    Q_PROPERTY(
        quarbel::OptionalVisualLiveStats visualLiveStats READ visualLiveStats NOTIFY visualLiveStatsChanged)
    Q_PROPERTY(QDateTime currentRunStartedAt READ currentRunStartedAt NOTIFY currentRunStartedAtChanged)
    Q_PROPERTY(
        double currentRunTargetSeconds READ currentRunTargetSeconds NOTIFY currentRunTargetSecondsChanged)
    Q_PROPERTY(QDateTime currentRunTick READ currentRunTick NOTIFY currentRunTickChanged)
    Q_PROPERTY(quarbel::TemperatureSnapshot temperatureSnapshot READ temperatureSnapshot NOTIFY
                   temperatureSnapshotChanged)
    Q_PROPERTY(quarbel::OptionalRunSummary runSummary READ runSummary NOTIFY runSummaryChanged)
    Q_PROPERTY(bool accuracyMode READ accuracyMode WRITE setAccuracyMode NOTIFY accuracyModeChanged)
    Q_PROPERTY(bool quickMode READ quickMode WRITE setQuickMode NOTIFY quickModeChanged)
    Q_PROPERTY(quarbel::LiveProgress liveProgress READ liveProgress NOTIFY liveProgressChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(quarbel::RunCondition runCondition READ runCondition NOTIFY runConditionChanged)
    Q_PROPERTY(QString concurrentRuns READ concurrentRuns NOTIFY concurrentRunsChanged)
    Q_PROPERTY(QString passText READ passText NOTIFY passTextChanged)
    Q_PROPERTY(QString cooldownText READ cooldownText NOTIFY cooldownTextChanged)
    Q_PROPERTY(double currentRunElapsed READ currentRunElapsed NOTIFY currentRunTickChanged)
    Q_PROPERTY(double currentRunProgress READ currentRunProgress NOTIFY currentRunTickChanged)
    Q_PROPERTY(int completedCount READ completedCount NOTIFY rowsChanged)
    Q_PROPERTY(double totalScore READ totalScore NOTIFY rowsChanged)

  public:
    // Construct on the main thread. `presenter` may be null (no windows: headless).
    explicit BenchmarkStore(StoreServices services = StoreServices::standard(),
                            WindowPresenter* presenter = nullptr, QObject* parent = nullptr);
    ~BenchmarkStore() override;

    const BenchmarkRows& rows() const { return rows_; }
    BenchmarkID selectedID() const { return selectedID_; }
    OptionalBenchmarkID runningID() const { return runningID_; }
    QStringList logLines() const { return log_.lines(); }
    OptionalVisualRequest visualBenchmarkRequest() const { return windows_.request(); }
    OptionalVisualLiveStats visualLiveStats() const { return windows_.liveStats(); }
    QDateTime currentRunStartedAt() const { return clock_.startedAt(); }
    double currentRunTargetSeconds() const { return clock_.targetSeconds(); }
    QDateTime currentRunTick() const { return clock_.lastTick(); }
    TemperatureSnapshot temperatureSnapshot() const { return thermal_.snapshot(); }
    OptionalRunSummary runSummary() const { return runSummary_; }
    bool accuracyMode() const { return accuracyMode_; }
    LiveProgress liveProgress() const { return liveProgress_; }
    bool busy() const { return task_ != nullptr; }
    const RunCondition& runCondition() const { return condition_.condition(); }
    // While a run goes on: the other Quarbel runs going on beside it (a warning naming them and
    // their benchmarks), looked for as it starts and with every temperature reading; empty
    // when there are none.
    const QString& concurrentRuns() const { return concurrentRuns_; }
    // Asked, with the other runs named ("pid 1234, on SSD Random"), when a run is asked for while other
    // Quarbel runs go on: wait for them (the run starts when they have ended, or Stop gives up), run anyway,
    // or cancel. Without a question the run goes ahead with a warning.
    void setOtherRunsQuestion(std::function<OtherRunsChoice(const QString& otherRuns)> question) {
        otherRunsQuestion_ = std::move(question);
    }
    // While a benchmark of several passes runs: which pass, "pass 2 of 3" ("pass 4 of at most
    // 10" until stable); empty for a single pass.
    const QString& passText() const { return passText_; }
    // The benchmarks of the current run, or of the last one when idle; empty before any.
    const std::vector<BenchmarkID>& runIDs() const { return runIDs_; }
    // Of those, the ones whose outcome came from that run (the rows of the others may still
    // show an earlier run's), in the order they ended; and whether that run was stopped.
    const std::vector<BenchmarkID>& endedInRun() const { return endedInRun_; }
    bool runStopped() const { return runStopped_; }

    // Set together with the row's outcome; the unavailable default before a first outcome.
    const BenchmarkEndState& endState(BenchmarkID id) const { return endStates_[indexOf(id)]; }

    double currentRunElapsed() const;  // seconds, against the last clock tick
    double currentRunProgress() const; // 0 ... 1
    int completedCount() const;
    double totalScore() const;
    double thermalMonitorInterval() const { return thermal_.interval(); }

    // Scales every workload's specified time budget (1 normally, kQuickBudgetScale for quick
    // runs). Like Accuracy Mode, it takes effect at the next start; a run keeps its own.
    void setBudgetScale(double scale);
    double budgetScale() const { return budgetScale_; }
    bool quickMode() const { return budgetScale_ < 1.0; }
    // Whether the active run (else the next one) runs at shortened budgets.
    bool runIsQuick() const;
    static constexpr double kQuickBudgetScale = 0.1;

    // Reruns each benchmark until its 95 % interval is within the target or the passes run
    // out (absent: off). Read when a run starts; Accuracy Mode's three passes win when both
    // are on.
    void setUntilStable(std::optional<StabilityTarget> target) { untilStable_ = target; }
    std::optional<StabilityTarget> untilStable() const { return untilStable_; }

    // How long the visual benchmark may go without a frame (no live statistics) before it
    // counts as failed and the run goes on. A scene whose device or pipeline is missing
    // never reports, so this bounds the wait.
    void setVisualStallLimit(double seconds) { windows_.setStallLimit(seconds); }
    static constexpr double kVisualStallLimit = 20.0;

    // The run-to-run floors that single-pass intervals add, learned from this machine's earlier
    // runs by whoever keeps its history; built-in floors until then. Taken by the next result.
    void setNoiseFloors(NoiseFloors floors) { noiseFloors_ = std::move(floors); }
    const NoiseFloors& noiseFloors() const { return noiseFloors_; }

    // Whether each pass records a sensor trace and its energy (on by default); read as each
    // pass starts.
    void setTraceEnabled(bool on) { traceEnabled_ = on; }
    // How the machine is brought back to idle before each benchmark but the first; none: the
    // default for the run's length. Read when a run starts.
    void setCooldown(std::optional<CooldownSetting> setting) { cooldown_ = setting; }
    // "Cooling down: 62 °C → 45 °C" while the run waits before a benchmark, else empty.
    QString cooldownText() const { return QString::fromStdString(cooldownPause_.text()); }
    bool traceEnabled() const { return traceEnabled_; }

  public Q_SLOTS:
    void setSelectedID(quarbel::BenchmarkID id);
    void setAccuracyMode(bool on);
    void setQuickMode(bool on) { setBudgetScale(on ? kQuickBudgetScale : 1.0); }
    void runSelected();
    void runAll();
    // Runs the benchmarks in order; ignored while a run is active.
    void run(const std::vector<quarbel::BenchmarkID>& ids, bool followsActiveTest);
    void stop();
    void startThermalMonitor(double intervalSeconds);
    // Adds a line from outside the run (a housekeeping notice) to the log, time-stamped.
    void logNotice(const QString& text);
    void refreshThermalSnapshot();

  Q_SIGNALS:
    void rowsChanged();
    void selectedIDChanged();
    void runningIDChanged();
    void logLinesChanged();
    void visualBenchmarkRequestChanged();
    void visualLiveStatsChanged();
    void currentRunStartedAtChanged();
    void currentRunTargetSecondsChanged();
    void currentRunTickChanged();
    void temperatureSnapshotChanged();
    void runSummaryChanged();
    void accuracyModeChanged();
    void quickModeChanged();
    void liveProgressChanged();
    void busyChanged();
    void runConditionChanged();
    void concurrentRunsChanged();
    void passTextChanged();
    void cooldownTextChanged();
    // Emitted for every log line as it is written, timestamp included.
    void logLineAppended(const QString& line);

  private:
    using PassCompletion = std::function<void(BenchmarkOutcome)>;

    void beginNextBenchmark();
    void runBenchmark(BenchmarkID id);
    void runNextAccuracyPass();
    void benchmarkFinished(BenchmarkOutcome outcome);
    void finishRunTask();
    void runBenchmarkPass(BenchmarkID id, PassCompletion completion);
    bool startCooldown();
    std::optional<double> cpuCelsiusNow();
    // The budget scale of the active run, else the one the next run will take.
    double runBudgetScale() const;
    void startRealtimeClock(BenchmarkID id, int passes);
    void stopRealtimeClock();
    void onRealtimeTick();
    void onThermalReading(const ThermalMonitor::Reading& reading);
    void appendLog(const QString& text);
    void setRow(BenchmarkID id, BenchmarkRowState row);
    void setRunningID(OptionalBenchmarkID id);
    void readRunCondition();
    void checkConcurrentRuns();
    void setConcurrentRuns(const QString& text);
    void waitForOtherRuns();
    void startRunTask();
    void setPassText(const QString& text);

    // Built first, so that the collaborators below can hand it work; the destructor joins its
    // threads before any member goes, so no result reaches a collaborator that is gone.
    std::unique_ptr<BackgroundTasks> background_;
    StoreServices services_;

    BenchmarkRows rows_;
    BenchmarkID selectedID_ = BenchmarkID::metalVisual;
    OptionalBenchmarkID runningID_;
    RunLog log_;
    OptionalRunSummary runSummary_;
    bool accuracyMode_ = false;
    LiveProgress liveProgress_;
    std::array<BenchmarkEndState, kBenchmarkCount> endStates_{};
    RunConditionTracker condition_;
    QString concurrentRuns_;
    std::function<OtherRunsChoice(const QString&)> otherRunsQuestion_;
    static constexpr int kOtherRunPollMs = 500;
    QString passText_;
    std::vector<BenchmarkID> runIDs_;
    std::vector<BenchmarkID> endedInRun_;
    bool runStopped_ = false;
    NoiseFloors noiseFloors_;
    std::unique_ptr<RunState> task_; // the run now active; null when idle
    std::optional<SystemTimePoint> activeRunStartedAt_;
    double budgetScale_ = 1.0;
    std::optional<StabilityTarget> untilStable_;
    bool traceEnabled_ = true;
    std::optional<CooldownSetting> cooldown_;

    // The run's jobs, each in a collaborator of its own.
    RunClock clock_;              // the running benchmark's elapsed time and progress
    ThermalMonitor thermal_;      // temperatures on a timer, and the run's peaks
    CooldownPause cooldownPause_; // the wait for the machine to cool before a benchmark
    ConcurrentRunWatch runWatch_; // this run's mark, and the other Quarbel runs beside it
    RunWindows windows_;          // the animation windows and the visual benchmark's window
    WorkloadPass pass_;           // the workload pass running on a background thread
};

} // namespace quarbel
