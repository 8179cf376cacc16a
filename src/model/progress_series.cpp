// SPDX-License-Identifier: Apache-2.0
#include "model/progress_series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarbel {

void ProgressSeries::add(const ProgressReport& report) {
    const ProgressPoint point{report.elapsedSeconds, report.unitsDone};
    auto phase = std::lower_bound(phases_.begin(), phases_.end(), report.phase,
                                  [](const Phase& p, int number) { return p.number < number; });
    if (phase == phases_.end() || phase->number != report.phase) {
        phase = phases_.insert(phase, Phase{report.phase, {}, {}});
        phase->points.reserve(256);
    }
    phase->total.elapsedSeconds += point.elapsedSeconds - last_.elapsedSeconds;
    phase->total.unitsDone += point.unitsDone - last_.unitsDone;
    last_ = point;
    auto& points = phase->points;
    if (points.size() >= kMaximumPoints) {
        // Keep every other point, always the newest of each pair.
        std::size_t kept = 0;
        for (std::size_t i = 1; i < points.size(); i += 2)
            points[kept++] = points[i];
        points.resize(kept);
    }
    points.push_back(phase->total);
}

void ProgressSeries::clear() {
    phases_.clear();
    last_ = {};
}

std::vector<PhaseSlice> slicePhases(const ProgressSeries& series, int maxSlicesPerPhase) {
    std::vector<PhaseSlice> slices;
    for (int phase = 0; phase < series.phaseCount(); ++phase)
        for (const auto& slice : sliceProgress(series.phase(phase), maxSlicesPerPhase))
            slices.push_back({phase, slice});
    return slices;
}

std::optional<RateUncertainty> passRateUncertainty(std::span<const PhaseSlice> slices) {
    // The mean of the phases' rates, m = (r1 + ... + rp) / p, has the variance of the sum of
    // theirs over p squared; its degrees of freedom follow Welch and Satterthwaite.
    double rateSum = 0, variance = 0, dfDenominator = 0;
    int phases = 0, samples = 0;
    for (std::size_t start = 0; start < slices.size();) {
        std::size_t end = start;
        std::vector<RateSlice> phase;
        while (end < slices.size() && slices[end].phase == slices[start].phase)
            phase.push_back(slices[end++].slice);
        const auto uncertainty = rateUncertainty(phase);
        if (!uncertainty) return std::nullopt;
        double units = 0, seconds = 0;
        for (const auto& slice : phase) {
            units += slice.units;
            seconds += slice.seconds;
        }
        const double rate = units / seconds;
        const double phaseVariance = std::pow(uncertainty->relativeStandardError * rate, 2);
        rateSum += rate;
        variance += phaseVariance;
        dfDenominator += phaseVariance * phaseVariance / uncertainty->degreesOfFreedom;
        samples += uncertainty->samples;
        ++phases;
        start = end;
    }
    if (phases == 0 || !(rateSum > 0)) return std::nullopt;
    const double df =
        dfDenominator > 0 ? variance * variance / dfDenominator : static_cast<double>(samples - phases);
    return RateUncertainty{samples, std::sqrt(variance) / rateSum, df};
}

} // namespace quarbel
