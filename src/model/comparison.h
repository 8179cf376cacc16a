// SPDX-License-Identifier: Apache-2.0
// Comparing two runs benchmark by benchmark. Where both results carry their slice rates, the
// verdict comes from statistics: a Welch t-test on the log rates, the runs' run-to-run noise
// added, at a significance level of 0.05, and a change smaller than the noise threshold is
// never called. Older reports without slices fall back to a fixed noise band per category.
#pragma once

#include "model/catalogue.h"
#include "model/rate_slices.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quarbel {

// `inconclusive`: a result came from a noisy machine, so no verdict is given.
enum class Verdict { faster, slower, withinNoise, inconclusive };

// "faster", "slower", "within noise", "inconclusive"
std::string_view verdictText(Verdict verdict);

// Quick runs measure a tenth of each budget and vary more than full runs.
enum class RunLength { quick, full };

inline constexpr double kSignificanceLevel = 0.05;

// The run-to-run noise of a category's benchmarks on a quiet machine, in percent: three
// times the largest coefficient of variation measured over repeated runs of its
// benchmarks of that length. Used only for reports without slice rates.
double defaultNoiseBandPercent(BenchmarkCategory category, RunLength length);

// The variation between separate runs of a benchmark that slices within one run cannot
// see (memory placement, clock and cache state, neighbours), as a coefficient of variation
// in percent, measured on a quiet machine (bench/trust.sh; the README lists the figures).
// An unknown benchmark gets the largest.
double runToRunNoisePercent(std::optional<BenchmarkID> id, RunLength length);

// The smallest change that is ever called faster or slower, in percent, however significant.
double noiseThresholdPercent(std::optional<BenchmarkID> id);

// A single pass's uncertainty with the run-to-run noise of its benchmark added: what a
// report shows as "± x %". (A result of several passes measures that noise itself, in the
// spread of its passes, and needs no addition.)
RateUncertainty scoreUncertainty(const RateUncertainty& withinRun, std::optional<BenchmarkID> id,
                                 RunLength length);

// Two independent relative errors of one quotient (or product), e.g. a score and the power it
// is divided by: their variances add, the degrees of freedom follow Welch and Satterthwaite
// (a side with infinite degrees of freedom counts as known exactly).
RateUncertainty combinedUncertainty(const RateUncertainty& a, const RateUncertainty& b);

// The standard error of the mean of samples taken while a benchmark ran (a power column),
// relative to that mean, over samples - 1 degrees of freedom; NaN samples are skipped. Nothing
// for fewer than kMinimumSlices samples or a mean that is not positive.
std::optional<RateUncertainty> sampleMeanUncertainty(std::span<const float> samples);

// One benchmark's result in each of the two runs.
struct ScorePair {
    std::string title;
    std::optional<BenchmarkCategory> category; // absent for a title the catalogue lacks
    double before = 0;
    double after = 0;
    std::optional<double> spreadBefore; // Accuracy Mode's spread of pass scores, in percent
    std::optional<double> spreadAfter;
    RunLength length = RunLength::quick; // full only when both runs were full
    std::optional<BenchmarkID> id;
    // Each score's uncertainty as its report gives it (scoreUncertainty, or its passes').
    std::optional<RateUncertainty> uncertaintyBefore;
    std::optional<RateUncertainty> uncertaintyAfter;
    bool noisyBefore = false; // measured while other work disturbed the machine
    bool noisyAfter = false;
};

enum class ComparisonMethod { statistics, noiseBand };

struct ComparedScore {
    std::optional<double> ratio; // after / before; absent when either score is zero
    ComparisonMethod method = ComparisonMethod::noiseBand;
    // With statistics: the ratio's 95 % interval and the test's p-value.
    std::optional<double> ratioLow;
    std::optional<double> ratioHigh;
    std::optional<double> pValue;
    double thresholdPercent = 0; // the smallest change called (statistics)
    double bandPercent = 0;      // the noise band used (noise band)
    bool bandFromSpread = false; // an Accuracy Mode spread widened the band
    Verdict verdict = Verdict::withinNoise;
};

// The change in percent, symmetric: +x % faster and the same slowdown as -x %, from the
// log of the ratio (a tenfold slowdown is -900 %, as a tenfold speed-up is +900 %).
double symmetricChangePercent(double ratio);

// A score of zero (a benchmark that did not complete) against a positive one is "slower" or
// "faster"; zero against zero is "within noise". With statistics for both results the verdict
// is faster or slower when the log ratio differs from zero at the significance level and the
// change is past the noise threshold; a noisy result makes it inconclusive. Otherwise the band
// is the category's default for the runs' length (the largest for an unknown title), widened
// to the larger Accuracy Mode spread, and a change within it (symmetrically) is noise.
ComparedScore compareScores(const ScorePair& pair);

} // namespace quarbel
