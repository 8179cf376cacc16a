// SPDX-License-Identifier: Apache-2.0
#include "cli/baseline_gate.h"

#include "model/catalogue.h"
#include "model/number_format.h"
#include "results/ci_gate.h"
#include "results/run_history.h"
#include "session/run_arguments.h"

#include <cstdio>

namespace quarbel::cli {
namespace {

std::string joinedTitles(const std::vector<std::string>& titles) {
    std::string text;
    for (const auto& title : titles)
        text += (text.empty() ? "" : ", ") + title;
    return text;
}

// Says what the gate holds, on standard error, the way CI logs read it.
void reportGate(const CiGate& gate) {
    if (const auto slower = gate.slower(); !slower.empty())
        std::fprintf(stderr, "quarbel: slower than allowed (%s %%): %s\n",
                     format(gate.allowedSlowdownPercent(), 1).c_str(), joinedTitles(slower).c_str());
    if (const auto unjudged = gate.unjudged(); !unjudged.empty())
        std::fprintf(stderr, "quarbel: could not judge: %s\n", unjudgedText(unjudged).c_str());
}

std::string testSuites(const std::string& suites) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n" + suites + "</testsuites>\n";
}

// 1 with a line when the file cannot be written, else `code`.
int writeJunit(const std::optional<ReportTarget>& target, const std::string& text, int code) {
    if (!target) return code;
    const ReportWrite written = writeReportFile(*target, text);
    if (written.problem.empty()) return code;
    std::fprintf(stderr, "quarbel: the JUnit file was not written: %s\n", written.problem.c_str());
    return code == 0 ? 1 : code;
}

std::vector<BenchmarkID> idsOfTitles(const std::vector<std::string>& titles) {
    std::vector<BenchmarkID> ids;
    for (BenchmarkID id : kAllBenchmarks)
        for (const auto& t : titles)
            if (title(id) == t) ids.push_back(id);
    return ids;
}

} // namespace

std::variant<ReportTarget, std::string> junitTarget(bool failOnSlowerGiven, const std::string& path) {
    if (!failOnSlowerGiven) return std::string("--junit needs --fail-on-slower: the file holds its verdicts");
    if (path == "-") return std::string("--junit takes a file, not standard output");
    auto target = resolveReportTarget("--junit", path);
    if (const auto* problem = std::get_if<std::string>(&target)) return *problem;
    return std::get<ReportTarget>(std::move(target));
}

std::variant<std::optional<GateOptions>, std::string> gateOptionsFrom(const GateArguments& arguments,
                                                                      const std::string& historyDirectory) {
    if (!arguments.baseline) {
        for (const auto& [given, option] : {std::pair{arguments.failOnSlower.has_value(), "--fail-on-slower"},
                                            std::pair{arguments.confirm.has_value(), "--confirm"},
                                            std::pair{arguments.junit.has_value(), "--junit"}})
            if (given) return std::string(option) + " needs --baseline REPORT to compare with";
        return std::optional<GateOptions>{};
    }
    GateOptions gate;
    if (arguments.failOnSlower) {
        gate.allowedSlowdownPercent = noiseThresholdPercent(std::nullopt);
        if (!arguments.failOnSlower->empty()) {
            const auto percent = session::percentArgument("--fail-on-slower", *arguments.failOnSlower, false);
            if (const auto* error = std::get_if<session::ArgumentError>(&percent)) return error->message;
            gate.allowedSlowdownPercent = std::get<double>(percent);
        }
    }
    if (arguments.confirm) {
        if (!arguments.failOnSlower)
            return std::string("--confirm needs --fail-on-slower: it reruns what fails");
        const std::string& n = *arguments.confirm;
        if (n.empty() || n.size() > 2 || n.find_first_not_of("0123456789") != std::string::npos ||
            std::stoi(n) > 20)
            return "--confirm takes a number of reruns from 0 to 20, not '" + n + "'";
        gate.confirmations = std::stoi(n);
    }
    if (arguments.junit) {
        auto target = junitTarget(arguments.failOnSlower.has_value(), *arguments.junit);
        if (const auto* problem = std::get_if<std::string>(&target)) return *problem;
        gate.junit = std::get<ReportTarget>(std::move(target));
    }
    auto baseline = resolveSavedRun(*arguments.baseline, listHistory(historyDirectory, HistoryDetail::order));
    if (const auto* problem = std::get_if<std::string>(&baseline)) return "--baseline: " + *problem;
    gate.baseline = std::get<SavedRun>(std::move(baseline));
    return std::optional<GateOptions>{std::move(gate)};
}

