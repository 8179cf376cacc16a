// SPDX-License-Identifier: Apache-2.0
#include "model/accuracy.h"

#include <gtest/gtest.h>

#include <vector>

using namespace quarbel;

namespace {

BenchmarkOutcome pass(double score, double duration, std::string detail = "Work done.") {
    return {OutcomeStatus::ok, score,    {"Rate", std::to_string(score), "u"},
            std::nullopt,      duration, std::move(detail)};
}

} // namespace

TEST(Accuracy, TheMedianPassSpeaksForAllAndTheSpreadSaysHowFarTheyAgree) {
    const BenchmarkOutcome skipped = skippedOutcome("No device.");
    const struct {
        const char* name;
        std::vector<BenchmarkOutcome> passes;
        double score;
        std::string detail;
    } cases[] = {// clang-format off
        {"the median of three, pass order kept in the detail", {pass(1010, 1, "c"), pass(980, 2, "a"), pass(1000, 3, "b")},
         1000, "b Accuracy Mode: median of 3 passes; pass scores 1010.0, 980.00, 1000.0 pts; spread 3.0%; confidence Good."},
        {"an even count takes the upper middle", {pass(200, 1, "upper"), pass(100, 1, "lower")},
         200, "upper Accuracy Mode: median of 2 passes; pass scores 200.00, 100.00 pts; spread 50.0%; confidence Unstable."},
        {"equal scores keep pass order", {pass(50, 1, "first"), pass(50, 1, "second"), pass(50, 1, "third")},
         50, "second Accuracy Mode: median of 3 passes; pass scores 50.00, 50.00, 50.00 pts; spread 0.0%; confidence High."},
        {"all skipped: no spread, the median's status", {skipped, skipped, skipped},
         0, "No device. Accuracy Mode: median of 3 passes; pass scores 0.00, 0.00, 0.00 pts; spread 0.0%; confidence High."},
        {"a failed pass pulls the median down", {pass(1000, 1), failedOutcome("Disk full."), pass(1100, 1)}, 1000,
         "Work done. Accuracy Mode: median of 3 passes; pass scores 1000.0, 0.00, 1100.0 pts; spread 110.0%; confidence Unstable."}};
    // clang-format on
    for (const auto& c : cases) {
        const auto result = accuracyOutcome(c.passes);
        EXPECT_EQ(result.score, c.score) << c.name;
        EXPECT_EQ(result.status, c.passes.front().status) << c.name;
        EXPECT_EQ(result.detail, c.detail) << c.name;
    }
    const auto& odd = cases[0].passes;
    const auto result = accuracyOutcome(odd);
    EXPECT_EQ(result.primary, odd[2].primary);
    EXPECT_EQ(result.duration, 6) << "every pass's time";
    EXPECT_DOUBLE_EQ(accuracySpreadPercent(odd).value_or(-1), 3.0) << "the number behind the detail's text";
    EXPECT_FALSE(accuracySpreadPercent({}).has_value());
}

TEST(Accuracy, ConfidenceThresholdsAreInclusive) {
    EXPECT_EQ(confidenceWord(2.0), "High");
    EXPECT_EQ(confidenceWord(2.0001), "Good");
    EXPECT_EQ(confidenceWord(5.0), "Good");
    EXPECT_EQ(confidenceWord(10.0), "Variable");
    EXPECT_EQ(confidenceWord(10.01), "Unstable");
    const auto stopped = accuracyStoppedOutcome();
    EXPECT_EQ(stopped.status, OutcomeStatus::failed);
    EXPECT_EQ(stopped.detail, "Accuracy Mode stopped before all passes completed.");
}
