// `quarbel history` and `quarbel compare`: past runs listed, and two runs compared
// benchmark by benchmark with a verdict that knows the benchmarks' noise.
#pragma once

#include "model/comparison.h"
#include "results/run_history.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quarbel {

// A run named on the command line: "1" is the newest run of the history, "2" the one
// before, ...; anything else is a report file's path. Returns the one-line problem.
std::variant<SavedRun, std::string> resolveSavedRun(const std::string& argument,
                                                    const HistoryListing& history);

struct ComparisonRow {
    std::string title;
    double before = 0; // 0 when the benchmark did not complete in that run
    double after = 0;
    ComparedScore compared;
    std::optional<RateUncertainty> uncertaintyBefore; // each score's interval, as its report gave it
    std::optional<RateUncertainty> uncertaintyAfter;
};

struct RunComparison {
    std::vector<ComparisonRow> rows;   // benchmarks present in both runs, in the first run's order
    std::vector<std::string> warnings; // reasons the two runs are not like for like
};

RunComparison compareRuns(const SavedRun& before, const SavedRun& after);

// The benchmarks judged slower whose slowdown is larger than `percent` (for
// `compare --fail-on-slower`), in the comparison's order.
std::vector<std::string> slowerThan(const RunComparison& comparison, double percent);

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
