#include "model/comparison.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarbel {
namespace {

// Three times the largest coefficient of variation of the category's benchmarks on a quiet
// two-core machine (bench/run_to_run_noise.sh; the README lists the figures): over ten
// quick runs, and over five full runs. Full runs are not quieter everywhere: the CPU and
// GPU benchmarks varied more over the twenty minutes of full runs than over the quick ones.
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

} // namespace

std::string_view verdictText(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return "faster";
    case Verdict::slower: return "slower";
    case Verdict::withinNoise: return "within noise";
    }
    return "within noise";
}

double defaultNoiseBandPercent(BenchmarkCategory category, RunLength length) {
    const NoiseBands bands = noiseBands(category);
    return length == RunLength::full ? bands.full : bands.quick;
}

ComparedScore compareScores(const ScorePair& pair) {
    ComparedScore result;
    if (pair.category) {
        result.bandPercent = defaultNoiseBandPercent(*pair.category, pair.length);
    } else {
        constexpr std::array all{BenchmarkCategory::cpu, BenchmarkCategory::render,
                                 BenchmarkCategory::gpu, BenchmarkCategory::storage,
                                 BenchmarkCategory::raw, BenchmarkCategory::system};
        for (const auto category : all)
            result.bandPercent = std::max(result.bandPercent, defaultNoiseBandPercent(category, pair.length));
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
