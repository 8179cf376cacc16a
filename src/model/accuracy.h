// SPDX-License-Identifier: Apache-2.0
// Accuracy Mode: several passes of one benchmark combined into the median pass,
// with the pass scores, their spread and a confidence word in the detail.
#pragma once

#include "model/outcome.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace quarbel {

inline constexpr int kAccuracyPasses = 3;

// "High" up to 2 %, "Good" up to 5 %, "Variable" up to 10 %, "Unstable" above.
std::string_view confidenceWord(double spreadPercent);

// (highest - lowest) / median pass score, in percent; 0 when the median scored nothing.
// Nothing for an empty list.
std::optional<double> accuracySpreadPercent(std::span<const BenchmarkOutcome> passes);

// Combines a non-empty list of pass outcomes (in run order) into the median pass
// (upper middle for an even count) with the durations summed.
BenchmarkOutcome accuracyOutcome(std::span<const BenchmarkOutcome> passes);

// What a run stopped between passes reports.
BenchmarkOutcome accuracyStoppedOutcome();

// Reruns of one benchmark until its score's 95 % interval is at most `ci95Percent` of the
// score, or `maxPasses` passes ran: an Accuracy Mode that adapts and never runs forever.
struct StabilityTarget {
    double ci95Percent = 2.0;
    int maxPasses = 5;
    bool operator==(const StabilityTarget&) const = default;
};

// The position in run order of the pass that accuracyOutcome keeps; 0 for an empty list.
std::size_t medianPassIndex(std::span<const BenchmarkOutcome> passes);

// The passes combined as accuracyOutcome does, the detail saying how many passes it took and
// which interval they reached ("± x %", absent when none could be worked out).
BenchmarkOutcome untilStableOutcome(std::span<const BenchmarkOutcome> passes,
                                    std::optional<double> ci95Percent, const StabilityTarget& target);

} // namespace quarbel
