// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"
#include "support/other_quarbel_run.h"
#include "support/temp_dir.h"

#include "fake_workloads.h"
#include "run/window_presenter.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

using namespace quarbel;
using namespace quarbel::test;

namespace {

// The log lines without their "[HH:mm:ss] " prefix.
QStringList messages(const BenchmarkStore& store) {
    QStringList result;
    for (const QString& line : store.logLines()) {
        result << (line.startsWith('[') ? line.mid(11) : line);
    }
    return result;
}

bool idle(const BenchmarkStore& store) { return !store.busy(); }

const std::vector<BenchmarkID> kSuite(kAllBenchmarks.begin(), kAllBenchmarks.end());

} // namespace

TEST(BenchmarkStore, StartsIdleWithTheVisualBenchmarkSelected) {
    FakeWorkloads fakes;
    BenchmarkStore store(fakes.services());
    EXPECT_EQ(store.selectedID(), BenchmarkID::metalVisual);
    EXPECT_EQ(store.logLines(), QStringList{"Quarbel ready"});
    EXPECT_FALSE(store.runningID());
    EXPECT_EQ(store.currentRunProgress(), 0);
    EXPECT_EQ(store.thermalMonitorInterval(), 5.0);
    EXPECT_EQ(store.temperatureSnapshot().cpuCelsius, std::nullopt);
    for (BenchmarkID id : kAllBenchmarks)
        EXPECT_EQ(store.rows()[id], BenchmarkRowState{});
}

TEST(BenchmarkStore, FullSuiteRecordsEveryOutcomeLogsAndSummarises) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::ssdRandom, FakeBehaviour::failing);
    fakes.set(BenchmarkID::metalVisual, FakeBehaviour::skipping);
    fakes.set(BenchmarkID::cineTile, FakeBehaviour::instantOk, 2345.67);
    BenchmarkStore store(fakes.services());
    std::vector<BenchmarkID> selections;
    QObject::connect(&store, &BenchmarkStore::selectedIDChanged,
                     [&] { selections.push_back(store.selectedID()); });
    QStringList allLines;
    QObject::connect(&store, &BenchmarkStore::logLineAppended,
                     [&](const QString& l) { allLines << l.mid(11); });

    store.runAll();
    EXPECT_TRUE(store.busy()) << "run() returns at once with the task pending";
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));

    EXPECT_EQ(selections, kSuite) << "the selection follows the suite";
    EXPECT_EQ(store.rows()[BenchmarkID::cineTile].state, TestRunState::done);
    EXPECT_EQ(store.rows()[BenchmarkID::ssdRandom].state, TestRunState::failed);
    EXPECT_EQ(store.rows()[BenchmarkID::metalVisual].state, TestRunState::skipped);
    EXPECT_EQ(store.completedCount(), 11);

    ASSERT_EQ(allLines.size(), 17);
    EXPECT_EQ(allLines.front(), "Running full suite (Standard Mode)");
    EXPECT_EQ(allLines.at(1), "No cooldown between benchmarks: no CPU temperature sensor");
    EXPECT_TRUE(allLines.contains("CPU Tile Render: 2345.7 pts, 12.50 GB/s"));
    EXPECT_TRUE(allLines.contains("SSD Random: failed"));
    EXPECT_TRUE(allLines.contains("GPU Visual Tour: unavailable"));
    EXPECT_EQ(allLines.at(15), QString("Summary: 11/13 complete, total %1 pts")
                                   .arg(QString::fromStdString(scoreText(store.totalScore()))));
    EXPECT_EQ(allLines.back(), "Ready");

    EXPECT_EQ(store.logLines().size(), 14) << "only the last 14 lines are kept";
    EXPECT_FALSE(store.logLines().contains("Quarbel ready"));
    EXPECT_TRUE(store.logLines().front().startsWith('['));

    ASSERT_TRUE(store.runSummary());
    const RunSummary summary = *store.runSummary();
    EXPECT_EQ(summary.title, "Full Suite Summary");
    EXPECT_EQ(summary.total, 13);
    EXPECT_EQ(summary.completed, 11);
    EXPECT_EQ(summary.skipped, 1);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_FALSE(summary.peakCPU) << "no sensors, no peaks";
    EXPECT_FALSE(store.runningID());
    EXPECT_EQ(store.currentRunTargetSeconds(), 0);
    EXPECT_EQ(store.thermalMonitorInterval(), 5.0);
}

