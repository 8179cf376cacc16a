// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"

#include "fake_workloads.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quarbel;
using namespace quarbel::test;

TEST(RunCondition, TheMachineAsTheRunStartsAndThrottlingWhileItRunsBecomeBadges) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::untilCancelled);
    StoreServices services = fakes.services();
    services.readCondition = [] {
        MachineCondition condition;
        condition.governors = {"powersave"};
        condition.onBattery = true;
        return condition;
    };
    services.readThrottle = [] { return ThrottleSample{std::nullopt, {"k10temp temp1"}}; };
    BenchmarkStore store(services);

    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(processEventsUntil(
        [&] { return !store.runCondition().throttleSigns.empty() && store.runCondition().atStart; }));
    EXPECT_EQ(store.runCondition().badges,
              (std::vector<std::string>{"on battery", "powersave governor", "throttling seen"}));
    EXPECT_TRUE(store.logLines().last().endsWith("Throttling: k10temp temp1 at its critical temperature"));
    store.stop();
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
}

TEST(RunCondition, AWorkloadThatSlowsDownHasLowStabilityAndMarksThrottling) {
    FakeWorkloads fakes;
    StoreServices services = fakes.services();
    // 1.6 s of work reported every 20 ms: full pace, then half pace from 1.1 s on.
    services.runWorkload = [](BenchmarkID, const WorkloadContext& context) {
        const auto start = std::chrono::steady_clock::now();
        std::int64_t units = 0;
        for (double elapsed = 0; elapsed < 1.6;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            units = elapsed < 1.1 ? static_cast<std::int64_t>(elapsed * 1000)
                                  : 1100 + static_cast<std::int64_t>((elapsed - 1.1) * 500);
            context.reportProgress(units, elapsed, "units");
        }
        return FakeWorkloads::okOutcome(100);
    };
    BenchmarkStore store(services);
    NoiseFloors floors; // learned on this machine, for this benchmark and run length
    floors.learn(BenchmarkID::memoryStream, RunLength::full, {0.5, 7});
    floors.learn(BenchmarkID::memoryStream, RunLength::quick, {9.0, 6});
    store.setNoiseFloors(floors);
    store.run({BenchmarkID::memoryStream}, false);
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }, 15000));
    // Which passes are judged at all (full budgets, one pace) is WorkloadPass's to decide.
    const BenchmarkEndState& end = store.endState(BenchmarkID::memoryStream);
    EXPECT_NEAR(end.stabilityPercent.value_or(0), 50.0, 8.0);
    EXPECT_FALSE(end.spreadPercent.has_value()) << "not from Accuracy Mode";
    EXPECT_EQ(end.noiseFloor, (NoiseFloor{0.5, 7})) << "the learned floor, not the built-in one";
    EXPECT_GE(end.uncertainty.value().relativeStandardError, 0.005) << "the floor is added to the pass's own";
    const auto& badges = store.runCondition().badges;
    EXPECT_NE(std::find(badges.begin(), badges.end(), "throttling seen"), badges.end());
}