int runWithBaseline(session::RunOptions options, const GateOptions& gateOptions,
                    const std::function<int(session::RunOptions)>& runOnce) {
    std::string reportText;
    options.reportSink = [&reportText](const std::string& text) { reportText = text; };
    const int firstExit = runOnce(options);
    if (firstExit == session::kExitStopped || reportText.empty()) return firstExit;
    std::string problem;
    auto run = savedRunFromText(reportText, "this run", &problem);
    if (!run) return firstExit;
    RunComparison comparison = compareRuns(gateOptions.baseline, *run);
    std::printf("\nAgainst the baseline %s:\n%s", gateOptions.baseline.path.c_str(),
                comparisonText(gateOptions.baseline, *run, comparison).c_str());
    if (!gateOptions.allowedSlowdownPercent) return firstExit;

    CiGate gate(*gateOptions.allowedSlowdownPercent);
    gate.add(comparison);
    session::RunOptions rerun = options;
    rerun.report.reset();
    rerun.metrics.reset();
    rerun.cardsDirectory.reset();
    for (int attempt = 1; attempt <= gateOptions.confirmations; ++attempt) {
        const auto flagged = gate.toConfirm();
        if (flagged.empty()) break;
        std::printf("\nConfirming against the baseline (%d of %d): %s\n", attempt, gateOptions.confirmations,
                    joinedTitles(flagged).c_str());
        std::fflush(stdout);
        rerun.ids = idsOfTitles(flagged);
        reportText.clear();
        const int exit = runOnce(rerun);
        if (exit == session::kExitStopped) return exit;
        auto again = savedRunFromText(reportText, "rerun", &problem);
        if (!again) break;
        comparison = compareRuns(gateOptions.baseline, *again);
        std::printf("\n%s", comparisonText(gateOptions.baseline, *again, comparison).c_str());
        gate.add(comparison);
    }
    reportGate(gate);
    std::fflush(stdout);
    const int code = gate.exitCode() != 0 ? gate.exitCode() : firstExit;
    return writeJunit(gateOptions.junit,
                      testSuites(gate.junitXml("quarbel run against " + gateOptions.baseline.path)), code);
}

int compareGateExit(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons,
                    double allowedSlowdownPercent, const std::optional<ReportTarget>& junit) {
    // Each later run is judged on its own; a benchmark slower in any of them fails.
    CiGate all(allowedSlowdownPercent);
    std::string suites;
    int code = 0;
    for (std::size_t i = 0; i < comparisons.size(); ++i) {
        CiGate pair(allowedSlowdownPercent);
        pair.add(comparisons[i]);
        if (pair.exitCode() == kExitSlower || (code == 0 && pair.exitCode() == kExitNotJudged))
            code = pair.exitCode();
        suites += pair.junitXml(runs.front().path + " against " + runs[i + 1].path);
        all.add(comparisons[i]);
        if (comparisons.size() > 1) {
            if (const auto slower = pair.slower(); !slower.empty())
                std::fprintf(stderr, "quarbel: %s: slower than allowed (%s %%): %s\n",
                             runs[i + 1].path.c_str(), format(allowedSlowdownPercent, 1).c_str(),
                             joinedTitles(slower).c_str());
            if (const auto unjudged = pair.unjudged(); !unjudged.empty())
                std::fprintf(stderr, "quarbel: %s: could not judge: %s\n", runs[i + 1].path.c_str(),
                             unjudgedText(unjudged).c_str());
        }
    }
    if (comparisons.size() == 1) reportGate(all);
    return writeJunit(junit, testSuites(suites), code);
}

} // namespace quarbel::cli
