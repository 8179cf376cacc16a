// SPDX-License-Identifier: Apache-2.0
#include "run/benchmark_store.h"

#include "fake_workloads.h"
#include "model/comparison.h"
#include "model/noise_floor.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>

using namespace quarbel;
using namespace quarbel::test;

namespace {

// A workload that reports 200 units, every other one twice as slow as the one before.
struct SlicedWorkload {
    BenchmarkOutcome operator()(const WorkloadContext& context) {
        double t = 0;
        for (int unit = 1; unit <= 200; ++unit) {
            t += unit % 2 == 0 ? 0.02 : 0.01;
            context.reportProgress(unit, t, "units");
        }
        return FakeWorkloads::okOutcome(1000);
    }
};

StoreServices servicesFor(SlicedWorkload& workload, std::vector<CpuTickSample> ticks = {}) {
    static FakeWorkloads fakes;
    StoreServices services = fakes.services();
    services.runWorkload = [&workload](BenchmarkID, const WorkloadContext& context) {
        return workload(context);
    };
    auto queue = std::make_shared<std::deque<CpuTickSample>>(ticks.begin(), ticks.end());
    services.readCpuTicks = [queue]() -> std::optional<CpuTickSample> {
        if (queue->empty()) return std::nullopt;
        const CpuTickSample sample = queue->front();
        queue->pop_front();
        return sample;
    };
    return services;
}

void runToTheEnd(BenchmarkStore& store, BenchmarkID id) {
    store.run({id}, false);
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
}

} // namespace

TEST(ResultStatistics, APassKeepsItsSlicesItsIntervalAndTheInterferenceItMet) {
    SlicedWorkload workload;
    // Between the benchmark's start and end the machine counted 1000 ticks: 300 busy, of which
    // ours were 100, and 80 stolen.
    BenchmarkStore store(servicesFor(workload, {{1000, 100, 10000, 50}, {1300, 180, 11000, 150}}));
    runToTheEnd(store, BenchmarkID::cpuInteger);

    const BenchmarkEndState& end = store.endState(BenchmarkID::cpuInteger);
    EXPECT_EQ(end.slices.size(), static_cast<std::size_t>(kMaximumSlices));
    ASSERT_TRUE(end.uncertainty);
    // Slices of ten units each hold five slow and five fast ones: the rate is steady at that
    // grain, so what remains is the run-to-run noise a single pass cannot see.
    EXPECT_NEAR(end.uncertainty->relativeStandardError,
                runToRunNoisePercent(BenchmarkID::cpuInteger, RunLength::full) / 100, 1e-9);
    EXPECT_EQ(end.noiseFloor, (NoiseFloor{runToRunNoisePercent(BenchmarkID::cpuInteger, RunLength::full), 0}))
        << "built in";
    ASSERT_TRUE(end.interference);
    EXPECT_DOUBLE_EQ(end.interference->stealPercent, 8.0);
    EXPECT_DOUBLE_EQ(end.interference->otherCpuPercent, 20.0);
    EXPECT_TRUE(end.noisy) << "8 % steal";
    EXPECT_EQ(end.passes, 1);

    // A floor learned from this machine's runs replaces the built-in one, for that benchmark
    // and run length only.
    NoiseFloors floors;
    floors.learn(BenchmarkID::cpuInteger, RunLength::full, {0.5, 7});
    floors.learn(BenchmarkID::cpuInteger, RunLength::quick, {9.0, 6});
    store.setNoiseFloors(floors);
    runToTheEnd(store, BenchmarkID::cpuInteger);
    EXPECT_EQ(store.endState(BenchmarkID::cpuInteger).noiseFloor, (NoiseFloor{0.5, 7}));
    EXPECT_NEAR(store.endState(BenchmarkID::cpuInteger).uncertainty->relativeStandardError, 0.005, 1e-9);
}

TEST(NoiseFloor, IsLearnedFromFiveQuietRunsAsAnUpperBoundOfTheirSpread) {
    EXPECT_EQ(learnedFloorPercent(std::vector<double>{100, 101, 99, 100}), std::nullopt)
        << "four are too few";
    EXPECT_EQ(learnedFloorPercent(std::vector<double>{100, 101, 0, 100, 99}), std::nullopt) << "a zero score";
    EXPECT_DOUBLE_EQ(*learnedFloorPercent(std::vector<double>(6, 250.0)), 0.0);
    // Log scores alternating 0 and s: successive differences of s give a variance of s² / 2;
    // the exact upper 80 % bound for 4 degrees of freedom is that times 4 / 1.6488.
    const double s = 0.01;
    const std::vector<double> alternating = {1000, 1000 * std::exp(s), 1000, 1000 * std::exp(s), 1000};
    const double exact = s / std::sqrt(2.0) * std::sqrt(4.0 / 1.6488) * 100;
    EXPECT_NEAR(*learnedFloorPercent(alternating), exact, exact * 0.01);
    // One lasting step of 15 % (a regression kept in the history) among steady runs moves one
    // difference of eight: the floor stays far below the step it must still show.
    const std::vector<double> stepped = {1000, 1000, 1000, 1000, 850, 850, 850, 850};
    EXPECT_LT(*learnedFloorPercent(stepped), 15.0 / 2);
}
