// SPDX-License-Identifier: Apache-2.0
#include "model/noise_floor.h"

#include <cmath>

namespace quarbel {
namespace {

// The chi-square distribution's 20 % quantile for `k` degrees of freedom, by Wilson and
// Hilferty's cube-root normal approximation (within 1 % of the exact value from k = 3 on).
double chiSquareLowerQuantile20(double k) {
    constexpr double kNormal20 = -0.8416212335729143;
    const double a = 2.0 / (9.0 * k);
    const double root = 1.0 - a + kNormal20 * std::sqrt(a);
    return k * root * root * root;
}

} // namespace

std::optional<double> learnedFloorPercent(std::span<const double> scores) {
    if (scores.size() < static_cast<std::size_t>(kRunsToLearnFloor)) return std::nullopt;
    for (double score : scores)
        if (!(score > 0)) return std::nullopt;
    // Successive differences (von Neumann): a machine that changed once, a regression kept in
    // the history say, moves one difference, not the whole spread, so the floor stays that of
    // the noise between runs and does not grow to hide the next change.
    double squares = 0;
    for (std::size_t i = 1; i < scores.size(); ++i) {
        const double step = std::log(scores[i]) - std::log(scores[i - 1]);
        squares += step * step;
    }
    const double n = static_cast<double>(scores.size());
    const double variance = squares / (2.0 * (n - 1));
    const double upper = variance * (n - 1) / chiSquareLowerQuantile20(n - 1);
    return std::sqrt(upper) * 100.0;
}

void NoiseFloors::learn(BenchmarkID id, RunLength length, NoiseFloor floor) {
    learned_[{id, length}] = floor;
}

NoiseFloor NoiseFloors::floorFor(BenchmarkID id, RunLength length) const {
    if (const auto found = learned_.find({id, length}); found != learned_.end()) return found->second;
    return {runToRunNoisePercent(id, length), 0};
}

} // namespace quarbel
