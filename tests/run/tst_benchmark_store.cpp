// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"

#include "fake_presenter.h"
#include "fake_workloads.h"
#include "support/event_loop.h"
#include "support/other_quarbel_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::test;

namespace {

bool runToTheEnd(BenchmarkStore& store, int timeoutMs = 5000) {
    return processEventsUntil([&] { return !store.busy(); }, timeoutMs);
}

} // namespace

TEST(BenchmarkStore, FullSuiteRecordsEveryOutcomeLogsAndSummarises) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::ssdRandom, FakeBehaviour::failing);
    fakes.set(BenchmarkID::metalVisual, FakeBehaviour::skipping);
    fakes.set(BenchmarkID::cineTile, FakeBehaviour::instantOk, 2345.67);
    BenchmarkStore store(fakes.services());
    QStringList lines; // every one, where logLines() keeps the latest few
    QObject::connect(&store, &BenchmarkStore::logLineAppended, [&](const QString& l) { lines << l.mid(11); });
    store.runAll();
    EXPECT_TRUE(store.busy()) << "run() returns at once with the task pending";
    ASSERT_TRUE(runToTheEnd(store));
    EXPECT_EQ(store.endedInRun(), std::vector<BenchmarkID>(kAllBenchmarks.begin(), kAllBenchmarks.end()));
    ASSERT_EQ(lines.size(), 17);
    EXPECT_EQ(lines.at(1), "No cooldown between benchmarks: no CPU temperature sensor");
    EXPECT_TRUE(lines.contains("CPU Tile Render: 2345.7 pts, 12.50 GB/s"));
    EXPECT_TRUE(lines.contains("SSD Random: failed"));
    EXPECT_TRUE(lines.contains("GPU Visual Tour: unavailable"));
    EXPECT_EQ(lines.at(15), QString("Summary: 11/13 complete, total %1 pts")
                                .arg(QString::fromStdString(scoreText(store.totalScore()))));
    EXPECT_EQ(lines.back(), "Ready");
    EXPECT_EQ(store.runSummary().value().failed, 1);
    EXPECT_FALSE(store.runSummary().value().peakCPU) << "no sensors, no peaks";
}

TEST(BenchmarkStore, ARunKeepsTheModeItStartedWith) {
    const struct {
        bool accuracy, quick;
        int calls;
        double target; // the catalogue's 20 s, times the passes, times the budget scale
    } cases[] = {{true, false, 3, 60}, {false, true, 1, 2}};
    for (const auto& c : cases) {
        FakeWorkloads fakes;
        fakes.queueScores(BenchmarkID::cineTile, {1010, 980, 1000});
        BenchmarkStore store(fakes.services());
        double target = 0;
        QObject::connect(&store, &BenchmarkStore::currentRunTargetSecondsChanged,
                         [&] { target = std::max(target, store.currentRunTargetSeconds()); });
        store.setAccuracyMode(c.accuracy);
        store.setQuickMode(c.quick);
        store.run({BenchmarkID::cineTile}, false);
        store.setAccuracyMode(!c.accuracy);
        store.setQuickMode(!c.quick);
        EXPECT_EQ(store.runIsQuick(), c.quick);
        ASSERT_TRUE(runToTheEnd(store));
        EXPECT_EQ(fakes.calls(BenchmarkID::cineTile), c.calls);
        EXPECT_EQ(target, c.target);
        EXPECT_EQ(store.rows()[BenchmarkID::cineTile].outcome->score, c.accuracy ? 1000 : 1010)
            << "the median";
    }
}

