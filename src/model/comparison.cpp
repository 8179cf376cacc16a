// SPDX-License-Identifier: Apache-2.0
#include "model/comparison.h"

#include "model/student_t.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace quarbel {
namespace {

constexpr std::array kAllCategories{BenchmarkCategory::cpu, BenchmarkCategory::render,
                                    BenchmarkCategory::gpu, BenchmarkCategory::storage,
                                    BenchmarkCategory::raw, BenchmarkCategory::system};

// Three times the largest coefficient of variation of the category's benchmarks on a quiet
// two-core machine, over ten quick runs and over five full runs: the verdicts of reports
// written before results carried their slice rates.
struct NoiseBands {
    double quick;
    double full;
};
constexpr NoiseBands kCpuNoiseBands{6.6, 8.9};
constexpr NoiseBands kRenderNoiseBands{15.4, 7.3};
constexpr NoiseBands kGpuNoiseBands{9.9, 18.1};
constexpr NoiseBands kStorageNoiseBands{93.1, 31.7};
constexpr NoiseBands kRawNoiseBands{28.2, 28.8};
constexpr NoiseBands kSystemNoiseBands{43.7, 18.9};

NoiseBands noiseBands(BenchmarkCategory category) {
    switch (category) {
    case BenchmarkCategory::cpu: return kCpuNoiseBands;
    case BenchmarkCategory::render: return kRenderNoiseBands;
    case BenchmarkCategory::gpu: return kGpuNoiseBands;
    case BenchmarkCategory::storage: return kStorageNoiseBands;
    case BenchmarkCategory::raw: return kRawNoiseBands;
    case BenchmarkCategory::system: return kSystemNoiseBands;
    }
    return kStorageNoiseBands;
}

// Run-to-run variation that the slices of one run do not show, in percent of the score,
// quick and full: the upper 80 % bound of what bench/trust.sh measured over eleven unchanged
// runs on the two-core development machine (full budgets for the CPU, render, memory and RAW
// benchmarks, quick ones for the GPU and storage benchmarks; the storage benchmarks' full
// figures are their coefficients of variation over five full suites). A quick run is never
// credited with less noise than a full one.
struct RunToRun {
    double quick;
    double full;
};
constexpr std::array<RunToRun, kBenchmarkCount> kRunToRun{{
    {2.4, 2.4},   // cpuInteger
    {2.2, 2.2},   // cpuFloating
    {2.0, 2.0},   // cpuCrypto
    {3.0, 2.3},   // memoryStream
    {3.0, 3.0},   // cineTile
    {3.1, 3.1},   // metalVisual
    {2.8, 2.8},   // metalCompute
    {2.9, 2.9},   // openCLCompute
    {3.0, 2.3},   // rawCPUDecode
    {3.0, 2.0},   // rawMetalDecode
    {20.0, 9.0},  // ssdSequential
    {21.0, 11.0}, // ssdRealSpeed
    {10.0, 10.0}, // ssdRandom
}};

constexpr double kNoiseThresholdPercent = 1.0;

// The category's default band for the runs' length (the largest for an unknown title),
// widened to the larger Accuracy Mode spread.
void setNoiseBand(const ScorePair& pair, ComparedScore& result) {
    if (pair.category) {
        result.bandPercent = defaultNoiseBandPercent(*pair.category, pair.length);
    } else {
        for (const auto category : kAllCategories)
            result.bandPercent = std::max(result.bandPercent, defaultNoiseBandPercent(category, pair.length));
    }
    const double spread = std::max(pair.spreadBefore.value_or(0), pair.spreadAfter.value_or(0));
    if (spread > result.bandPercent) {
        result.bandPercent = spread;
        result.bandFromSpread = true;
    }
}

ComparedScore byNoiseBand(const ScorePair& pair, ComparedScore result) {
    result.method = ComparisonMethod::noiseBand;
    setNoiseBand(pair, result);
    // The tolerance keeps a change of exactly the band (5.000000000000004 after division) noise.
    const double change = symmetricChangePercent(*result.ratio);
    if (std::abs(change) <= result.bandPercent + 1e-9)
        result.verdict = Verdict::withinNoise;
    else
        result.verdict = change > 0 ? Verdict::faster : Verdict::slower;
    return result;
}

ComparedScore byStatistics(const ScorePair& pair, ComparedScore result) {
    result.method = ComparisonMethod::statistics;
    const RateUncertainty combined = combinedUncertainty(*pair.uncertaintyBefore, *pair.uncertaintyAfter);
    const double logRatio = std::log(*result.ratio);
    const double df = combined.degreesOfFreedom;
    const double standardError = combined.relativeStandardError;
    const double margin = t95(df) * standardError;
    result.ratioLow = std::exp(logRatio - margin);
    result.ratioHigh = std::exp(logRatio + margin);
    result.pValue =
        standardError > 0 ? twoSidedPValue(logRatio / standardError, df) : (logRatio == 0 ? 1.0 : 0.0);
    result.thresholdPercent = noiseThresholdPercent(pair.id);
    // The threshold applies to the log ratio, so a slowdown and the speed-up that undoes it
    // are judged alike.
    if (pair.noisyBefore || pair.noisyAfter)
        result.verdict = Verdict::inconclusive;
    else if (*result.pValue < kSignificanceLevel &&
             std::abs(logRatio) > std::log1p(result.thresholdPercent / 100.0))
        result.verdict = logRatio > 0 ? Verdict::faster : Verdict::slower;
    else
        result.verdict = Verdict::withinNoise;
    return result;
}

} // namespace

