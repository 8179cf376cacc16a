// SPDX-License-Identifier: Apache-2.0
// The state of one run while it lasts: what it runs and how (fixed as it starts), which
// benchmark it has reached, and what that benchmark's passes have given so far. From it follow
// the benchmark's combined outcome, its end state, and the lines the log and the summary
// show. Plain C++; the run controller drives it.
#pragma once

#include "run/benchmark_store.h"
#include "run/pass_statistics.h"

#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct RunState {
    RunState(std::vector<BenchmarkID> runIDs, bool follows, bool accuracy, double scale,
             std::optional<StabilityTarget> untilStableTarget);

    std::vector<BenchmarkID> ids;
    bool followsActiveTest = false;
    bool accuracyMode = false;
    double budgetScale = 1.0;                   // of every workload's budget, fixed for the whole run
    std::optional<StabilityTarget> untilStable; // rerun each benchmark until its interval is narrow
    int passes = 1;                             // planned (at most, until stable) per benchmark
    bool cancelled = false;
    std::size_t index = 0;                // the benchmark now running
    std::optional<CooldownWait> cooldown; // how to wait before each benchmark but the first
    std::size_t cooledFor = 0;            // the benchmark the last wait came before
    // What a stop puts back: the running benchmark's row as the run reached it (an earlier
    // run's result, say), and the summary shown before the run, while none of it has ended.
    std::optional<BenchmarkRowState> rowBefore;
    std::optional<RunSummary> summaryBefore;

    // The running benchmark's record.
    std::vector<BenchmarkOutcome> passOutcomes; // of several passes, so far
    std::optional<double> stability;            // the lowest pass stability
    std::optional<double> spread;               // Accuracy Mode's spread, once all passes ended
    // The slices of each pass in run order (empty for a pass that reported no progress), the
    // sensors of each, and what the combined result's interval became.
    std::vector<std::vector<PhaseSlice>> passSlices;
    std::vector<TracedPass> passTraces;
    PassUncertainty combined;
    std::optional<CpuTickSample> startTicks; // as the benchmark started
    std::optional<double> startCelsius;      // the CPU as the benchmark started

    BenchmarkID running() const { return ids[index]; }
    bool quick() const { return budgetScale < 1.0; }
    // Whether each benchmark runs pass after pass (Accuracy Mode, or until stable).
    bool severalPasses() const { return passes > 1 || untilStable.has_value(); }

    // "Running full suite (Accuracy Mode)", "Running Memory Stream (Standard Mode, quick: …)".
    std::string startLine() const;
    // A benchmark starts: the previous one's record goes.
    void beginBenchmark(std::optional<CpuTickSample> ticks, std::optional<double> celsius);
    // "CPU Tile Render: Accuracy Mode 3x median", or how it is rerun until stable.
    std::string passesLine() const;
    // The next pass: its log line ("CPU Tile Render: pass 2/3") and the window's "pass 2 of 3".
    std::string passLine() const;
    std::string passText() const;
    // A pass of the running benchmark ended, with its slices and stability (if measured).
    void passEnded(std::vector<PhaseSlice> slices, std::optional<double> passStability);
    // Works the interval out again from the passes so far.
    void combine(const NoiseFloors& floors);
    // Once the passes are done (or the run stopped): the benchmark's outcome; none while more
    // passes are due.
    std::optional<BenchmarkOutcome> passesOutcome();
    // The running benchmark ended with `status`: its end state, the kept pass's trace moved in.
    BenchmarkEndState endState(OutcomeStatus status, const TemperatureSnapshot& temperature,
                               const std::optional<CpuTickSample>& endTicks);
    // "Full Suite Accuracy Summary", "Selected Test Summary", …
    std::string summaryTitle() const;
};

// "SSD Random: failed", "CPU Tile Render: 2345.7 pts, 12.50 GB/s", …
std::string outcomeLine(BenchmarkID id, const BenchmarkOutcome& outcome);

} // namespace quarbel
