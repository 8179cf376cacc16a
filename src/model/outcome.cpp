// SPDX-License-Identifier: Apache-2.0
#include "model/outcome.h"

#include "model/number_format.h"

#include <cmath>
#include <vector>

namespace quarbel {
namespace {

constexpr std::array<std::string_view, 3> kStatusRaw = {"ok", "skipped", "failed"};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// Geometric mean of the positive scores, each lifted to at least 1, scaled by n / divisor.
double scaledGeometricMean(const std::vector<double>& scores, double divisor) {
    if (scores.empty()) return 0;
    double logSum = 0;
    for (double s : scores)
        logSum += std::log(s < 1 ? 1.0 : s);
    const double n = static_cast<double>(scores.size());
    return std::exp(logSum / n) * n / divisor;
}

bool countsTowardsScore(const BenchmarkRowState& row) {
    return row.state == TestRunState::done && row.outcome && row.outcome->score > 0;
}

} // namespace

std::string_view rawValue(OutcomeStatus status) { return kStatusRaw[static_cast<std::size_t>(status)]; }

std::optional<OutcomeStatus> outcomeStatusFromRawValue(std::string_view raw) {
    for (std::size_t i = 0; i < kStatusRaw.size(); ++i) {
        if (kStatusRaw[i] == raw) return static_cast<OutcomeStatus>(i);
    }
    return std::nullopt;
}

std::string_view stateName(TestRunState state) {
    static constexpr std::array<std::string_view, 5> names = {"idle", "running", "done", "skipped", "failed"};
    return names[static_cast<std::size_t>(state)];
}

std::string cardValue(const MeasurementLine& line) {
    std::string_view unit = line.unit;
    while (!unit.empty() && isBlank(unit.front()))
        unit.remove_prefix(1);
    while (!unit.empty() && isBlank(unit.back()))
        unit.remove_suffix(1);
    if (unit.empty()) return line.value;
    return line.value + " " + std::string(unit);
}

BenchmarkOutcome completedOutcome(double score, MeasurementLine primary, MeasurementLine secondary,
                                  double seconds, std::string detail) {
    return {OutcomeStatus::ok, score, std::move(primary), std::move(secondary), seconds, std::move(detail)};
}

BenchmarkOutcome skippedOutcome(std::string detail) {
    return {OutcomeStatus::skipped, 0, {"Status", "Skipped", ""}, std::nullopt, 0, std::move(detail)};
}

BenchmarkOutcome failedOutcome(std::string detail) {
    return {OutcomeStatus::failed, 0, {"Status", "Failed", ""}, std::nullopt, 0, std::move(detail)};
}

TestRunState rowStateFor(OutcomeStatus status) {
    switch (status) {
    case OutcomeStatus::ok: return TestRunState::done;
    case OutcomeStatus::skipped: return TestRunState::skipped;
    case OutcomeStatus::failed: return TestRunState::failed;
    }
    return TestRunState::failed;
}

std::string scoreText(double score) {
    if (score >= 10000) return format(score, 0);
    if (score >= 1000) return format(score, 1);
    return format(score, 2);
}

double globalScore(const BenchmarkRows& rows) {
    std::vector<double> scores;
    for (BenchmarkID id : kAllBenchmarks) {
        if (countsTowardsScore(rows[id])) scores.push_back(rows[id].outcome->score);
    }
    return scaledGeometricMean(scores, static_cast<double>(kBenchmarkCount));
}

double runScore(const BenchmarkRows& rows, std::span<const BenchmarkID> ids) {
    std::vector<double> scores;
    for (BenchmarkID id : ids) {
        if (countsTowardsScore(rows[id])) scores.push_back(rows[id].outcome->score);
    }
    const double total = ids.empty() ? 1.0 : static_cast<double>(ids.size());
    return scaledGeometricMean(scores, total);
}

int completedCount(const BenchmarkRows& rows) {
    int count = 0;
    for (BenchmarkID id : kAllBenchmarks)
        count += rows[id].state == TestRunState::done ? 1 : 0;
    return count;
}

RunSummary makeRunSummary(const BenchmarkRows& rows, std::span<const BenchmarkID> ids,
                          const RunSummaryInput& input) {
    RunSummary summary;
    summary.title = input.title;
    summary.total = static_cast<int>(ids.size());
    for (BenchmarkID id : ids) {
        switch (rows[id].state) {
        case TestRunState::done: ++summary.completed; break;
        case TestRunState::skipped: ++summary.skipped; break;
        case TestRunState::failed: ++summary.failed; break;
        default: break;
        }
    }
    summary.score = runScore(rows, ids);
    const auto start = input.startedAt.value_or(input.now);
    const double seconds = std::chrono::duration<double>(input.now - start).count();
    summary.duration = (std::isfinite(seconds) && seconds > 0) ? seconds : 0;
    summary.peakCPU = input.peakCPU;
    summary.peakGPU = input.peakGPU;
    summary.finishedAt = input.now;
    return summary;
}

} // namespace quarbel
