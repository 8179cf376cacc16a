#include "model/comparison.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarbel {
namespace {

// Three times the largest coefficient of variation over ten runs of the category's
// benchmarks on a quiet two-core machine; the README lists the measured figures.
constexpr double kCpuNoiseBand = 3.0;
constexpr double kRenderNoiseBand = 3.0;
constexpr double kGpuNoiseBand = 3.0;
constexpr double kStorageNoiseBand = 3.0;
constexpr double kRawNoiseBand = 3.0;
constexpr double kSystemNoiseBand = 3.0;

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