TEST(BenchmarkStore, TheFirstLogLineNamesWhatRunsAndHow) {
    const struct {
        std::vector<BenchmarkID> ids;
        bool quick;
        const char* line;
    } cases[] = {
        {{BenchmarkID::memoryStream},
         true,
         "Running Memory Stream (Standard Mode, quick: a tenth of each time budget)"},
        {{BenchmarkID::memoryStream, BenchmarkID::cpuInteger}, false, "Running 2 benchmarks (Standard Mode)"},
    };
    for (const auto& c : cases) {
        FakeWorkloads fakes;
        BenchmarkStore store(fakes.services());
        store.setQuickMode(c.quick);
        store.run(c.ids, false);
        ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
        EXPECT_EQ(messages(store).at(1), c.line);
    }
}

TEST(BenchmarkStore, SingleTestSummaryUsesTheRunScore) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::memoryStream, FakeBehaviour::instantOk, 500);
    BenchmarkStore store(fakes.services());
    store.setSelectedID(BenchmarkID::memoryStream);
    store.runSelected();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    const QStringList log = messages(store);
    EXPECT_EQ(log.at(1), "Running Memory Stream (Standard Mode)");
    EXPECT_EQ(log.at(3), "Summary: 1/1 complete, total 38.46 pts") << "the logged figure is the global score";
    ASSERT_TRUE(store.runSummary());
    EXPECT_EQ(store.runSummary()->title, "Selected Test Summary");
    EXPECT_DOUBLE_EQ(store.runSummary()->score, 500);
    EXPECT_EQ(store.selectedID(), BenchmarkID::memoryStream);
}

TEST(BenchmarkStore, StartWhileRunningIsIgnoredAndStopWhileIdleWritesNothing) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
    BenchmarkStore store(fakes.services());

    store.stop();
    EXPECT_EQ(store.logLines(), QStringList{"Quarbel ready"});

    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    store.run({BenchmarkID::cpuFloating}, false);
    store.runAll();
    processEventsFor(50);
    fakes.release();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuInteger), 1);
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 0);
    EXPECT_EQ(store.rows()[BenchmarkID::cpuFloating].state, TestRunState::idle);
}

TEST(BenchmarkStore, StopMidRunCancelsTheWorkloadAndLeavesNoSummary) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuFloating, FakeBehaviour::untilCancelled);
    BenchmarkStore store(fakes.services());
    store.runAll();
    ASSERT_TRUE(processEventsUntil([&] { return store.runningID() == BenchmarkID::cpuFloating; }));
    ASSERT_TRUE(processEventsUntil([&] { return store.liveProgress().unitsDone > 0; }, 2000))
        << "the display clock publishes the workload's progress";
    EXPECT_EQ(store.liveProgress().unit, "units");
    EXPECT_EQ(store.thermalMonitorInterval(), 2.0);

    store.stop();
    EXPECT_FALSE(store.runningID());
    EXPECT_EQ(store.rows()[BenchmarkID::cpuFloating], BenchmarkRowState{});
    EXPECT_EQ(messages(store).back(), "Run stopped");
    EXPECT_EQ(store.thermalMonitorInterval(), 5.0);

    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(fakes.cancelledSeen(), 1);
    EXPECT_EQ(messages(store).back(), "Ready");
    EXPECT_FALSE(store.runSummary());
    EXPECT_EQ(store.rows()[BenchmarkID::cpuInteger].state, TestRunState::done);
    EXPECT_EQ(store.rows()[BenchmarkID::cpuFloating].state, TestRunState::idle)
        << "the late outcome is discarded";
    EXPECT_EQ(store.rows()[BenchmarkID::cpuCrypto].state, TestRunState::idle);
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuCrypto), 0);
}

