// SPDX-License-Identifier: Apache-2.0
#include "run/run_state.h"

#include "fake_workloads.h"

#include <gtest/gtest.h>

using namespace quarbel;
using test::FakeWorkloads;

namespace {
const std::vector<BenchmarkID> kSuite(kAllBenchmarks.begin(), kAllBenchmarks.end());
}

TEST(RunState, PlansItsPassesAndSaysWhatRunsAndHow) {
    const struct {
        std::vector<BenchmarkID> ids;
        bool accuracy;
        double scale;
        std::optional<StabilityTarget> untilStable;
        int passes;
        const char *startLine, *summaryTitle;
    } cases[] = {
        {{BenchmarkID::memoryStream},
         false,
         0.1,
         {},
         1,
         "Running Memory Stream (Standard Mode, quick: a tenth of each time budget)",
         "Selected Test Summary"},
        {{BenchmarkID::memoryStream, BenchmarkID::cpuInteger},
         false,
         1,
         StabilityTarget{1.0, 7},
         7,
         "Running 2 benchmarks (Standard Mode)",
         "Selected Test Summary"},
        {kSuite, true, 1, StabilityTarget{1.0, 7}, 3, "Running full suite (Accuracy Mode)",
         "Full Suite Accuracy Summary"},
    };
    for (const auto& c : cases) {
        const RunState run(c.ids, false, c.accuracy, c.scale, c.untilStable);
        EXPECT_EQ(run.passes, c.passes) << c.startLine;
        EXPECT_EQ(run.untilStable.has_value(), c.untilStable && !c.accuracy) << "Accuracy Mode wins";
        EXPECT_EQ(run.startLine(), c.startLine);
        EXPECT_EQ(run.summaryTitle(), c.summaryTitle);
    }
}

TEST(RunState, UntilStableStopsOnceTheIntervalIsNarrowOrThePassesRunOut) {
    const struct {
        std::vector<double> scores;
        int passes;
        const char* detail;
    } cases[] = {
        {{1000, 1000}, 2, "within the target of 1.0 %."},
        {{1000, 1200, 900, 1100, 950}, 4, "target of 1.0 % not reached."},
    };
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
        EXPECT_EQ(static_cast<int>(run.passOutcomes.size()), c.passes) << c.detail;
        EXPECT_NE(outcome->detail.find("Until stable: median of " + std::to_string(c.passes) + " passes"),
                  std::string::npos)
            << outcome->detail;
        EXPECT_TRUE(outcome->detail.ends_with(c.detail)) << outcome->detail;
        const BenchmarkEndState end = run.endState(outcome->status, {}, std::nullopt);
        EXPECT_EQ(end.passes, c.passes);
        EXPECT_EQ(end.passScores.size(), static_cast<std::size_t>(c.passes));
    }
}

TEST(RunState, TheEndStateKeepsTheMedianPassAndAStoppedAccuracyRunKeepsNoResult) {
    RunState run({BenchmarkID::cineTile}, false, true, 1.0, std::nullopt);
    run.beginBenchmark(std::nullopt, 45.0);
    for (const double score : {1010.0, 980.0, 1000.0}) {
        EXPECT_FALSE(run.passesOutcome());
        run.passOutcomes.push_back(FakeWorkloads::okOutcome(score));
        run.passEnded({PhaseSlice{0, {1, score}}}, score / 10);
    }
    const auto outcome = run.passesOutcome();
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->score, 1000);
    const BenchmarkEndState end = run.endState(OutcomeStatus::ok, {}, std::nullopt);
    ASSERT_EQ(end.slices.size(), 1u);
    EXPECT_EQ(end.slices[0].slice.units, 1000) << "the slices of the pass whose score is kept";
    EXPECT_EQ(end.stabilityPercent, 98.0) << "the lowest pass's";
    EXPECT_EQ(end.startCelsius, 45.0);
    EXPECT_TRUE(end.spreadPercent);

    run.beginBenchmark(std::nullopt, std::nullopt);
    run.passOutcomes.push_back(FakeWorkloads::okOutcome(1000));
    run.cancelled = true;
    EXPECT_EQ(run.passesOutcome()->detail, accuracyStoppedOutcome().detail);
}
