// SPDX-License-Identifier: Apache-2.0
#include "model/accuracy.h"

#include "model/number_format.h"

#include <algorithm>
#include <vector>

namespace quarbel {

std::string_view confidenceWord(double spreadPercent) {
    if (spreadPercent <= 2.0) return "High";
    if (spreadPercent <= 5.0) return "Good";
    if (spreadPercent <= 10.0) return "Variable";
    return "Unstable";
}

namespace {

// The passes by score, lowest first; equal scores keep their run order.
std::vector<const BenchmarkOutcome*> byScore(std::span<const BenchmarkOutcome> passes) {
    std::vector<const BenchmarkOutcome*> sorted;
    for (const auto& pass : passes)
        sorted.push_back(&pass);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto* a, const auto* b) { return a->score < b->score; });
    return sorted;
}

// The median pass with the durations of all passes summed, and the pass scores in run order.
std::pair<BenchmarkOutcome, std::string> medianWithScores(std::span<const BenchmarkOutcome> passes) {
    std::string scores;
    double totalDuration = 0;
    for (const auto& pass : passes) {
        if (!scores.empty()) scores += ", ";
        scores += scoreText(pass.score);
        totalDuration += pass.duration;
    }
    BenchmarkOutcome result = passes[medianPassIndex(passes)];
    result.duration = totalDuration;
    return {std::move(result), std::move(scores)};
}

} // namespace

std::optional<double> accuracySpreadPercent(std::span<const BenchmarkOutcome> passes) {
    if (passes.empty()) return std::nullopt;
    const auto sorted = byScore(passes);
    const double median = sorted[sorted.size() / 2]->score;
    return median > 0 ? (sorted.back()->score - sorted.front()->score) / median * 100.0 : 0.0;
}

std::size_t medianPassIndex(std::span<const BenchmarkOutcome> passes) {
    if (passes.empty()) return 0;
    return static_cast<std::size_t>(byScore(passes)[passes.size() / 2] - passes.data());
}

BenchmarkOutcome accuracyOutcome(std::span<const BenchmarkOutcome> passes) {
    if (passes.empty()) return accuracyStoppedOutcome();
    const double spread = *accuracySpreadPercent(passes);
    auto [result, scores] = medianWithScores(passes);
    result.detail += " Accuracy Mode: median of " + std::to_string(passes.size()) + " passes; pass scores " +
                     scores + " pts; spread " + format(spread, 1) + "%; confidence " +
                     std::string(confidenceWord(spread)) + ".";
    return result;
}

BenchmarkOutcome untilStableOutcome(std::span<const BenchmarkOutcome> passes,
                                    std::optional<double> ci95Percent, const StabilityTarget& target) {
    if (passes.empty()) return accuracyStoppedOutcome();
    auto [result, scores] = medianWithScores(passes);
    const std::string passWord = passes.size() == 1 ? " pass" : " passes";
    const bool reached = ci95Percent && *ci95Percent <= target.ci95Percent;
    result.detail += " Until stable: median of " + std::to_string(passes.size()) + passWord +
                     "; pass scores " + scores + " pts; 95 % interval " +
                     (ci95Percent ? "\u00b1 " + format(*ci95Percent, 1) + " %" : std::string("unknown")) +
                     (reached ? ", within the target of " + format(target.ci95Percent, 1) + " %."
                              : ", target of " + format(target.ci95Percent, 1) + " % not reached.");
    return result;
}

BenchmarkOutcome accuracyStoppedOutcome() {
    return failedOutcome("Accuracy Mode stopped before all passes completed.");
}

} // namespace quarbel
