// SPDX-License-Identifier: Apache-2.0
#include "model/comparison.h"
#include "model/rate_slices.h"
#include "model/student_t.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using namespace quarbel;

namespace {

// `units` work units whose durations vary around `meanSeconds` by a coefficient of
// variation `cv`, reported after each unit.
std::vector<ProgressPoint> simulatedPass(std::mt19937& random, int units, double meanSeconds, double cv) {
    std::normal_distribution<double> duration(meanSeconds, meanSeconds * cv);
    std::vector<ProgressPoint> series;
    double t = 0;
    for (int i = 1; i <= units; ++i) {
        t += std::max(duration(random), meanSeconds * 0.01);
        series.push_back({t, i});
    }
    return series;
}

double rateOf(const std::vector<ProgressPoint>& series) {
    return static_cast<double>(series.back().unitsDone) / series.back().elapsedSeconds;
}

} // namespace

TEST(StudentT, MatchesTabulatedQuantilesAndTails) {
    // Two-sided 95 % and 99 % points from the usual tables.
    const struct {
        double df, p, t;
    } cases[] = {{1, 0.975, 12.7062}, {2, 0.975, 4.3027},  {5, 0.975, 2.5706},
                 {19, 0.975, 2.0930}, {30, 0.995, 2.7500}, {INFINITY, 0.975, 1.9600}};
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(t95(c.df), studentTQuantile(0.975, c.df)) << c.df;
        EXPECT_NEAR(studentTQuantile(c.p, c.df), c.t, 5e-4) << c.df;
        EXPECT_NEAR(studentTCdf(c.t, c.df), c.p, 5e-5) << c.df;
        EXPECT_NEAR(twoSidedPValue(-c.t, c.df), 2 * (1 - c.p), 1e-4) << c.df;
    }
    // Fractional degrees of freedom (Welch) lie between their neighbours.
    EXPECT_LT(studentTQuantile(0.975, 2.5), studentTQuantile(0.975, 2));
    EXPECT_GT(studentTQuantile(0.975, 2.5), studentTQuantile(0.975, 3));
    EXPECT_DOUBLE_EQ(studentTCdf(0, 7), 0.5);
    EXPECT_TRUE(std::isnan(studentTQuantile(1.0, 5)));
    // Quantile and distribution function undo each other over the whole range in use,
    // fractional Welch degrees of freedom and the far tails included.
    for (double df : {1.0, 1.5, 3.0, 9.7, 100.0, 1000.0, 1e6, double(INFINITY)})
        for (double p : {1e-6, 0.01, 0.3, 0.5, 0.9, 0.975, 0.999999})
            EXPECT_NEAR(studentTCdf(studentTQuantile(p, df), df), p, 1e-9 * std::max(p, 1e-3))
                << df << " " << p;
}