TEST(BenchmarkStore, AStoppedRunLeavesEarlierResultsAndTheirSummaryInView) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::instantOk, 700);
    BenchmarkStore store(fakes.services());
    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    const BenchmarkRowState earlier = store.rows()[BenchmarkID::cpuInteger];
    ASSERT_EQ(earlier.state, TestRunState::done);
    const double total = store.totalScore();

    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::untilCancelled);
    store.run({BenchmarkID::cpuInteger, BenchmarkID::cpuFloating}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    store.stop();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(store.rows()[BenchmarkID::cpuInteger], earlier) << "not put back to Not run yet";
    EXPECT_DOUBLE_EQ(store.totalScore(), total);
    ASSERT_TRUE(store.runSummary()) << "nothing of the stopped run ended: the summary before it stays";
    EXPECT_EQ(store.runSummary()->completed, 1);
}

TEST(BenchmarkStore, ARunAskedForBesideAnotherCanWaitForItOrBeCancelled) {
    FakeWorkloads fakes;
    StoreServices services = fakes.services();
    test::TempDir locks;
    services.runLockDirectory = locks.path().string();
    BenchmarkStore store(services);
    auto other = std::make_unique<test::OtherQuarbelRun>(services.runLockDirectory, "SSD Random");
    ASSERT_TRUE(other->marked());
    QString asked;
    OtherRunsChoice choice = OtherRunsChoice::cancel;
    store.setOtherRunsQuestion([&](const QString& otherRuns) {
        asked = otherRuns;
        return choice;
    });

    store.run({BenchmarkID::memoryStream}, false);
    EXPECT_FALSE(store.busy()) << "cancelled: nothing starts";
    EXPECT_TRUE(asked.contains(QStringLiteral("on SSD Random"))) << asked.toStdString();

    choice = OtherRunsChoice::wait;
    store.run({BenchmarkID::memoryStream}, false);
    ASSERT_TRUE(store.busy());
    processEventsFor(700);
    EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 0) << "it waits while the other run goes on";
    EXPECT_TRUE(
        store.concurrentRuns().startsWith(QStringLiteral("Waiting for the other Quarbel run to end")));
    other->end();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 1) << "and runs once it has ended";

    // Stop gives up waiting.
    other = std::make_unique<test::OtherQuarbelRun>(services.runLockDirectory, "SSD Random");
    store.run({BenchmarkID::memoryStream}, false);
    processEventsFor(100);
    store.stop();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 1);
    EXPECT_TRUE(store.concurrentRuns().isEmpty());
}

TEST(BenchmarkStore, AccuracyModeRunsThreePassesAndKeepsTheMedian) {
    FakeWorkloads fakes;
    fakes.queueScores(BenchmarkID::cineTile, {1010, 980, 1000});
    fakes.set(BenchmarkID::cineTile, FakeBehaviour::instantOk);
    BenchmarkStore store(fakes.services());
    double target = 0;
    QObject::connect(&store, &BenchmarkStore::currentRunTargetSecondsChanged,
                     [&] { target = std::max(target, store.currentRunTargetSeconds()); });
    store.setAccuracyMode(true);
    store.run({BenchmarkID::cineTile}, false);
    store.setAccuracyMode(false); // read once when the run starts
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));

    EXPECT_EQ(fakes.calls(BenchmarkID::cineTile), 3);
    EXPECT_EQ(target, 60) << "three times the catalogue target";
    const QStringList log = messages(store);
    EXPECT_EQ(
        log.mid(1, 5),
        (QStringList{"Running CPU Tile Render (Accuracy Mode)", "CPU Tile Render: Accuracy Mode 3x median",
                     "CPU Tile Render: pass 1/3", "CPU Tile Render: pass 2/3", "CPU Tile Render: pass 3/3"}));
    const auto& outcome = store.rows()[BenchmarkID::cineTile].outcome;
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->score, 1000);
    EXPECT_DOUBLE_EQ(outcome->duration, 1.5);
    EXPECT_EQ(outcome->detail,
              "Fake work. Checksum 1. Accuracy Mode: median of 3 passes; pass scores 1010.0, "
              "980.00, 1000.0 pts; spread 3.0%; confidence Good.");
    EXPECT_EQ(store.runSummary()->title, "Selected Test Accuracy Summary");
}

