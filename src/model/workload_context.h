// SPDX-License-Identifier: Apache-2.0
// What the run controller hands every workload: a cancellation token, an optional
// time budget and a progress sink. Workloads run on a background thread, check the
// token between units of work, and never throw.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarbel {

// Set once by the controller (any thread); read by the workload at its check points.
class CancellationToken {
  public:
    void cancel() noexcept { cancelled_.store(true, std::memory_order_relaxed); }
    bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_relaxed); }

  private:
    std::atomic<bool> cancelled_{false};
};

// What a unit of progress is, and how a rate of such units reads in the unit of the
// result's own primary measurement, so that a live rate and the final result agree.
struct ProgressUnit {
    std::string_view name;           // plural ("rounds", "bytes"); a literal
    std::string_view rateUnit;       // the result's rate unit ("GB/s", "FPS"); a literal; empty: name + "/s"
    double ratePerUnitPerSecond = 1; // one unit per second, expressed in rateUnit

    constexpr ProgressUnit() = default;
    constexpr ProgressUnit(const char* unitName) : name(unitName) {}
    constexpr ProgressUnit(std::string_view unitName, std::string_view resultRateUnit = {}, double scale = 1)
        : name(unitName), rateUnit(resultRateUnit), ratePerUnitPerSecond(scale) {}
    bool operator==(const ProgressUnit&) const = default;
};

struct ProgressReport {
    std::int64_t unitsDone = 0; // work units finished so far (batches, bytes, frames, ...)
    double elapsedSeconds = 0;  // measured time of the work so far
    ProgressUnit unit;          // what a unit is and how its rate reads
    // Workloads whose score averages the rates of several phases (the storage tests' writes
    // and reads) number them from 0. The counts and times above run on across phases; the
    // work and time since the previous report belong to the phase of this one.
    int phase = 0;
};

// Receives progress from the workload's thread. Implementations must be cheap and
// thread-safe: workloads call it after every unit of work.
class ProgressSink {
  public:
    virtual ~ProgressSink() = default;
    virtual void report(const ProgressReport& progress) noexcept = 0;
};

struct WorkloadContext {
    const CancellationToken* cancellation = nullptr;
    ProgressSink* progress = nullptr;
    // An explicit budget replaces the workload's default one (tests, smoke runs).
    std::optional<double> budgetSeconds;
    // Multiplies the default budget when no explicit one is given (--quick uses 0.1).
    double budgetScale = 1.0;

    bool cancelled() const noexcept { return cancellation != nullptr && cancellation->isCancelled(); }

    // The time budget to use, given the workload's own default.
    double budget(double defaultSeconds) const noexcept {
        return budgetSeconds ? *budgetSeconds : defaultSeconds * budgetScale;
    }

    void reportProgress(std::int64_t unitsDone, double elapsedSeconds, const ProgressUnit& unit,
                        int phase = 0) const noexcept {
        if (progress != nullptr) progress->report({unitsDone, elapsedSeconds, unit, phase});
    }
};

struct LiveRate {
    double value = 0;
    std::string unit; // "GB/s", "units/s"
};

// The rate of `unitsDone` over `elapsedSeconds` in the unit the result will use; none before
// any work is done or timed.
std::optional<LiveRate> liveRate(std::int64_t unitsDone, double elapsedSeconds, const ProgressUnit& unit);

// Seconds on the monotonic clock, for measuring workloads.
double monotonicSeconds() noexcept;

} // namespace quarbel