TEST(BenchmarkStore, StopCancelsThePassAndLeavesEarlierResultsInView) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::instantOk, 700);
    BenchmarkStore store(fakes.services());
    store.stop();
    EXPECT_EQ(store.logLines(), QStringList{"Quarbel ready"}) << "a stop while idle writes nothing";
    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(runToTheEnd(store));
    const BenchmarkRowState earlier = store.rows()[BenchmarkID::cpuInteger];

    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::untilCancelled);
    store.setAccuracyMode(true);
    store.run({BenchmarkID::cpuInteger, BenchmarkID::cpuFloating}, false);
    ASSERT_TRUE(processEventsUntil([&] { return store.liveProgress().unitsDone > 0; }))
        << "the display clock publishes the workload's progress";
    store.run({BenchmarkID::cpuFloating}, false); // ignored while a run is active
    EXPECT_EQ(store.thermalMonitorInterval(), 2.0);
    store.stop();
    EXPECT_FALSE(store.runningID());
    EXPECT_EQ(store.thermalMonitorInterval(), 5.0);
    ASSERT_TRUE(runToTheEnd(store));
    EXPECT_EQ(fakes.cancelledSeen(), 1);
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuInteger), 2) << "no further pass starts after a stop";
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 0);
    EXPECT_EQ(store.rows()[BenchmarkID::cpuInteger], earlier) << "not put back to Not run yet";
    ASSERT_TRUE(store.runSummary()) << "nothing of the stopped run ended: the summary before it stays";
    EXPECT_TRUE(store.runStopped());
    const QStringList log = store.logLines();
    EXPECT_TRUE(log.at(log.size() - 2).endsWith("] Run stopped") && log.last().endsWith("] Ready"));
}

TEST(BenchmarkStore, ARunAskedForBesideAnotherCanWaitForItOrBeCancelled) {
    FakeWorkloads fakes;
    TempDir locks;
    StoreServices services = fakes.services();
    services.runLockDirectory = locks.path().string();
    BenchmarkStore store(services);
    auto other = std::make_unique<OtherQuarbelRun>(services.runLockDirectory, "SSD Random");
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
    for (const bool stopWhileWaiting : {true, false}) {
        store.run({BenchmarkID::memoryStream}, false);
        processEventsFor(300);
        EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 0) << "it waits while the other run goes on";
        EXPECT_TRUE(store.concurrentRuns().startsWith("Waiting for the other Quarbel run to end"));
        stopWhileWaiting ? store.stop() : other.reset();
        ASSERT_TRUE(runToTheEnd(store));
    }
    EXPECT_EQ(fakes.calls(BenchmarkID::memoryStream), 1) << "and runs once it has ended";
    EXPECT_TRUE(store.concurrentRuns().isEmpty());
}

TEST(BenchmarkStore, WindowedBenchmarksRunBesideTheirWindowAndTheVisualOneInIt) {
    FakeWorkloads fakes;
    FakePresenter presenter;
    BenchmarkStore store(fakes.services(), &presenter);
    store.run(
        {BenchmarkID::cpuInteger, BenchmarkID::cineTile, BenchmarkID::rawCPUDecode, BenchmarkID::metalVisual},
        false);
    ASSERT_TRUE(processEventsUntil([&] { return store.visualBenchmarkRequest().has_value(); }));
    EXPECT_EQ(presenter.animationWindows, 2);
    EXPECT_EQ(presenter.closes, 2);
    presenter.completion(FakeWorkloads::okOutcome(321));
    ASSERT_TRUE(runToTheEnd(store));
    EXPECT_EQ(fakes.calls(BenchmarkID::metalVisual), 0)
        << "with a window the scene runs there, not offscreen";
    EXPECT_EQ(store.rows()[BenchmarkID::metalVisual].outcome->score, 321);
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
    for (const bool stopWhileWaiting : {false, true}) {
        std::atomic<double> celsius = 45.0;
        FakeWorkloads fakes;
        fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
        BenchmarkStore store(fakes.services([&] { return QLTemperatureReading{celsius.load(), 0, 1, 0}; }));
        store.run({BenchmarkID::cpuInteger, BenchmarkID::cpuFloating}, false);
        ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
        celsius = 62.0; // what the first benchmark leaves behind
        fakes.release();
        ASSERT_TRUE(processEventsUntil([&] { return !store.cooldownText().isEmpty(); }));
        EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), 0);
        celsius = stopWhileWaiting ? 62.0 : 47.0;
        if (stopWhileWaiting) store.stop();
        ASSERT_TRUE(runToTheEnd(store, 3000));
        EXPECT_TRUE(store.cooldownText().isEmpty());
        EXPECT_EQ(fakes.calls(BenchmarkID::cpuFloating), stopWhileWaiting ? 0 : 1);
        EXPECT_EQ(store.logLines().filter(QString::fromUtf8("Cooled down to 47 \u00b0C in ")).size(),
                  stopWhileWaiting ? 0 : 1);
        EXPECT_EQ(store.endState(BenchmarkID::cpuFloating).startCelsius,
                  stopWhileWaiting ? std::nullopt : std::optional(47.0));
    }
}
