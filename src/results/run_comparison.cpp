// SPDX-License-Identifier: Apache-2.0
// Two saved runs compared benchmark by benchmark, speed and efficiency, with the warnings that
// qualify the verdicts; run_comparison_text.cpp lays the result out for the terminal and JSON.
#include "results/run_comparison.h"

#include "model/catalogue.h"
#include "model/number_format.h"
#include "model/outcome.h"
#include "model/scoring_versions.h"
#include "results/run_report.h"

#include <algorithm>
#include <cmath>

namespace quarbel {
namespace {

std::optional<BenchmarkCategory> categoryOfTitle(const std::string& title) {
    for (const BenchmarkID id : kAllBenchmarks)
        if (quarbel::title(id) == title) return category(id);
    return std::nullopt;
}

// "noisy machine in B (other work took 43 % of the CPU)": what disturbed the run, where the
// report measured it.
std::string noisyReason(const SavedResult& result, const char* run) {
    std::string text = std::string("noisy machine in ") + run;
    if (const auto& i = result.statistics.interference) {
        if (i->otherCpuPercent >= i->stealPercent)
            text += " (other work took " + format(i->otherCpuPercent, 0) + " % of the CPU)";
        else
            text += " (the host took " + format(i->stealPercent, 0) + " % of the CPU as steal)";
    }
    return text;
}

// Why the pair cannot be judged, or empty.
std::string notJudgedReason(const SavedResult& a, const SavedResult& b) {
    const bool okA = a.status == "ok", okB = b.status == "ok";
    if (!okA && !okB) return a.status == b.status ? a.status + " in both runs" : "no result in either run";
    if (!okB) return b.status + " in B";
    if (!okA) return a.status + " in A, so there is nothing to compare with";
    // A report edited or damaged by hand can say "ok" beside a score no run gives.
    const auto invalid = [](const SavedResult& r) { return !std::isfinite(r.score) || r.score <= 0; };
    if (invalid(a) || invalid(b)) {
        const char* where = !invalid(a) ? "B" : invalid(b) ? "either run" : "A";
        return std::string("no valid score in ") + where + " (a report that says ok with a score of " +
               formatGeneral(invalid(b) ? b.score : a.score) + ")";
    }
    if (a.statistics.noisy && b.statistics.noisy) return noisyReason(a, "A") + "; " + noisyReason(b, "B");
    if (a.statistics.noisy) return noisyReason(a, "A");
    if (b.statistics.noisy) return noisyReason(b, "B");
    return {};
}

bool validScore(const SavedResult& result) {
    return result.status == "ok" && std::isfinite(result.score) && result.score > 0;
}

// The trace's power samples of a domain; null for one the trace has no column for.
const std::vector<float>* powerSamples(const SensorTrace& trace, PowerDomain domain) {
    switch (domain) {
    case PowerDomain::cpuPackage: return &trace.cpuWatts;
    case PowerDomain::gpu: return &trace.gpuWatts;
    case PowerDomain::battery: return nullptr;
    }
    return nullptr;
}

// Why a run has no energy of the domain: the reason its report gives, else no sensor.
std::string noEnergyReason(const SavedResult& result, PowerDomain domain, const char* run) {
    for (const auto& absence : result.statistics.energy.missing)
        if (absence.domain == domain)
            return std::string("energy not measured in run ") + run + ": " + absence.reason;
    return std::string("no power sensor in run ") + run;
}

// The interval of a result's points per joule: the score's relative standard error and the
// mean power's, from the trace's samples of the domain; or why there is none.
std::variant<RateUncertainty, std::string> efficiencyUncertainty(const SavedResult& result,
                                                                 PowerDomain domain) {
    if (!result.statistics.uncertainty) return std::string("no interval for the score");
    const std::vector<float>* samples = powerSamples(result.statistics.trace, domain);
    const auto power = samples ? sampleMeanUncertainty(*samples) : std::nullopt;
    if (!power) return std::string("not enough power samples");
    return combinedUncertainty(*result.statistics.uncertainty, *power);
}

// Both results are valid scores; `pair` is how their scores were compared.
std::optional<EfficiencyComparison> compareEfficiency(const SavedResult& a, const SavedResult& b,
                                                      ScorePair pair) {
    const bool gpu = pair.id && runsOnGpu(*pair.id);
    const EnergyMeasurement* before = efficiencyMeasurement(a.statistics.energy, gpu);
    const EnergyMeasurement* after = efficiencyMeasurement(b.statistics.energy, gpu);
    if (!before && !after) return std::nullopt;
    EfficiencyComparison e;
    if (!before || !after) {
        e.notJudged = before ? noEnergyReason(b, before->domain, "B") : noEnergyReason(a, after->domain, "A");
        return e;
    }
    // The domain the first run is judged by, else the second's, measured in both.
    if (const auto* same = b.statistics.energy.find(before->domain)) {
        after = same;
    } else if (const auto* other = a.statistics.energy.find(after->domain)) {
        before = other;
    } else {
        e.notJudged = "run A measured " + std::string(powerDomainLabel(before->domain)) + " power, run B " +
                      std::string(powerDomainLabel(after->domain)) + " power";
        return e;
    }
    e.domain = before->domain;
    e.before = pointsPerJoule(a.score, *before);
    e.after = pointsPerJoule(b.score, *after);
    if (!e.before || !e.after) {
        e.notJudged = std::string("no average power in ") + (e.before  ? "run B"
                                                             : e.after ? "run A"
                                                                       : "either run");
        return e;
    }
    auto uncertaintyA = efficiencyUncertainty(a, *e.domain);
    auto uncertaintyB = efficiencyUncertainty(b, *e.domain);
    const auto* problemA = std::get_if<std::string>(&uncertaintyA);
    const auto* problemB = std::get_if<std::string>(&uncertaintyB);
    if (problemA && problemB && *problemA == *problemB) {
        e.notJudged = *problemA + " in either run";
        return e;
    }
    if (problemA || problemB) {
        e.notJudged = problemA ? *problemA + " in run A" : *problemB + " in run B";
        return e;
    }
    e.uncertaintyBefore = std::get<RateUncertainty>(uncertaintyA);
    e.uncertaintyAfter = std::get<RateUncertainty>(uncertaintyB);
    pair.before = *e.before;
    pair.after = *e.after;
    pair.spreadBefore = pair.spreadAfter = std::nullopt;
    pair.uncertaintyBefore = e.uncertaintyBefore;
    pair.uncertaintyAfter = e.uncertaintyAfter;
    e.compared = compareScores(pair);
    return e;
}

} // namespace

std::string_view efficiencyVerdictText(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return "more efficient";
    case Verdict::slower: return "less efficient";
    case Verdict::withinNoise:
    case Verdict::inconclusive: break;
    }
    return verdictText(verdict);
}

