// SPDX-License-Identifier: Apache-2.0
#include "model/rate_slices.h"

#include "model/student_t.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace quarbel {

std::vector<RateSlice> sliceProgress(std::span<const ProgressPoint> series, int maxSlices) {
    if (series.empty() || maxSlices < 1) return {};
    ProgressPoint previous{};
    for (const auto& point : series) {
        if (point.elapsedSeconds < previous.elapsedSeconds || point.unitsDone < previous.unitsDone) return {};
        previous = point;
    }
    const double total = series.back().elapsedSeconds;
    if (!(total > 0)) return {};
    const auto count = std::min<std::size_t>(static_cast<std::size_t>(maxSlices), series.size());
    std::vector<RateSlice> slices;
    slices.reserve(count);
    ProgressPoint start{};
    std::size_t next = 0;
    for (std::size_t slice = 1; slice <= count; ++slice) {
        // The slice ends at the report nearest to its share of the time; the last one at the
        // last report, whatever is left.
        const double boundary = total * static_cast<double>(slice) / static_cast<double>(count);
        while (next + 1 < series.size() && std::abs(series[next + 1].elapsedSeconds - boundary) <=
                                               std::abs(series[next].elapsedSeconds - boundary))
            ++next;
        const ProgressPoint& end = series[next];
        const double seconds = end.elapsedSeconds - start.elapsedSeconds;
        if (seconds > 0) slices.push_back({seconds, static_cast<double>(end.unitsDone - start.unitsDone)});
        start = end;
        if (next + 1 >= series.size()) break;
        ++next;
    }
    return slices;
}

double RateUncertainty::ci95Percent() const { return 100.0 * t95(degreesOfFreedom) * relativeStandardError; }

std::optional<RateUncertainty> rateUncertainty(std::span<const RateSlice> slices) {
    if (slices.size() < static_cast<std::size_t>(kMinimumSlices)) return std::nullopt;
    double units = 0, seconds = 0;
    for (const auto& slice : slices) {
        units += slice.units;
        seconds += slice.seconds;
    }
    if (!(units > 0) || !(seconds > 0)) return std::nullopt;
    const double rate = units / seconds;
    const auto k = static_cast<double>(slices.size());
    double squares = 0;
    for (const auto& slice : slices) {
        const double residual = slice.units - rate * slice.seconds;
        squares += residual * residual;
    }
    const double variance = k / (k - 1.0) * squares / (seconds * seconds);
    return RateUncertainty{static_cast<int>(slices.size()), std::sqrt(variance) / rate, k - 1.0};
}

std::optional<RateUncertainty> passUncertainty(std::span<const double> passScores,
                                               std::span<const RateUncertainty> withinRun) {
    if (passScores.size() < 2) return std::nullopt;
    const auto n = static_cast<double>(passScores.size());
    const double mean = std::accumulate(passScores.begin(), passScores.end(), 0.0) / n;
    if (!(mean > 0)) return std::nullopt;
    double squares = 0;
    for (const double score : passScores)
        squares += (score - mean) * (score - mean);
    RateUncertainty between{static_cast<int>(passScores.size()), std::sqrt(squares / (n - 1.0) / n) / mean,
                            n - 1.0};
    // Passes that happen to agree closely still carry their own measurement error: the mean
    // of n passes is never surer than their own intervals, averaged, allow.
    if (withinRun.empty()) return between;
    double withinVariance = 0, withinDf = std::numeric_limits<double>::infinity();
    for (const auto& pass : withinRun) {
        withinVariance += pass.relativeStandardError * pass.relativeStandardError;
        withinDf = std::min(withinDf, pass.degreesOfFreedom);
    }
    const double withinSE = std::sqrt(withinVariance) / static_cast<double>(withinRun.size());
    if (withinSE > between.relativeStandardError) return RateUncertainty{between.samples, withinSE, withinDf};
    return between;
}

RateUncertainty withRunToRunFloor(const RateUncertainty& measured, double floorFraction) {
    const double measuredVariance = measured.relativeStandardError * measured.relativeStandardError;
    const double total = measuredVariance + floorFraction * floorFraction;
    RateUncertainty combined = measured;
    combined.relativeStandardError = std::sqrt(total);
    if (measuredVariance > 0)
        combined.degreesOfFreedom =
            total * total / (measuredVariance * measuredVariance / measured.degreesOfFreedom);
    else if (floorFraction > 0)
        combined.degreesOfFreedom = std::numeric_limits<double>::infinity();
    return combined;
}

} // namespace quarbel
