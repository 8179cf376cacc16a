// SPDX-License-Identifier: Apache-2.0
// What every benchmark reports, the rows the run controller keeps, and the scores
// derived from them. Plain values: copy them freely and hand them between threads.
#pragma once

#include "model/catalogue.h"
#include "model/gpu_execution.h"

#include <array>
#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quarbel {

enum class OutcomeStatus { ok, skipped, failed };

std::string_view rawValue(OutcomeStatus status);
std::optional<OutcomeStatus> outcomeStatusFromRawValue(std::string_view raw);

enum class TestRunState { idle, running, done, skipped, failed };

std::string_view stateName(TestRunState state); // "idle", "running", ... for reports

struct MeasurementLine {
    std::string label;
    std::string value; // already formatted by the workload
    std::string unit;  // may be empty
    bool operator==(const MeasurementLine&) const = default;
};

// The value followed by one blank and the unit trimmed of whitespace, or the value alone.
std::string cardValue(const MeasurementLine& line);

struct BenchmarkOutcome {
    OutcomeStatus status = OutcomeStatus::skipped;
    double score = 0; // Quarbel points; only read when status is ok
    MeasurementLine primary;
    std::optional<MeasurementLine> secondary;
    double duration = 0; // seconds of measured wall time
    std::string detail;
    std::optional<GpuExecution> gpu = std::nullopt; // how a GPU benchmark used its device
    bool operator==(const BenchmarkOutcome&) const = default;
};

// A workload that measured to its end: its score, two lines and the seconds they cover.
BenchmarkOutcome completedOutcome(double score, MeasurementLine primary, MeasurementLine secondary,
                                  double seconds, std::string detail);

// The "Status" outcomes shared by every workload: score 0, no secondary, duration 0.
BenchmarkOutcome skippedOutcome(std::string detail);
BenchmarkOutcome failedOutcome(std::string detail);

TestRunState rowStateFor(OutcomeStatus status);

struct BenchmarkRowState {
    TestRunState state = TestRunState::idle;
    std::optional<BenchmarkOutcome> outcome;
    bool operator==(const BenchmarkRowState&) const = default;
};

// One row per benchmark, always all thirteen.
class BenchmarkRows {
  public:
    BenchmarkRowState& operator[](BenchmarkID id) { return rows_[indexOf(id)]; }
    const BenchmarkRowState& operator[](BenchmarkID id) const { return rows_[indexOf(id)]; }
    bool operator==(const BenchmarkRows&) const = default;

  private:
    std::array<BenchmarkRowState, kBenchmarkCount> rows_{};
};

using SystemTimePoint = std::chrono::system_clock::time_point;

struct RunSummary {
    std::string title;
    int completed = 0;
    int skipped = 0;
    int failed = 0;
    int total = 0;
    double score = 0;              // run score, Quarbel points
    double duration = 0;           // seconds, never negative
    std::optional<double> peakCPU; // degrees Celsius
    std::optional<double> peakGPU; // degrees Celsius
    SystemTimePoint finishedAt{};
    bool operator==(const RunSummary&) const = default;
};

// "%.0f" from 10000 up, "%.1f" from 1000 up, else "%.2f"; decided on the unrounded value.
std::string scoreText(double score);

// Rows done with a positive score: their geometric mean (scores below 1 lifted to 1)
// times their count over 13.
double globalScore(const BenchmarkRows& rows);
// The same mean over the benchmarks of one run, times their count over the run's size.
double runScore(const BenchmarkRows& rows, std::span<const BenchmarkID> ids);
// Rows in state done, over all thirteen.
int completedCount(const BenchmarkRows& rows);

struct RunSummaryInput {
    std::string title;
    std::optional<SystemTimePoint> startedAt; // a missing start is taken as now
    std::optional<double> peakCPU;
    std::optional<double> peakGPU;
    SystemTimePoint now;
};

RunSummary makeRunSummary(const BenchmarkRows& rows, std::span<const BenchmarkID> ids,
                          const RunSummaryInput& input);

} // namespace quarbel