std::string_view verdictText(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return "faster";
    case Verdict::slower: return "slower";
    case Verdict::withinNoise: return "within noise";
    case Verdict::inconclusive: return "inconclusive";
    }
    return "within noise";
}

double defaultNoiseBandPercent(BenchmarkCategory category, RunLength length) {
    const NoiseBands bands = noiseBands(category);
    return length == RunLength::full ? bands.full : bands.quick;
}

double runToRunNoisePercent(std::optional<BenchmarkID> id, RunLength length) {
    const auto pick = [length](const RunToRun& noise) {
        return length == RunLength::full ? noise.full : noise.quick;
    };
    if (id) return pick(kRunToRun[indexOf(*id)]);
    double largest = 0;
    for (const auto& noise : kRunToRun)
        largest = std::max(largest, pick(noise));
    return largest;
}

double noiseThresholdPercent(std::optional<BenchmarkID>) { return kNoiseThresholdPercent; }

RateUncertainty scoreUncertainty(const RateUncertainty& withinRun, std::optional<BenchmarkID> id,
                                 RunLength length) {
    return withRunToRunFloor(withinRun, runToRunNoisePercent(id, length) / 100.0);
}

RateUncertainty combinedUncertainty(const RateUncertainty& a, const RateUncertainty& b) {
    const double varianceA = a.relativeStandardError * a.relativeStandardError;
    const double varianceB = b.relativeStandardError * b.relativeStandardError;
    const double variance = varianceA + varianceB;
    // Each side's variance over its own degrees of freedom.
    const auto part = [](double v, double df) { return std::isinf(df) ? 0.0 : v * v / df; };
    const double denominator = part(varianceA, a.degreesOfFreedom) + part(varianceB, b.degreesOfFreedom);
    RateUncertainty combined;
    combined.samples = std::min(a.samples, b.samples);
    combined.relativeStandardError = std::sqrt(variance);
    combined.degreesOfFreedom =
        denominator > 0 ? variance * variance / denominator : std::numeric_limits<double>::infinity();
    return combined;
}

std::optional<RateUncertainty> sampleMeanUncertainty(std::span<const float> samples) {
    double sum = 0;
    int n = 0;
    for (const float sample : samples)
        if (!std::isnan(sample)) {
            sum += sample;
            ++n;
        }
    if (n < kMinimumSlices) return std::nullopt;
    const double mean = sum / n;
    if (!(mean > 0)) return std::nullopt;
    double squares = 0;
    for (const float sample : samples)
        if (!std::isnan(sample)) squares += (sample - mean) * (sample - mean);
    const double standardError = std::sqrt(squares / (n - 1) / n);
    return RateUncertainty{n, standardError / mean, static_cast<double>(n - 1)};
}

double symmetricChangePercent(double ratio) {
    const double logRatio = std::log(ratio);
    return (std::exp(std::abs(logRatio)) - 1.0) * (logRatio < 0 ? -100.0 : 100.0);
}

ComparedScore compareScores(const ScorePair& pair) {
    ComparedScore result;
    const bool beforeScored = pair.before > 0, afterScored = pair.after > 0;
    if (!beforeScored || !afterScored) {
        setNoiseBand(pair, result);
        result.verdict = beforeScored == afterScored ? Verdict::withinNoise
                         : afterScored               ? Verdict::faster
                                                     : Verdict::slower;
        return result;
    }
    result.ratio = pair.after / pair.before;
    if (pair.uncertaintyBefore && pair.uncertaintyAfter) return byStatistics(pair, result);
    return byNoiseBand(pair, result);
}

} // namespace quarbel
