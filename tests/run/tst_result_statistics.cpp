#include "run/benchmark_store.h"

#include "fake_workloads.h"
#include "model/comparison.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <deque>
#include <mutex>

using namespace quarbel;
using namespace quarbel::test;

namespace {

// A workload that reports 200 units at a steady 100 per second (or with every other unit
// twice as slow), scoring the next of `scores`.
struct SlicedWorkload {
    std::mutex mutex;
    std::deque<double> scores;
    bool uneven = false;

    BenchmarkOutcome operator()(const WorkloadContext& context) {
        double t = 0;
        for (int unit = 1; unit <= 200; ++unit) {
            t += uneven && unit % 2 == 0 ? 0.02 : 0.01;
            context.reportProgress(unit, t, "units");
        }
        std::lock_guard lock(mutex);
        const double score = scores.empty() ? 1000 : scores.front();
        if (scores.size() > 1) scores.pop_front();
        return FakeWorkloads::okOutcome(score);
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
    workload.uneven = true;
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
    ASSERT_TRUE(end.interference);
    EXPECT_DOUBLE_EQ(end.interference->stealPercent, 8.0);
    EXPECT_DOUBLE_EQ(end.interference->otherCpuPercent, 20.0);
    EXPECT_TRUE(end.noisy) << "8 % steal";
    EXPECT_EQ(end.passes, 1);
}

TEST(ResultStatistics, UntilStableStopsOnceTheIntervalIsNarrowOrThePassesRunOut) {
    struct Case {
        const char* name;
        std::deque<double> scores;
        int passes;
        const char* detail;
    };
    const Case cases[] = {
        // One steady pass is only as sure as its benchmark's run-to-run noise; two that agree are
        // within any target.
        {"agreeing passes", {1000, 1000}, 2, "within the target of 1.0 %."},
        {"passes that keep disagreeing", {1000, 1200, 900, 1100, 950}, 4, "target of 1.0 % not reached."},
    };
    for (const auto& c : cases) {
        SlicedWorkload workload;
        workload.scores = c.scores;
        BenchmarkStore store(servicesFor(workload));
        store.setUntilStable(StabilityTarget{1.0, 4});
        runToTheEnd(store, BenchmarkID::cpuCrypto);
        const BenchmarkEndState& end = store.endState(BenchmarkID::cpuCrypto);
        EXPECT_EQ(end.passes, c.passes) << c.name;
        EXPECT_EQ(end.passScores.size(), static_cast<std::size_t>(c.passes)) << c.name;
        const auto& outcome = store.rows()[BenchmarkID::cpuCrypto].outcome;
        ASSERT_TRUE(outcome) << c.name;
        EXPECT_NE(outcome->detail.find("Until stable: median of " + std::to_string(c.passes) + " passes"),
                  std::string::npos)
            << outcome->detail;
        EXPECT_TRUE(outcome->detail.ends_with(c.detail)) << outcome->detail;
    }
}