TEST(RateSlices, GroupWholeUnitsIntoSlicesOfAboutEqualTime) {
    const struct {
        const char* name;
        std::vector<ProgressPoint> series;
        int maxSlices;
        std::vector<RateSlice> expected;
    } cases[] = {
        {"one report per slice", {{1, 10}, {2, 20}, {3, 30}}, 20, {{1, 10}, {1, 10}, {1, 10}}},
        {"dense reports", {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}}, 3, {{2, 2}, {2, 2}, {2, 2}}},
        // A slow unit in the middle: slices end at the first report past their share of time.
        {"uneven units", {{1, 1}, {5, 2}, {6, 3}}, 3, {{1, 1}, {4, 1}, {1, 1}}},
        {"a pass starting again gives nothing", {{1, 10}, {2, 5}, {3, 15}}, 3, {}},
        {"no time, no slices", {{0, 0}}, 3, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(sliceProgress(c.series, c.maxSlices), c.expected) << c.name;
}

TEST(RateSlices, TheIntervalCoversTheTrueRateNineteenTimesInTwenty) {
    // Neither far more often (too wide to be useful) nor far less (overconfident), fine or coarse units.
    std::mt19937 random(20261124);
    for (const int units : {400, 24}) {
        int covered = 0;
        const int runs = 400;
        for (int run = 0; run < runs; ++run) {
            const auto series = simulatedPass(random, units, 0.05, 0.2);
            const auto uncertainty = rateUncertainty(sliceProgress(series)).value();
            const double rate = rateOf(series);
            if (std::abs(rate - 20.0) <= rate * uncertainty.ci95Percent() / 100.0) ++covered;
        }
        EXPECT_GT(covered, runs * 90 / 100) << units;
        EXPECT_LT(covered, runs * 99 / 100) << units;
    }
}

TEST(RateSlices, TooFewSlicesOrNoWorkGiveNoInterval) {
    EXPECT_FALSE(rateUncertainty(std::vector<RateSlice>{{1, 5}, {1, 5}}));
    EXPECT_FALSE(rateUncertainty(std::vector<RateSlice>{{1, 0}, {1, 0}, {1, 0}}));
    const auto steady = rateUncertainty(std::vector<RateSlice>{{1, 5}, {2, 10}, {1, 5}}).value();
    EXPECT_DOUBLE_EQ(steady.relativeStandardError, 0);
    EXPECT_EQ(steady.degreesOfFreedom, 2);
}

TEST(RateSlices, PassesAndTheRunToRunFloorWidenTheInterval) {
    const std::vector<double> scores{980, 1000, 1020};
    const auto passes = passUncertainty(scores, {}).value();
    EXPECT_NEAR(passes.relativeStandardError, 20.0 / std::sqrt(3.0) / 1000, 1e-12);
    EXPECT_EQ(passes.degreesOfFreedom, 2);
    // Passes that agree by chance are no surer than their own intervals allow.
    const std::vector<double> same{1000, 1000};
    const std::vector<RateUncertainty> own{{20, 0.01, 19}, {20, 0.01, 19}};
    EXPECT_NEAR(passUncertainty(same, own)->relativeStandardError, std::sqrt(2e-4) / 2, 1e-12);
    EXPECT_FALSE(passUncertainty(std::vector<double>{1000}, {}));

    const RateUncertainty measured{20, 0.003, 19};
    const RateUncertainty floored = withRunToRunFloor(measured, 0.004);
    EXPECT_NEAR(floored.relativeStandardError, 0.005, 1e-12);
    EXPECT_GT(floored.degreesOfFreedom, measured.degreesOfFreedom);
    EXPECT_TRUE(std::isinf(withRunToRunFloor({20, 0, 19}, 0.01).degreesOfFreedom));
}

TEST(Comparison, StatisticalVerdictsHoldAnAATestAndSeeARealChange) {
    // Pairs of simulated single runs: unchanged, 15 % slower, and noisy.
    std::mt19937 random(7);
    const auto compare = [&](double slowdown, bool noisy) {
        const auto a = simulatedPass(random, 300, 0.05, 0.1);
        const auto b = simulatedPass(random, 300, 0.05 / (1 - slowdown), 0.1);
        ScorePair pair;
        pair.before = rateOf(a);
        pair.after = rateOf(b);
        pair.id = BenchmarkID::cpuInteger;
        pair.length = RunLength::full;
        pair.uncertaintyBefore = scoreUncertainty(*rateUncertainty(sliceProgress(a)), pair.id, pair.length);
        pair.uncertaintyAfter = scoreUncertainty(*rateUncertainty(sliceProgress(b)), pair.id, pair.length);
        pair.noisyAfter = noisy;
        return compareScores(pair);
    };
    int withinNoise = 0, slower = 0;
    for (int i = 0; i < 200; ++i) {
        withinNoise += compare(0, false).verdict == Verdict::withinNoise;
        slower += compare(0.15, false).verdict == Verdict::slower;
    }
    EXPECT_GE(withinNoise, 190);
    EXPECT_GE(slower, 190);
    const ComparedScore noisy = compare(0.05, true);
    EXPECT_EQ(noisy.verdict, Verdict::inconclusive);
    EXPECT_EQ(noisy.method, ComparisonMethod::statistics);
    ASSERT_TRUE(noisy.ratioLow && noisy.ratioHigh);
    EXPECT_LT(*noisy.ratioLow, *noisy.ratio);
    EXPECT_GT(*noisy.ratioHigh, *noisy.ratio);
}
