// SPDX-License-Identifier: Apache-2.0
#include "model/comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace quarbel;

namespace {

ScorePair scores(const char* title, std::optional<BenchmarkCategory> category, double before, double after,
                 RunLength length = RunLength::quick) {
    ScorePair pair;
    pair.title = title;
    pair.category = category;
    pair.before = before;
    pair.after = after;
    pair.length = length;
    return pair;
}

ScorePair cpuScores(double before, double after, std::optional<double> spreadBefore = std::nullopt,
                    std::optional<double> spreadAfter = std::nullopt) {
    ScorePair pair = scores("CPU Single-Core", BenchmarkCategory::cpu, before, after);
    pair.spreadBefore = spreadBefore;
    pair.spreadAfter = spreadAfter;
    return pair;
}

} // namespace

TEST(Comparison, VerdictsAtTheEdgesOfTheNoiseBand) {
    const double cpuBand = defaultNoiseBandPercent(BenchmarkCategory::cpu, RunLength::quick);
    // Storage varies far less over full budgets than over quick ones.
    const double quickStorage = defaultNoiseBandPercent(BenchmarkCategory::storage, RunLength::quick);
    const double fullStorage = defaultNoiseBandPercent(BenchmarkCategory::storage, RunLength::full);
    ASSERT_LT(fullStorage, quickStorage);
    const double between = 1000 * (1 + (fullStorage + quickStorage) / 200);
    const ScorePair storage = scores("SSD Random", BenchmarkCategory::storage, 1000, between);
    const struct {
        const char* name;
        ScorePair pair;
        Verdict verdict;
        double band;
    } cases[] = {
        // clang-format off
        {"exactly the band faster", cpuScores(1000, 1000 * (1 + cpuBand / 100)), Verdict::withinNoise, cpuBand},
        {"just past the band", cpuScores(1000, 1000 * (1 + cpuBand / 100) + 0.5), Verdict::faster, cpuBand},
        {"just past the band the other way", cpuScores(1000, 1000 * (1 - cpuBand / 100) - 0.5), Verdict::slower, cpuBand},
        {"Accuracy Mode spread of one run widens the band", cpuScores(1000, 1150, 20.0), Verdict::withinNoise, 20.0},
        {"the larger of two spreads", cpuScores(1000, 1150, 2.0, 12.0), Verdict::faster, 12.0},
        {"a small spread never narrows the default band", cpuScores(1000, 1000 * (1 + cpuBand / 100), 0.5),
         Verdict::withinNoise, cpuBand},
        {"did not complete before", cpuScores(0, 1000), Verdict::faster, cpuBand},
        {"did not complete after", cpuScores(1000, 0), Verdict::slower, cpuBand},
        {"neither completed", cpuScores(0, 0), Verdict::withinNoise, cpuBand},
        // A slowdown is as large as the speed-up it undoes: ten times slower is past any band.
        {"ten times slower", scores("SSD Random", BenchmarkCategory::storage, 1000, 100, RunLength::full),
         Verdict::slower, fullStorage},
        {"ten times slower, quick", scores("SSD Random", BenchmarkCategory::storage, 1000, 100), Verdict::slower,
         quickStorage},
        {"two full runs use the full-run band", scores("SSD Random", BenchmarkCategory::storage, 1000, between,
         RunLength::full), Verdict::faster, fullStorage},
        {"a quick run in the pair takes the quick-run band", storage, Verdict::withinNoise, quickStorage}};
    // clang-format on
    for (const auto& c : cases) {
        const ComparedScore compared = compareScores(c.pair);
        EXPECT_EQ(compared.verdict, c.verdict) << c.name;
        EXPECT_DOUBLE_EQ(compared.bandPercent, c.band) << c.name;
        EXPECT_EQ(compared.ratio.has_value(), c.pair.before > 0 && c.pair.after > 0) << c.name;
    }
}

TEST(Comparison, AnUnknownTitleGetsTheWidestDefaultBand) {
    double widest = 0;
    for (const auto category : kAllCategories)
        widest = std::max(widest, defaultNoiseBandPercent(category, RunLength::quick));
    EXPECT_DOUBLE_EQ(compareScores(scores("Something New", std::nullopt, 100, 101)).bandPercent, widest);
    EXPECT_EQ(verdictText(Verdict::withinNoise), "within noise");
    EXPECT_NEAR(symmetricChangePercent(0.5), -100.0, 1e-9);
    EXPECT_NEAR(symmetricChangePercent(2.0), 100.0, 1e-9);
}

TEST(Comparison, PowerSamplesAndTheirCombinationWithTheScoresError) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        const char* name;
        std::vector<float> samples;
        std::optional<double> relativeError; // none: no interval
        double degreesOfFreedom;
    } cases[] = {
        // Mean 12, standard deviation 2 over the three samples read.
        {"a sample that could not be read is skipped", {10, nan, 12, 14}, 2.0 / std::sqrt(3.0) / 12, 2},
        {"steady power has no error", {20, 20, 20}, 0.0, 2},
        {"two samples give no interval", {10, nan, 12}, std::nullopt, 0},
        {"no power, no interval", {0, 0, 0}, std::nullopt, 0},
    };
    for (const auto& c : cases) {
        const auto u = sampleMeanUncertainty(c.samples);
        ASSERT_EQ(u.has_value(), c.relativeError.has_value()) << c.name;
        if (!u) continue;
        EXPECT_NEAR(u->relativeStandardError, *c.relativeError, 1e-12) << c.name;
        EXPECT_DOUBLE_EQ(u->degreesOfFreedom, c.degreesOfFreedom) << c.name;
    }
    // 3 % and 4 % give 5 %; Welch and Satterthwaite: 0.0025² / (0.0009² / 9 + 0.0016² / 19).
    const RateUncertainty combined = combinedUncertainty({20, 0.03, 9}, {20, 0.04, 19});
    EXPECT_NEAR(combined.relativeStandardError, 0.05, 1e-12);
    EXPECT_NEAR(combined.degreesOfFreedom, 0.0025 * 0.0025 / (0.0009 * 0.0009 / 9 + 0.0016 * 0.0016 / 19),
                1e-9);
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_NEAR(combinedUncertainty({20, 0.03, 9}, {20, 0.04, infinite}).degreesOfFreedom,
                0.0025 * 0.0025 / (0.0009 * 0.0009 / 9), 1e-9)
        << "a side known exactly adds no degrees of freedom of its own";
}
