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

TEST(Accuracy, MedianOfThreeKeepsPassOrderInTheDetail) {
    const std::vector<BenchmarkOutcome> passes{pass(1010, 1, "c"), pass(980, 2, "a"), pass(1000, 3, "b")};
    const auto result = accuracyOutcome(passes);
    EXPECT_EQ(result.score, 1000);
    EXPECT_EQ(result.primary, passes[2].primary);
    EXPECT_EQ(result.duration, 6);
    EXPECT_EQ(result.detail, "b Accuracy Mode: median of 3 passes; pass scores 1010.0, 980.00, 1000.0 pts; "
                             "spread 3.0%; confidence Good.");
    EXPECT_DOUBLE_EQ(accuracySpreadPercent(passes).value_or(-1), 3.0)
        << "the number behind the detail's text";
    EXPECT_FALSE(accuracySpreadPercent({}).has_value());
}

TEST(Accuracy, EvenCountTakesTheUpperMiddle) {
    const std::vector<BenchmarkOutcome> passes{pass(200, 1, "upper"), pass(100, 1, "lower")};
    const auto result = accuracyOutcome(passes);
    EXPECT_EQ(result.score, 200);
    EXPECT_NE(result.detail.find("upper Accuracy Mode: median of 2 passes; pass scores 200.00, 100.00 pts; "
                                 "spread 50.0%; confidence Unstable."),
              std::string::npos)
        << result.detail;
}

TEST(Accuracy, EqualScoresKeepPassOrderInTheStableSort) {
    const std::vector<BenchmarkOutcome> passes{pass(50, 1, "first"), pass(50, 1, "second"),
                                               pass(50, 1, "third")};
    const auto result = accuracyOutcome(passes);
    EXPECT_EQ(result.detail.substr(0, 6), "second");
    EXPECT_NE(result.detail.find("spread 0.0%; confidence High."), std::string::npos);
}

TEST(Accuracy, AllSkippedHasNoSpreadAndKeepsTheMedianStatus) {
    const std::vector<BenchmarkOutcome> passes{skippedOutcome("No device."), skippedOutcome("No device."),
                                               skippedOutcome("No device.")};
    const auto result = accuracyOutcome(passes);
    EXPECT_EQ(result.status, OutcomeStatus::skipped);
    EXPECT_EQ(result.detail,
              "No device. Accuracy Mode: median of 3 passes; pass scores 0.00, 0.00, 0.00 pts; "
              "spread 0.0%; confidence High.");
}

TEST(Accuracy, OneFailedPassPullsTheMedianDown) {
    std::vector<BenchmarkOutcome> passes{pass(1000, 1), failedOutcome("Disk full."), pass(1100, 1)};
    const auto result = accuracyOutcome(passes);
    EXPECT_EQ(result.score, 1000);
    EXPECT_NE(result.detail.find("spread 110.0%"), std::string::npos);
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
