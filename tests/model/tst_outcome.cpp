// SPDX-License-Identifier: Apache-2.0
#include "model/outcome.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

using namespace quarbel;

namespace {

BenchmarkOutcome okOutcome(double score) {
    return {OutcomeStatus::ok, score, {"Rate", "1.00", "GB/s"}, std::nullopt, 1.0, "done"};
}

const std::vector<BenchmarkID> kFour{BenchmarkID::cpuInteger, BenchmarkID::cpuFloating,
                                     BenchmarkID::cpuCrypto, BenchmarkID::memoryStream};

BenchmarkRows rowsWith(std::initializer_list<std::pair<BenchmarkID, BenchmarkRowState>> entries) {
    BenchmarkRows rows;
    for (const auto& [id, row] : entries)
        rows[id] = row;
    return rows;
}

} // namespace

TEST(ScoreText, DecimalsFallAsTheScoreGrowsDecidedOnTheUnroundedValue) {
    EXPECT_EQ(scoreText(12345.6), "12346");
    EXPECT_EQ(scoreText(2345.67), "2345.7");
    EXPECT_EQ(scoreText(234.567), "234.57");
    EXPECT_EQ(scoreText(999.999), "1000.00");
    EXPECT_EQ(scoreText(1000), "1000.0");
    EXPECT_EQ(scoreText(9999.99), "10000.0");
    EXPECT_EQ(scoreText(10000), "10000");
    EXPECT_EQ(scoreText(-3.5), "-3.50");
}

TEST(CardValue, TrimsTheUnitOnly) {
    EXPECT_EQ(cardValue({"Read", "12.5", "  GB/s\n"}), "12.5 GB/s");
    EXPECT_EQ(cardValue({"Read", "12.5", " "}), "12.5");
    EXPECT_EQ(cardValue({"Read", " 7 ", ""}), " 7 ");
}

TEST(Scores, OneBenchmarkRunScoresItselfButAThirteenthGloballyAndNothingScoresZero) {
    const auto rows = rowsWith({{BenchmarkID::cineTile, {TestRunState::done, okOutcome(500)}}});
    const std::vector<BenchmarkID> ids{BenchmarkID::cineTile};
    EXPECT_DOUBLE_EQ(runScore(rows, ids), 500);
    EXPECT_EQ(scoreText(globalScore(rows)), "38.46");
    EXPECT_EQ(globalScore({}), 0);
    EXPECT_EQ(completedCount({}), 0);
    EXPECT_EQ(runScore({}, ids), 0);
    EXPECT_EQ(runScore(rows, {}), 0);
}

TEST(Scores, GeometricMeanLiftsSmallScoresAndSkipsNonPositiveOnes) {
    auto rows = rowsWith({{BenchmarkID::cpuInteger, {TestRunState::done, okOutcome(100)}},
                          {BenchmarkID::cpuFloating, {TestRunState::done, okOutcome(400)}}});
    EXPECT_NEAR(globalScore(rows), 200.0 * 2 / 13, 1e-9);
    EXPECT_EQ(scoreText(globalScore(rows)), "30.77");

    rows[BenchmarkID::memoryStream] = {TestRunState::done, okOutcome(0)};
    rows[BenchmarkID::cineTile] = {TestRunState::skipped, okOutcome(900)};
    rows[BenchmarkID::ssdRandom] = {TestRunState::failed, okOutcome(900)};
    EXPECT_NEAR(globalScore(rows), 200.0 * 2 / 13, 1e-9) << "zero, skipped and failed rows must not count";

    rows[BenchmarkID::cpuCrypto] = {TestRunState::done, okOutcome(0.5)};
    EXPECT_NEAR(globalScore(rows), std::cbrt(100.0 * 400.0 * 1.0) * 3 / 13, 1e-9);
    EXPECT_EQ(completedCount(rows), 4);
    // A run's own score divides by the run's own size.
    EXPECT_NEAR(runScore(rows, kFour), std::cbrt(100.0 * 400.0 * 1.0) * 3 / 4, 1e-9);
}

TEST(RunSummary, StoppedBenchmarkCountsInTotalOnly) {
    const auto rows = rowsWith({{BenchmarkID::cpuInteger, {TestRunState::done, okOutcome(100)}},
                                {BenchmarkID::cpuFloating, {TestRunState::skipped, skippedOutcome("x")}},
                                {BenchmarkID::cpuCrypto, {TestRunState::failed, failedOutcome("y")}},
                                {BenchmarkID::memoryStream, {TestRunState::idle, std::nullopt}}});
    const std::vector<BenchmarkID>& ids = kFour;
    const auto now = std::chrono::system_clock::now();
    const auto summary = makeRunSummary(
        rows, ids, {"Selected Test Summary", now - std::chrono::seconds(3), 61.0, std::nullopt, now});
    EXPECT_EQ(std::tuple(summary.total, summary.completed, summary.skipped, summary.failed),
              std::tuple(4, 1, 1, 1));
    EXPECT_NEAR(summary.duration, 3.0, 1e-6);
    EXPECT_EQ(summary.peakCPU, 61.0);
    EXPECT_FALSE(summary.peakGPU);
    EXPECT_EQ(summary.finishedAt, now);

    EXPECT_EQ(makeRunSummary(rows, ids, {"t", now + std::chrono::seconds(5), {}, {}, now}).duration, 0)
        << "a negative duration is replaced by 0";
    EXPECT_EQ(makeRunSummary(rows, ids, {"t", std::nullopt, {}, {}, now}).duration, 0);
}

TEST(OutcomeStatus, RawValuesRoundTripAndRowStatesFollow) {
    for (auto s : {OutcomeStatus::ok, OutcomeStatus::skipped, OutcomeStatus::failed})
        EXPECT_EQ(outcomeStatusFromRawValue(rawValue(s)), s);
    EXPECT_FALSE(outcomeStatusFromRawValue("OK"));
    EXPECT_EQ(std::tuple(rowStateFor(OutcomeStatus::ok), rowStateFor(OutcomeStatus::skipped),
                         rowStateFor(OutcomeStatus::failed)),
              std::tuple(TestRunState::done, TestRunState::skipped, TestRunState::failed));
    const auto skipped = skippedOutcome("No device.");
    EXPECT_EQ(skipped.primary, (MeasurementLine{"Status", "Skipped", ""}));
    EXPECT_FALSE(skipped.secondary);
    EXPECT_EQ(skipped.duration, 0);
}
