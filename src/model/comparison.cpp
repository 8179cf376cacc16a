#include "model/comparison.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarbel {
namespace {

// Three times the largest coefficient of variation over ten quick runs of the category's
// benchmarks on a quiet two-core machine (bench/run_to_run_noise.sh; the README lists the
// figures). Quick runs vary more than full ones, so these err on the side of "within noise".
constexpr double kCpuNoiseBand = 6.6;      // CPU Workflow, CV 2.19 %
constexpr double kRenderNoiseBand = 15.4;  // CPU Tile Render, CV 5.12 %
constexpr double kGpuNoiseBand = 9.9;      // GPU Visual Tour, CV 3.30 %
constexpr double kStorageNoiseBand = 93.1; // SSD Real Speed, CV 31.04 %
constexpr double kRawNoiseBand = 28.2;     // RAW CPU Decode, CV 9.39 %
constexpr double kSystemNoiseBand = 43.7;  // Memory Stream, CV 14.58 %

} // namespace

std::string_view verdictText(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return "faster";
    case Verdict::slower: return "slower";
    case Verdict::withinNoise: return "within noise";
    }
    return "within noise";
}

double defaultNoiseBandPercent(BenchmarkCategory category) {
    switch (category) {
    case BenchmarkCategory::cpu: return kCpuNoiseBand;
    case BenchmarkCategory::render: return kRenderNoiseBand;
    case BenchmarkCategory::gpu: return kGpuNoiseBand;
    case BenchmarkCategory::storage: return kStorageNoiseBand;
    case BenchmarkCategory::raw: return kRawNoiseBand;
    case BenchmarkCategory::system: return kSystemNoiseBand;
    }
    return kStorageNoiseBand;
}

ComparedScore compareScores(const ScorePair& pair) {
    ComparedScore result;
    if (pair.category) {
        result.bandPercent = defaultNoiseBandPercent(*pair.category);
    } else {
        constexpr std::array all{BenchmarkCategory::cpu, BenchmarkCategory::render,
                                 BenchmarkCategory::gpu, BenchmarkCategory::storage,
                                 BenchmarkCategory::raw, BenchmarkCategory::system};
        for (const auto category : all)
            result.bandPercent = std::max(result.bandPercent, defaultNoiseBandPercent(category));
    }
    const double spread = std::max(pair.spreadBefore.value_or(0), pair.spreadAfter.value_or(0));
    if (spread > result.bandPercent) {
        result.bandPercent = spread;
        result.bandFromSpread = true;
    }
    const bool beforeScored = pair.before > 0, afterScored = pair.after > 0;
    if (!beforeScored || !afterScored) {
        result.verdict = beforeScored == afterScored ? Verdict::withinNoise
                         : afterScored               ? Verdict::faster
                                                     : Verdict::slower;
        return result;
    }
    result.ratio = pair.after / pair.before;
    const double changePercent = (*result.ratio - 1.0) * 100.0;
    // The tolerance keeps a change of exactly the band (5.000000000000004 after division) noise.
    if (std::abs(changePercent) <= result.bandPercent + 1e-9)
        result.verdict = Verdict::withinNoise;
    else
        result.verdict = changePercent > 0 ? Verdict::faster : Verdict::slower;
    return result;
}

} // namespace quarbel
