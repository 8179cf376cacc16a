// SPDX-License-Identifier: Apache-2.0
// `quarbel history` and `quarbel compare`: past runs listed, and two runs compared
// benchmark by benchmark with a verdict that knows the benchmarks' noise.
#pragma once

#include "model/comparison.h"
#include "results/run_history.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quarbel {

// A run named on the command line: "1" is the newest run of the history, "2" the one
// before, ...; anything else is a report file's path. Returns the one-line problem.
std::variant<SavedRun, std::string> resolveSavedRun(const std::string& argument,
                                                    const HistoryListing& history);

// A benchmark's points per joule in the two runs, for a benchmark whose energy at least one of
// them measured. Judged like the scores, by statistics only: each side's interval combines the
// score's relative standard error with that of the mean power over the trace's samples.
struct EfficiencyComparison {
    std::optional<PowerDomain> domain; // the one both runs measured
    std::optional<double> before;      // points per joule
    std::optional<double> after;
    std::optional<RateUncertainty> uncertaintyBefore;
    std::optional<RateUncertainty> uncertaintyAfter;
    std::optional<ComparedScore> compared; // absent when not judged
    // Why not, e.g. "no power sensor in run B" or "not enough power samples in run A".
    std::string notJudged;
};

// "more efficient", "less efficient", "within noise", "inconclusive"
std::string_view efficiencyVerdictText(Verdict verdict);

struct ComparisonRow {
    std::string title;
    double before = 0; // 0 when the benchmark did not complete in that run
    double after = 0;
    ComparedScore compared;
    std::optional<RateUncertainty> uncertaintyBefore; // each score's interval, as its report gave it
    std::optional<RateUncertainty> uncertaintyAfter;
    // Why no verdict could be given, e.g. "failed in B" or "noisy machine in B (other work took
    // 43 % of the CPU)"; empty when the pair was judged. The verdict is then inconclusive.
    std::string notJudged;
    bool ranInNeither = false;                      // skipped or failed in both runs
    std::optional<EfficiencyComparison> efficiency; // absent when neither run measured energy
};

struct RunComparison {
    std::vector<ComparisonRow> rows;   // benchmarks present in both runs, in the first run's order
    std::vector<std::string> warnings; // reasons the two runs are not like for like
    // How the machines' set-ups differ (kernel, drivers, governor, ...), where both reports say.
    std::vector<ManifestDifference> setupDifferences;
};

RunComparison compareRuns(const SavedRun& before, const SavedRun& after);

// The benchmarks judged slower whose slowdown is larger than `percent` (for
// `compare --fail-on-slower`), in the comparison's order.
std::vector<std::string> slowerThan(const RunComparison& comparison, double percent);

struct UnjudgedBenchmark {
    std::string title;
    std::string why;
    bool operator==(const UnjudgedBenchmark&) const = default;
};

// The benchmarks that ran in at least one of the runs but could not be judged, with why, in
// the comparison's order. One that ran in neither (no device for it in either) is left out:
// there was nothing to compare and nothing got worse.
std::vector<UnjudgedBenchmark> couldNotJudge(const RunComparison& comparison);

// "CPU Single-Core (failed in B), Memory Stream (noisy machine in A)"
std::string unjudgedText(const std::vector<UnjudgedBenchmark>& benchmarks);

// The history as an aligned table, numbered for `compare`.
std::string historyText(const HistoryListing& history);

std::string comparisonText(const SavedRun& before, const SavedRun& after, const RunComparison& comparison);

// Three or more runs side by side: one row per benchmark (in the order they first appear),
// one column per run, each later run's cell its score with its ratio to the first run and
// the verdict of the pair. `comparisons[i]` is runs[i + 1] compared with runs[0].
std::string manyRunsText(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons);
std::string manyRunsJson(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons);
std::string comparisonJson(const SavedRun& before, const SavedRun& after, const RunComparison& comparison);

} // namespace quarbel