TEST(BenchmarkStore, QuickModeShortensTheTargetFromTheNextStartOn) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cineTile, FakeBehaviour::gated);
    BenchmarkStore store(fakes.services());
    QSignalSpy changes(&store, &BenchmarkStore::quickModeChanged);
    store.setQuickMode(true);
    store.setQuickMode(true);
    EXPECT_EQ(changes.count(), 1);
    store.run({BenchmarkID::cineTile}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    store.setQuickMode(false); // the switch may move; the run keeps its budgets
    EXPECT_TRUE(store.runIsQuick());
    EXPECT_DOUBLE_EQ(store.currentRunTargetSeconds(), 2.0) << "a tenth of the catalogue's 20 s";
    fakes.release();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_FALSE(store.runIsQuick());
    EXPECT_EQ(changes.count(), 2);
}

TEST(BenchmarkStore, ProgressAdvancesWithTheClockAndCapsAtOne) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::ssdRealSpeed, FakeBehaviour::gated);
    auto fakeNow = std::make_shared<QDateTime>(QDateTime::currentDateTime());
    StoreServices services = fakes.services();
    services.now = [fakeNow] { return *fakeNow; };
    BenchmarkStore store(services);
    store.run({BenchmarkID::ssdRealSpeed}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    EXPECT_EQ(store.currentRunTargetSeconds(), 10);

    *fakeNow = fakeNow->addMSecs(5000);
    processEventsFor(300);
    EXPECT_NEAR(store.currentRunElapsed(), 5.0, 1e-9);
    EXPECT_NEAR(store.currentRunProgress(), 0.5, 1e-9);
    *fakeNow = fakeNow->addMSecs(60000);
    processEventsFor(300);
    EXPECT_EQ(store.currentRunProgress(), 1.0);

    fakes.release();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(store.currentRunProgress(), 0);
}

TEST(BenchmarkStore, PeaksRiseOnlyWhileABenchmarkRuns) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
    auto cpu = std::make_shared<std::atomic<double>>(40.0);
    auto reads = std::make_shared<std::atomic<int>>(0);
    BenchmarkStore store(fakes.services([cpu, reads] {
        ++*reads;
        return QLTemperatureReading{cpu->load(), 0, 1, 0};
    }));
    // Keeps asking until a reading of the current value has been published.
    auto publish = [&](double reading) {
        cpu->store(reading);
        return processEventsUntil([&] {
            store.refreshThermalSnapshot();
            return store.temperatureSnapshot().cpuCelsius == reading;
        });
    };
    ASSERT_TRUE(publish(55));
    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    ASSERT_TRUE(publish(70));
    ASSERT_TRUE(publish(65));
    fakes.release();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    ASSERT_TRUE(store.runSummary());
    EXPECT_EQ(store.runSummary()->peakCPU, 70.0) << "the peak never falls during a run";
    EXPECT_GT(reads->load(), 3);
    EXPECT_FALSE(store.runSummary()->peakGPU);
}

TEST(BenchmarkStore, ThermalReadsNeverOverlapAndTheTimerKeepsItsPeriod) {
    FakeWorkloads fakes;
    auto reads = std::make_shared<std::atomic<int>>(0);
    auto gate = std::make_shared<std::atomic<bool>>(false);
    BenchmarkStore store(fakes.services([reads, gate] {
        ++*reads;
        while (!gate->load())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return QLTemperatureReading{50, 60, 1, 1};
    }));
    store.startThermalMonitor(2.0);
    store.startThermalMonitor(2.0);
    store.refreshThermalSnapshot();
    processEventsFor(50);
    EXPECT_EQ(reads->load(), 1) << "a read in flight makes later requests skip";
    EXPECT_EQ(store.thermalMonitorInterval(), 2.0);
    gate->store(true);
    ASSERT_TRUE(processEventsUntil([&] { return store.temperatureSnapshot().gpuCelsius == 60.0; }));
    store.refreshThermalSnapshot();
    ASSERT_TRUE(processEventsUntil([&] { return reads->load() == 2; }));
}

namespace {

class FakePresenter final : public WindowPresenter {
  public:
    bool device = true;
    int animationWindows = 0;
    int closes = 0;
    VisualBenchmarkRequest lastRequest;
    std::function<void(const VisualBenchmarkLiveStats&)> live;
    std::function<void(const BenchmarkOutcome&)> completion;

