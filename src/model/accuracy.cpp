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

} // namespace

std::optional<double> accuracySpreadPercent(std::span<const BenchmarkOutcome> passes) {
    if (passes.empty()) return std::nullopt;
    const auto sorted = byScore(passes);
    const double median = sorted[sorted.size() / 2]->score;
    return median > 0 ? (sorted.back()->score - sorted.front()->score) / median * 100.0 : 0.0;
}

BenchmarkOutcome accuracyOutcome(std::span<const BenchmarkOutcome> passes) {
    if (passes.empty()) return accuracyStoppedOutcome();
    const BenchmarkOutcome& median = *byScore(passes)[passes.size() / 2];
    const double spread = *accuracySpreadPercent(passes);

    std::string scores;
    double totalDuration = 0;
    for (const auto& pass : passes) {
        if (!scores.empty()) scores += ", ";
        scores += scoreText(pass.score);
        totalDuration += pass.duration;
    }

    BenchmarkOutcome result = median;
    result.duration = totalDuration;
    result.detail = median.detail + " Accuracy Mode: median of " + std::to_string(passes.size()) +
                    " passes; pass scores " + scores + " pts; spread " + format(spread, 1) +
                    "%; confidence " + std::string(confidenceWord(spread)) + ".";
    return result;
}

BenchmarkOutcome accuracyStoppedOutcome() {
    return failedOutcome("Accuracy Mode stopped before all passes completed.");
}

} // namespace quarbel
