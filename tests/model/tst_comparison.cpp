#include "model/comparison.h"

#include <gtest/gtest.h>

using namespace quarbel;

namespace {

ScorePair scores(const char* title, std::optional<BenchmarkCategory> category, double before, double after) {
    ScorePair pair;
    pair.title = title;
    pair.category = category;
    pair.before = before;
    pair.after = after;
    return pair;
}

ScorePair cpuScores(double before, double after, std::optional<double> spreadBefore = std::nullopt,
                    std::optional<double> spreadAfter = std::nullopt) {
    ScorePair pair = scores("CPU Single-Core", BenchmarkCategory::cpu, before, after);
    pair.spreadBefore = spreadBefore;
    pair.spreadAfter = spreadAfter;
    return pair;
}

ScorePair fullRuns(ScorePair pair) {
    pair.length = RunLength::full;
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
    struct Case {
        const char* name;
        ScorePair pair;
        Verdict verdict;
        double band;
    };
    const Case cases[] = {
        {"exactly the band faster", cpuScores(1000, 1000 * (1 + cpuBand / 100)), Verdict::withinNoise,
         cpuBand},
        {"just past the band", cpuScores(1000, 1000 * (1 + cpuBand / 100) + 0.5), Verdict::faster, cpuBand},
        {"just past the band the other way", cpuScores(1000, 1000 * (1 - cpuBand / 100) - 0.5),
         Verdict::slower, cpuBand},
        {"Accuracy Mode spread of one run widens the band", cpuScores(1000, 1150, 20.0), Verdict::withinNoise,
         20.0},
        {"the larger of two spreads", cpuScores(1000, 1150, 2.0, 12.0), Verdict::faster, 12.0},
        {"a small spread never narrows the default band", cpuScores(1000, 1000 * (1 + cpuBand / 100), 0.5),
         Verdict::withinNoise, cpuBand},
        {"did not complete before", cpuScores(0, 1000), Verdict::faster, cpuBand},
        {"did not complete after", cpuScores(1000, 0), Verdict::slower, cpuBand},
        {"neither completed", cpuScores(0, 0), Verdict::withinNoise, cpuBand},
        // A slowdown is as large as the speed-up it undoes: ten times slower is past any band.
        {"ten times slower", fullRuns(scores("SSD Random", BenchmarkCategory::storage, 1000, 100)),
         Verdict::slower, fullStorage},
        {"ten times slower, quick", scores("SSD Random", BenchmarkCategory::storage, 1000, 100),
         Verdict::slower, quickStorage},
        {"two full runs use the full-run band", fullRuns(storage), Verdict::faster, fullStorage},
        {"a quick run in the pair takes the quick-run band", storage, Verdict::withinNoise, quickStorage},
    };
    for (const auto& c : cases) {
        const ComparedScore compared = compareScores(c.pair);
        EXPECT_EQ(compared.verdict, c.verdict) << c.name;
        EXPECT_DOUBLE_EQ(compared.bandPercent, c.band) << c.name;
        EXPECT_EQ(compared.ratio.has_value(), c.pair.before > 0 && c.pair.after > 0) << c.name;
    }
}

TEST(Comparison, AnUnknownTitleGetsTheWidestDefaultBand) {
    double widest = 0;
    for (const auto category :
         {BenchmarkCategory::cpu, BenchmarkCategory::render, BenchmarkCategory::gpu,
          BenchmarkCategory::storage, BenchmarkCategory::raw, BenchmarkCategory::system})
        widest = std::max(widest, defaultNoiseBandPercent(category, RunLength::quick));
    EXPECT_DOUBLE_EQ(compareScores(scores("Something New", std::nullopt, 100, 101)).bandPercent, widest);
    EXPECT_EQ(verdictText(Verdict::withinNoise), "within noise");
    EXPECT_NEAR(symmetricChangePercent(0.5), -100.0, 1e-9);
    EXPECT_NEAR(symmetricChangePercent(2.0), 100.0, 1e-9);
}
