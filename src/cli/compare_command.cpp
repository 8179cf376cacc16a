// SPDX-License-Identifier: Apache-2.0
#include "cli/compare_command.h"

#include "cli/baseline_gate.h"
#include "cli/command_output.h"
#include "results/reference_results.h"
#include "results/run_comparison.h"
#include "results/run_history.h"
#include "session/run_arguments.h"
#include "session/run_session.h"

#include <cstdio>

namespace quarbel::cli {

void addCompareOptions(CLI::App& compare, CompareArguments& a) {
    compare
        .add_option("runs", a.comparedRuns,
                    "Two or more runs, each a report file or a number from 'quarbel history' (1 = newest); "
                    "the first is the baseline")
        ->required()
        ->expected(1, -1)
        ->type_name("A B [C...]");
    compare.add_flag("--json", a.compareAsJson, "Print the comparison as JSON");
    compare
        .add_option("--reference", a.comparedReferences,
                    "Also compare with a reference result of a known machine that ships with Quarbel (see "
                    "'quarbel reference'); may be given more than once")
        ->type_name("NAME");
    compare
        .add_option(
            "--fail-on-slower", a.failOnSlower,
            "Exit 3 when a benchmark is significantly slower in a later run than in the first by more than "
            "PERCENT (default: the noise threshold, 1 %); for CI")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    compare
        .add_option("--junit", a.compareJunit,
                    "With --fail-on-slower, also write the verdicts as JUnit XML to FILE")
        ->type_name("FILE");
}

int historyOrCompareCommand(bool listOnly, const CLI::App& compare, CompareArguments& a) {
    // Each argument under its own name (a binding names every member, in declaration order).
    auto& [comparedRuns, compareAsJson, comparedReferences, failOnSlower, compareJunit] = a;
    const HistoryListing history =
        listHistory(historyDirectory(), listOnly ? HistoryDetail::results : HistoryDetail::order);
    for (const auto& warning : history.warnings)
        std::fprintf(stderr, "quarbel: %s\n", warning.c_str());
    if (listOnly) {
        std::fputs(historyText(history).c_str(), stdout);
        return afterFlushingOutput(session::kExitOk);
    }
    double allowedSlowdown = noiseThresholdPercent(std::nullopt);
    if (compare.count("--fail-on-slower") > 0 && !failOnSlower.empty()) {
        const auto percent = session::percentArgument("--fail-on-slower", failOnSlower, false);
        if (const auto* error = std::get_if<session::ArgumentError>(&percent)) {
            std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
            return session::kExitBadInput;
        }
        allowedSlowdown = std::get<double>(percent);
    }
    std::optional<ReportTarget> compareJunitTarget;
    if (compare.count("--junit") > 0) {
        auto target = cli::junitTarget(compare.count("--fail-on-slower") > 0, compareJunit);
        if (const auto* problem = std::get_if<std::string>(&target)) {
            std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
            return session::kExitBadInput;
        }
        compareJunitTarget = std::get<ReportTarget>(std::move(target));
    }
    for (const auto& name : comparedReferences) {
        const ReferenceLookup found = findReference(name);
        if (!found.problem.empty()) {
            std::fprintf(stderr, "quarbel: %s\n", found.problem.c_str());
            return session::kExitBadInput;
        }
        comparedRuns.push_back(found.path);
    }
    if (comparedRuns.size() < 2) {
        std::fprintf(stderr, "quarbel: compare needs two runs or more: add a run or --reference NAME\n");
        return session::kExitBadInput;
    }
    std::vector<SavedRun> saved;
    for (const auto& name : comparedRuns) {
        auto resolved = resolveSavedRun(name, history);
        if (const auto* problem = std::get_if<std::string>(&resolved)) {
            std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
            return session::kExitBadInput;
        }
        saved.push_back(std::get<SavedRun>(std::move(resolved)));
    }
    std::vector<RunComparison> comparisons;
    for (std::size_t i = 1; i < saved.size(); ++i)
        comparisons.push_back(compareRuns(saved.front(), saved[i]));
    std::string text;
    if (saved.size() == 2)
        text = compareAsJson ? comparisonJson(saved[0], saved[1], comparisons[0])
                             : comparisonText(saved[0], saved[1], comparisons[0]);
    else
        text = compareAsJson ? manyRunsJson(saved, comparisons) : manyRunsText(saved, comparisons);
    std::fputs(text.c_str(), stdout);
    if (compare.count("--fail-on-slower") > 0)
        return afterFlushingOutput(
            cli::compareGateExit(saved, comparisons, allowedSlowdown, compareJunitTarget));
    return afterFlushingOutput(session::kExitOk);
}

} // namespace quarbel::cli