    bool hasVisualDevice() const override { return device; }
    void showAnimationWindow(BenchmarkID, int) override { ++animationWindows; }
    void showVisualBenchmark(const VisualBenchmarkRequest& request,
                             std::function<void(const VisualBenchmarkLiveStats&)> liveUpdate,
                             std::function<void(const BenchmarkOutcome&)> done) override {
        lastRequest = request;
        live = std::move(liveUpdate);
        completion = std::move(done);
    }
    void closeWindow() override { ++closes; }
    std::string visualProblem() const override { return problem; }
    std::string problem;
};

} // namespace

TEST(BenchmarkStore, WindowedBenchmarksOpenAndCloseTheirAnimationWindow) {
    FakeWorkloads fakes;
    FakePresenter presenter;
    BenchmarkStore store(fakes.services(), &presenter);
    store.run({BenchmarkID::cpuInteger, BenchmarkID::cineTile, BenchmarkID::rawCPUDecode}, false);
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(presenter.animationWindows, 2);
    EXPECT_EQ(presenter.closes, 2);
}

TEST(BenchmarkStore, VisualBenchmarkIgnoresStaleCallbacksAndResumesOnce) {
    FakeWorkloads fakes;
    FakePresenter presenter;
    BenchmarkStore store(fakes.services(), &presenter);
    store.run({BenchmarkID::metalVisual}, false);
    ASSERT_TRUE(processEventsUntil([&] { return store.visualBenchmarkRequest().has_value(); }));
    EXPECT_EQ(presenter.lastRequest.seconds, 20.0);
    EXPECT_EQ(presenter.lastRequest.workload, 2);
    EXPECT_EQ(presenter.lastRequest.id.size(), 36u);
    EXPECT_EQ(fakes.calls(BenchmarkID::metalVisual), 0)
        << "with a window the scene runs there, not offscreen";

    presenter.live({60, 59.5, 50, 70});
    ASSERT_TRUE(store.visualLiveStats());
    EXPECT_EQ(store.visualLiveStats()->frames, 60);

    const auto staleLive = presenter.live;
    const auto staleCompletion = presenter.completion;
    presenter.completion(FakeWorkloads::okOutcome(321));
    presenter.completion(FakeWorkloads::okOutcome(999)); // a second completion changes nothing
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(store.rows()[BenchmarkID::metalVisual].outcome->score, 321);
    EXPECT_FALSE(store.visualBenchmarkRequest());

    store.run({BenchmarkID::metalVisual}, false);
    ASSERT_TRUE(processEventsUntil([&] { return store.visualBenchmarkRequest().has_value(); }));
    staleLive({1, 1, 1, 1});
    EXPECT_FALSE(store.visualLiveStats()) << "statistics of an earlier window are ignored";
    staleCompletion(FakeWorkloads::okOutcome(5));
    processEventsFor(20);
    EXPECT_TRUE(store.busy());

    store.stop();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(store.rows()[BenchmarkID::metalVisual].outcome->score, 321) << "the earlier result stays";
    EXPECT_TRUE(store.runStopped());
    EXPECT_TRUE(store.endedInRun().empty());
    const QStringList log = messages(store);
    EXPECT_EQ(log.mid(log.size() - 2), (QStringList{"Run stopped", "Ready"}));
}

