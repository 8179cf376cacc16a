// SPDX-License-Identifier: Apache-2.0
// `quarbel run ... --baseline REPORT`: the run compared with a baseline report as it ends,
// and with --fail-on-slower a CI gate: the benchmarks judged slower or not judged are run
// again up to --confirm times, and only what stays slower (or still cannot be judged) fails.
// Also the exit status and JUnit file of `quarbel compare --fail-on-slower`.
#pragma once

#include "results/report_file.h"
#include "results/run_comparison.h"
#include "session/run_session.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quarbel::cli {

struct GateOptions {
    SavedRun baseline;
    std::optional<double> allowedSlowdownPercent; // --fail-on-slower; none: compare only
    int confirmations = 0;                        // --confirm N: reruns at most
    std::optional<ReportTarget> junit;            // --junit FILE
};

// What `run` was given on its command line for the gate.
struct GateArguments {
    std::optional<std::string> baseline;     // --baseline REPORT
    std::optional<std::string> failOnSlower; // --fail-on-slower [PERCENT]: empty for the default
    std::optional<std::string> confirm;      // --confirm N
    std::optional<std::string> junit;        // --junit FILE
};

// The gate's options, none without --baseline, or the one-line error for arguments that do not
// fit together or a baseline that cannot be read (checked before anything runs).
std::variant<std::optional<GateOptions>, std::string> gateOptionsFrom(const GateArguments& arguments,
                                                                      const std::string& historyDirectory);

// The --junit FILE target: a regular file replaced atomically; only with --fail-on-slower.
std::variant<ReportTarget, std::string> junitTarget(bool failOnSlowerGiven, const std::string& path);

// Runs `options` through `runOnce` (which returns the run's exit status), compares the report
// with the baseline and prints the comparison, then reruns and judges as described above.
// Reruns keep their reports in the history but write no --json, --cards or --metrics: those
// describe the first run. Returns the gate's status (3 slower, 4 not judged) where the run
// itself ended normally, else the run's own.
int runWithBaseline(session::RunOptions options, const GateOptions& gate,
                    const std::function<int(session::RunOptions)>& runOnce);

// `compare --fail-on-slower`: 3 when a later run is slower than allowed, else 4 when a
// benchmark could not be judged, else 0, with the reasons on standard error; writes the JUnit
// file (one test suite per later run) when `junit` is set, and answers 1 when it cannot.
int compareGateExit(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons,
                    double allowedSlowdownPercent, const std::optional<ReportTarget>& junit);

} // namespace quarbel::cli