std::variant<SavedRun, std::string> resolveSavedRun(const std::string& argument,
                                                    const HistoryListing& history) {
    const bool number =
        !argument.empty() && argument.size() < 7 &&
        std::all_of(argument.begin(), argument.end(), [](char c) { return c >= '0' && c <= '9'; });
    // A run of the history is read from its report, as a file named on the command line is:
    // the listing may hold only what orders the runs.
    std::string path = argument;
    if (number) {
        const auto index = std::stoul(argument);
        if (index < 1 || index > history.runs.size())
            return "no run " + argument + " in the history (it holds " + std::to_string(history.runs.size()) +
                   "; see 'quarbel history')";
        path = history.runs[index - 1].path;
    }
    std::string problem;
    if (auto run = readSavedRun(path, &problem)) return std::move(*run);
    return path + " " + problem;
}

RunComparison compareRuns(const SavedRun& before, const SavedRun& after) {
    RunComparison comparison;
    if (before.version != after.version)
        comparison.warnings.push_back(
            "The runs come from different Quarbel versions (" +
            (before.version.empty() ? "unknown" : before.version) + " and " +
            (after.version.empty() ? "unknown" : after.version) +
            (before.version.empty() || after.version.empty()
                 ? "); their scores may not be comparable."
                 : "); only the benchmarks that both versions score alike are judged."));
    if (before.quick != after.quick)
        comparison.warnings.push_back("One run is quick and the other full; quick runs measure a tenth of "
                                      "the time and score differently.");
    if (before.mode != after.mode)
        comparison.warnings.push_back("One run is in " + before.mode + " mode and the other in " +
                                      after.mode +
                                      " mode; their results combine a different number of passes.");
    if (!before.machineId.empty() && !after.machineId.empty() && before.machineId != after.machineId)
        comparison.warnings.push_back("The runs come from different machines (" + before.hostName + " and " +
                                      after.hostName + ").");
    else if (!before.machine.empty() && !after.machine.empty() && before.machine != after.machine)
        comparison.warnings.push_back("The runs come from different machines (" + before.machine + " and " +
                                      after.machine + ").");
    if (before.stopped || after.stopped) comparison.warnings.push_back("A run was stopped before its end.");
    comparison.setupDifferences = manifestDifferences(before.manifest, after.manifest);
    std::vector<std::string> byBand;
    for (const auto& first : before.results) {
        const auto second = std::find_if(after.results.begin(), after.results.end(),
                                         [&](const SavedResult& r) { return r.title == first.title; });
        if (second == after.results.end()) continue;
        ScorePair pair;
        pair.title = first.title;
        pair.category = categoryOfTitle(first.title);
        pair.before = first.status == "ok" ? first.score : 0.0;
        pair.after = second->status == "ok" ? second->score : 0.0;
        pair.spreadBefore = first.spreadPercent;
        pair.spreadAfter = second->spreadPercent;
        pair.length = before.quick || after.quick ? RunLength::quick : RunLength::full;
        pair.id = benchmarkFromRawValue(first.id);
        pair.uncertaintyBefore = first.statistics.uncertainty;
        pair.uncertaintyAfter = second->statistics.uncertainty;
        pair.noisyBefore = first.statistics.noisy;
        pair.noisyAfter = second->statistics.noisy;
        ComparedScore compared = compareScores(pair);
        std::string notJudged = notJudgedReason(first, *second);
        if (pair.id && scoredAlike(*pair.id, before.version, after.version) == false)
            notJudged = "Quarbel " + before.version + " and " + after.version + " score it differently";
        if (!notJudged.empty()) compared.verdict = Verdict::inconclusive;
        if (compared.ratio && compared.method == ComparisonMethod::noiseBand) byBand.push_back(first.title);
        comparison.rows.push_back(
            {first.title, pair.before, pair.after, compared, pair.uncertaintyBefore, pair.uncertaintyAfter,
             notJudged, first.status != "ok" && second->status != "ok",
             validScore(first) && validScore(*second) ? compareEfficiency(first, *second, pair)
                                                      : std::nullopt});
    }
    const auto listed = [](const std::vector<std::string>& titles) {
        std::string text;
        for (const auto& title : titles)
            text += (text.empty() ? "" : ", ") + title;
        return text;
    };
    if (!byBand.empty())
        comparison.warnings.push_back(
            "No slice rates for " + listed(byBand) +
            " (a report from an older Quarbel, or too few slices): compared the old way, against the fixed "
            "noise band of the category.");
    if (before.path == after.path && !before.path.empty())
        comparison.warnings.push_back("Both are the same run: every change is zero by construction.");
    return comparison;
}

std::vector<UnjudgedBenchmark> couldNotJudge(const RunComparison& comparison) {
    std::vector<UnjudgedBenchmark> unjudged;
    for (const auto& row : comparison.rows)
        if (!row.notJudged.empty() && !row.ranInNeither) unjudged.push_back({row.title, row.notJudged});
    return unjudged;
}

std::string unjudgedText(const std::vector<UnjudgedBenchmark>& benchmarks) {
    std::string text;
    for (const auto& b : benchmarks)
        text += (text.empty() ? "" : ", ") + b.title + " (" + b.why + ")";
    return text;
}

std::vector<std::string> slowerThan(const RunComparison& comparison, double percent) {
    std::vector<std::string> titles;
    for (const auto& row : comparison.rows) {
        if (row.compared.verdict != Verdict::slower) continue;
        // A benchmark that no longer completes is as slow as it gets.
        if (!row.compared.ratio || (1.0 - *row.compared.ratio) * 100.0 > percent) titles.push_back(row.title);
    }
    return titles;
}

} // namespace quarbel
