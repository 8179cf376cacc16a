// Comparing two runs benchmark by benchmark, with an honest word for differences that
// are smaller than the benchmark's own run-to-run noise.
#pragma once

#include "model/catalogue.h"

#include <optional>
#include <string>
#include <string_view>

namespace quarbel {

enum class Verdict { faster, slower, withinNoise };

// "faster", "slower", "within noise"
std::string_view verdictText(Verdict verdict);

// Quick runs measure a tenth of each budget and vary more than full runs.
enum class RunLength { quick, full };

// The run-to-run noise of a category's benchmarks on a quiet machine, in percent: three
// times the largest coefficient of variation measured over repeated runs of its
// benchmarks of that length (see the README for the figures), so that two runs of an
// unchanged machine fall inside it. Two runs' ratio spreads by about 1.4 times one run's
// variation, and three times covers that with room to spare.
double defaultNoiseBandPercent(BenchmarkCategory category, RunLength length);

// One benchmark's score in each of the two runs. A spread is Accuracy Mode's spread of
// pass scores, in percent of the median, when that run had one.
struct ScorePair {
    std::string title;
    std::optional<BenchmarkCategory> category; // absent for a title the catalogue lacks
    double before = 0;
    double after = 0;
    std::optional<double> spreadBefore;
    std::optional<double> spreadAfter;
    RunLength length = RunLength::quick; // full only when both runs were full
};

struct ComparedScore {
    std::optional<double> ratio; // after / before; absent when either score is zero
    double bandPercent = 0;      // the noise band used
    bool bandFromSpread = false; // an Accuracy Mode spread widened the default
    Verdict verdict = Verdict::withinNoise;
};

// The band is the category's default for the runs' length (the largest default for an
// unknown title), widened
// to the larger Accuracy Mode spread when either run has one: three passes in a row show
// less of the noise between runs than ten runs do, so a small spread never narrows it. A difference of
// exactly the band is still noise. A score of zero (a benchmark that did not complete) against a positive one
// is "slower" or "faster"; zero against zero is "within noise".
ComparedScore compareScores(const ScorePair& pair);

} // namespace quarbel