TEST(BenchmarkStore, AVisualBenchmarkThatNeverReportsFailsAfterTheStallLimitAndTheRunGoesOn) {
    const struct {
        std::string problem;
        std::string detail;
    } cases[] = {
        {"", "The visual benchmark window showed no frame for 1 seconds."},
        {"the GPU stopped answering", "The visual benchmark could not render: the GPU stopped answering."}};
    for (const auto& c : cases) {
        FakeWorkloads fakes;
        FakePresenter presenter;
        presenter.problem = c.problem;
        BenchmarkStore store(fakes.services(), &presenter);
        store.setVisualStallLimit(1.0);
        store.run({BenchmarkID::metalVisual, BenchmarkID::cpuInteger}, false);
        ASSERT_TRUE(processEventsUntil([&] { return idle(store); }, 10'000));
        const auto& row = store.rows()[BenchmarkID::metalVisual];
        EXPECT_EQ(row.state, TestRunState::failed);
        EXPECT_EQ(row.outcome->detail, c.detail);
        EXPECT_EQ(store.rows()[BenchmarkID::cpuInteger].state, TestRunState::done);
        EXPECT_TRUE(store.runSummary());
        presenter.completion(FakeWorkloads::okOutcome(5)); // too late: ignored
        processEventsFor(20);
        EXPECT_EQ(store.rows()[BenchmarkID::metalVisual].state, TestRunState::failed);
    }
}

TEST(BenchmarkStore, VisualBenchmarkWithoutADeviceIsSkipped) {
    FakeWorkloads fakes;
    FakePresenter presenter;
    presenter.device = false;
    BenchmarkStore store(fakes.services(), &presenter);
    store.run({BenchmarkID::metalVisual}, false);
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    const auto& row = store.rows()[BenchmarkID::metalVisual];
    EXPECT_EQ(row.state, TestRunState::skipped);
    EXPECT_EQ(row.outcome->detail, "Metal is not available on this machine.");
}

TEST(BenchmarkStore, StopDuringAccuracyPassesDiscardsTheRun) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::memoryStream, FakeBehaviour::untilCancelled);
    BenchmarkStore store(fakes.services());
    store.setAccuracyMode(true);
    store.run({BenchmarkID::memoryStream, BenchmarkID::cineTile}, true);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    store.stop();
    ASSERT_TRUE(processEventsUntil([&] { return idle(store); }));
    EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 1) << "no further pass starts after a stop";
    EXPECT_EQ(fakes.calls(BenchmarkID::cineTile), 0);
    EXPECT_EQ(store.rows()[BenchmarkID::memoryStream].state, TestRunState::idle);
    EXPECT_FALSE(store.runSummary());
}

TEST(BenchmarkStore, DestroyingTheStoreMidRunCancelsAndJoinsTheWorker) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::untilCancelled);
    {
        BenchmarkStore store(fakes.services());
        store.run({BenchmarkID::cpuInteger}, false);
        ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    }
    EXPECT_EQ(fakes.running(), 0);
    EXPECT_EQ(fakes.cancelledSeen(), 1);
    processEventsFor(20); // a result posted to the gone store must be dropped
}

TEST(BenchmarkStore, EachBenchmarkButTheFirstWaitsForTheIdleTemperatureAndStopEndsTheWait) {
    std::atomic<double> celsius = 45.0;
    const auto reader = [&] { return QLTemperatureReading{celsius.load(), 0, 1, 0}; };
    for (const bool stopWhileWaiting : {false, true}) {
        SCOPED_TRACE(stopWhileWaiting ? "stopped while waiting" : "cooled down");
        FakeWorkloads fakes;
        fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
        celsius = 45.0;
        BenchmarkStore store(fakes.services(reader));
        store.run({BenchmarkID::cpuInteger, BenchmarkID::cpuFloating}, false);
        ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
        celsius = 62.0; // what the first benchmark leaves behind
        fakes.release();
        ASSERT_TRUE(processEventsUntil([&] { return !store.cooldownText().isEmpty(); }));
        EXPECT_EQ(store.cooldownText(), QString::fromUtf8("Cooling down: 62 \u00b0C \u2192 45 \u00b0C"));
        EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 0);
        if (stopWhileWaiting) {
            store.stop();
        } else {
            celsius = 47.0;
        }
        ASSERT_TRUE(processEventsUntil([&] { return idle(store); }, 3000));
        EXPECT_TRUE(store.cooldownText().isEmpty());
        if (stopWhileWaiting) {
            EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 0);
            EXPECT_EQ(messages(store).back(), "Ready");
        } else {
            EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 1);
            EXPECT_TRUE(messages(store).filter(QString::fromUtf8("Cooled down to 47 \u00b0C in ")).size() ==
                        1);
            EXPECT_EQ(store.endState(BenchmarkID::cpuFloating).startCelsius, 47.0);
            EXPECT_EQ(store.endState(BenchmarkID::cpuInteger).startCelsius, 45.0);
        }
    }
}
