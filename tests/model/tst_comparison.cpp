#include "model/comparison.h"

#include <gtest/gtest.h>

using namespace quarbel;

namespace {

ScorePair cpuScores(double before, double after, std::optional<double> spreadBefore = std::nullopt,
                    std::optional<double> spreadAfter = std::nullopt) {
    return {"CPU Single-Core", BenchmarkCategory::cpu, before, after, spreadBefore, spreadAfter};
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
    const ScorePair storage{"SSD Random", BenchmarkCategory::storage, 1000, between, std::nullopt,
                            std::nullopt};
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
    EXPECT_DOUBLE_EQ(
        compareScores({"Something New", std::nullopt, 100, 101, std::nullopt, std::nullopt}).bandPercent,
        widest);
    EXPECT_EQ(verdictText(Verdict::withinNoise), "within noise");
}
