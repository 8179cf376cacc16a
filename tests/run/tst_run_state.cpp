// SPDX-License-Identifier: Apache-2.0
#include "run/run_state.h"

#include "fake_workloads.h"
#include "model/comparison.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quarbel;
using test::FakeWorkloads;

TEST(RunState, PlansItsPassesAndSaysWhatRunsAndHow) {
    const std::vector<BenchmarkID> two{BenchmarkID::memoryStream, BenchmarkID::cpuInteger};
    const std::vector<BenchmarkID> suite(kAllBenchmarks.begin(), kAllBenchmarks.end());
    const StabilityTarget upTo7{1.0, 7};
    // The start line, then the summary's title.
    const struct {
        std::vector<BenchmarkID> ids;
        bool accuracy;
        double scale;
        std::optional<StabilityTarget> untilStable;
        int passes;
        const char* lines;
    } cases[] = {
        // clang-format off
        {{BenchmarkID::memoryStream}, false, 0.1, {}, 1,
         "Running Memory Stream (Standard Mode, quick: a tenth of each time budget)|Selected Test Summary"},
        {two, false, 1, upTo7, 7, "Running 2 benchmarks (Standard Mode)|Selected Test Summary"},
        {suite, true, 1, upTo7, 3, "Running full suite (Accuracy Mode)|Full Suite Accuracy Summary"}};
    // clang-format on
    for (const auto& c : cases) {
        const RunState run(c.ids, false, c.accuracy, c.scale, c.untilStable);
        EXPECT_EQ(run.passes, c.passes) << c.lines;
        EXPECT_EQ(run.untilStable.has_value(), c.untilStable && !c.accuracy) << "Accuracy Mode wins";
        EXPECT_EQ(run.startLine() + "|" + run.summaryTitle(), c.lines);
    }
}

TEST(RunState, UntilStableStopsOnceTheIntervalIsNarrowOrThePassesRunOut) {
    const struct {
        std::vector<double> scores;
        int passes;
        const char* detail;
    } cases[] = {{{1000, 1000}, 2, "within the target of 1.0 %."},
                 {{1000, 1200, 900, 1100, 950}, 4, "target of 1.0 % not reached."}};
    for (const auto& c : cases) {
        RunState run({BenchmarkID::cpuCrypto}, false, false, 1.0, StabilityTarget{1.0, 4});
        run.beginBenchmark(std::nullopt, std::nullopt);
        std::optional<BenchmarkOutcome> outcome;
        for (std::size_t pass = 0; !(outcome = run.passesOutcome()); ++pass) {
            ASSERT_LT(pass, c.scores.size());
            EXPECT_EQ(run.passText(), "pass " + std::to_string(pass + 1) + " of at most 4");
            run.passOutcomes.push_back(FakeWorkloads::okOutcome(c.scores[pass]));
            run.passEnded({}, std::nullopt);
            run.combine(NoiseFloors{});
        }
        EXPECT_EQ(run.endState(outcome->status, {}, std::nullopt).passScores.size(),
                  static_cast<std::size_t>(c.passes))
            << c.detail;
        EXPECT_NE(outcome->detail.find("Until stable: median of " + std::to_string(c.passes) + " passes"),
                  std::string::npos)
            << outcome->detail;
        EXPECT_TRUE(outcome->detail.ends_with(c.detail)) << outcome->detail;
    }
}

// Accuracy Mode keeps the median pass, its slices and the lowest stability; whatever the
// passes, the ticks between the benchmark's start and end give the interference it met.
TEST(RunState, TheEndStateKeepsTheMedianPassAndAStoppedAccuracyRunKeepsNoResult) {
    RunState run({BenchmarkID::cineTile}, false, true, 1.0, std::nullopt);
    // 1000 ticks between start and end: 300 busy, 100 of them ours, and 80 stolen.
    run.beginBenchmark(CpuTickSample{1000, 100, 10000, 50}, 45.0);
    for (const double score : {1010.0, 980.0, 1000.0}) {
        EXPECT_FALSE(run.passesOutcome());
        run.passOutcomes.push_back(FakeWorkloads::okOutcome(score));
        run.passEnded({PhaseSlice{0, {1, score}}}, score / 10);
    }
    EXPECT_EQ(run.passesOutcome().value().score, 1000);
    const BenchmarkEndState end = run.endState(OutcomeStatus::ok, {}, CpuTickSample{1300, 180, 11000, 150});
    EXPECT_EQ(end.slices, (std::vector{PhaseSlice{0, {1, 1000}}}))
        << "the slices of the pass whose score is kept";
    EXPECT_EQ(end.stabilityPercent, 98.0) << "the lowest pass's";
    EXPECT_EQ(end.startCelsius, 45.0);
    EXPECT_EQ(end.passes, 3);
    EXPECT_TRUE(end.spreadPercent);
    EXPECT_DOUBLE_EQ(end.interference.value().stealPercent, 8.0);
    EXPECT_DOUBLE_EQ(end.interference.value().otherCpuPercent, 20.0);
    EXPECT_TRUE(end.noisy) << "8 % steal";

    run.beginBenchmark(std::nullopt, std::nullopt);
    run.passOutcomes.push_back(FakeWorkloads::okOutcome(1000));
    run.cancelled = true;
    EXPECT_EQ(run.passesOutcome()->detail, accuracyStoppedOutcome().detail);
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
