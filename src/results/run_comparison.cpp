// SPDX-License-Identifier: Apache-2.0
#include "results/run_comparison.h"

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/scoring_versions.h"
#include "results/run_report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quarbel {
namespace {

std::string format(const char* pattern, double value) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

std::string padded(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::optional<BenchmarkCategory> categoryOfTitle(const std::string& title) {
    for (const BenchmarkID id : kAllBenchmarks)
        if (quarbel::title(id) == title) return category(id);
    return std::nullopt;
}

std::string runLabel(const SavedRun& run) {
    std::string label = run.startedAt + ", " + run.title + ", " + run.mode + (run.quick ? ", quick" : "");
    if (!run.version.empty()) label += ", Quarbel " + run.version;
    return label;
}

std::string aligned(const std::vector<std::vector<std::string>>& cells) {
    std::vector<std::size_t> widths;
    for (const auto& row : cells)
        for (std::size_t column = 0; column < row.size(); ++column) {
            if (widths.size() <= column) widths.push_back(0);
            widths[column] = std::max(widths[column], row[column].size());
        }
    std::string text;
    for (const auto& row : cells) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column)
            line += column + 1 < row.size() ? padded(row[column], widths[column] + 2) : row[column];
        text += line + "\n";
    }
    return text;
}

// "noisy machine in B (other work took 43 % of the CPU)": what disturbed the run, where the
// report measured it.
std::string noisyReason(const SavedResult& result, const char* run) {
    std::string text = std::string("noisy machine in ") + run;
    if (const auto& i = result.statistics.interference) {
        if (i->otherCpuPercent >= i->stealPercent)
            text += " (other work took " + format("%.0f", i->otherCpuPercent) + " % of the CPU)";
        else
            text += " (the host took " + format("%.0f", i->stealPercent) + " % of the CPU as steal)";
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
               format("%g", invalid(b) ? b.score : a.score) + ")";
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

// "CPU Single-Core efficiency (CPU package): 57.7 → 60.1 pts/J, +4.2 % (B / A 1.012 to 1.071),
// more efficient", or why it was not judged.
std::string efficiencyLine(const ComparisonRow& row) {
    const EfficiencyComparison& e = *row.efficiency;
    std::string line = row.title + " efficiency";
    if (e.domain) line += " (" + std::string(powerDomainLabel(*e.domain)) + ")";
    if (!e.compared) return line + ": not judged: " + e.notJudged + "\n";
    const ComparedScore& c = *e.compared;
    line += ": " + pointsPerJouleText(*e.before) + " \u2192 " + pointsPerJouleText(*e.after) + " pts/J";
    if (c.ratio) line += ", " + format("%+.1f %%", (*c.ratio - 1.0) * 100.0);
    if (c.ratioLow && c.ratioHigh)
        line += " (B / A " + format("%.3f", *c.ratioLow) + " to " + format("%.3f", *c.ratioHigh) + ")";
    return line + ", " + std::string(efficiencyVerdictText(c.verdict)) + "\n";
}

// The set-up fields that differ, each with what it can move; empty when none do.
std::string setupDifferencesText(const std::vector<ManifestDifference>& differences) {
    if (differences.empty()) return {};
    std::string text = "The set-ups differ in " + std::to_string(differences.size()) +
                       (differences.size() == 1 ? " field" : " fields") + ":\n";
    for (const auto& d : differences)
        text += "  " + d.label + " (can move " + d.affects + " scores): A " +
                (d.before.empty() ? "unknown" : d.before) + "; B " + (d.after.empty() ? "unknown" : d.after) +
                "\n";
    return text;
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

std::string historyText(const HistoryListing& history) {
    if (history.runs.empty()) return "No runs saved yet.\n";
    std::vector<std::vector<std::string>> cells{
        {"#", "Started (UTC)", "Run", "Mode", "Global score", "Machine"}};
    for (std::size_t i = 0; i < history.runs.size(); ++i) {
        const SavedRun& run = history.runs[i];
        cells.push_back({std::to_string(i + 1), run.startedAt, run.title,
                         run.mode + (run.quick ? ", quick" : ""), scoreText(run.globalScore) + " pts",
                         run.machine});
    }
    return aligned(cells);
}

std::string comparisonText(const SavedRun& before, const SavedRun& after, const RunComparison& comparison) {
    std::string text = "A: " + runLabel(before) + "\nB: " + runLabel(after) + "\n\n";
    std::vector<std::vector<std::string>> cells{
        {"Benchmark", "A", "B", "B / A", "95 % interval", "Change", "Verdict"}};
    for (const auto& row : comparison.rows) {
        const auto score = [](double value, const std::optional<RateUncertainty>& uncertainty) {
            if (!(value > 0)) return std::string("-");
            const std::string interval = uncertaintyText(uncertainty);
            return interval.empty() ? scoreText(value) : scoreText(value) + " " + interval;
        };
        const ComparedScore& c = row.compared;
        std::string interval = "-";
        if (c.ratioLow && c.ratioHigh)
            interval = format("%.3f", *c.ratioLow) + " to " + format("%.3f", *c.ratioHigh);
        else if (c.ratio)
            interval =
                "band " + format("%.1f %%", c.bandPercent) + (c.bandFromSpread ? " (Accuracy Mode)" : "");
        cells.push_back({row.title, score(row.before, row.uncertaintyBefore),
                         score(row.after, row.uncertaintyAfter),
                         c.ratio ? format("%.3f", *c.ratio) : std::string("-"), interval,
                         c.ratio ? format("%+.1f %%", (*c.ratio - 1.0) * 100.0) : std::string("-"),
                         row.notJudged.empty() ? std::string(verdictText(c.verdict))
                         : row.ranInNeither    ? row.notJudged
                                               : std::string("could not judge")});
    }
    text += comparison.rows.empty() ? "The two runs have no benchmark in common.\n" : aligned(cells);
    bool efficiencyJudged = false;
    for (const auto& row : comparison.rows)
        if (row.efficiency) {
            text += efficiencyLine(row);
            efficiencyJudged = efficiencyJudged || row.efficiency->compared.has_value();
        }
    if (efficiencyJudged)
        text += "Efficiency: points per joule, judged as the scores are; each run's interval combines the "
                "score's standard error with that of the mean power sampled while it ran.\n";
    if (const auto unjudged = couldNotJudge(comparison); !unjudged.empty())
        text += "Could not judge: " + unjudgedText(unjudged) + ".\n";
    if (!comparison.rows.empty())
        text += "Verdicts: a Welch test on the log of the slice rates, significance 0.05, changes under " +
                format("%.1f %%", noiseThresholdPercent(std::nullopt)) +
                " never called, however significant.\n";
    for (const auto& warning : comparison.warnings)
        text += "Warning: " + warning + "\n";
    text += setupDifferencesText(comparison.setupDifferences);
    return text;
}

std::string comparisonJson(const SavedRun& before, const SavedRun& after, const RunComparison& comparison) {
    using json = nlohmann::ordered_json;
    const auto runJson = [](const SavedRun& run) {
        return json{{"path", run.path},
                    {"startedAt", run.startedAt},
                    {"version", run.version},
                    {"mode", run.mode},
                    {"quick", run.quick},
                    {"stopped", run.stopped},
                    {"globalScore", run.globalScore}};
    };
    json rows = json::array();
    const auto number = [](const std::optional<double>& value) {
        return value ? json(*value) : json(nullptr);
    };
    const auto interval = [](const std::optional<RateUncertainty>& u) {
        return u ? json(u->ci95Percent()) : json(nullptr);
    };
    const auto efficiency = [&](const std::optional<EfficiencyComparison>& e) {
        if (!e) return json(nullptr);
        const std::optional<ComparedScore>& c = e->compared;
        return json{{"domain", e->domain ? json(std::string(rawValue(*e->domain))) : json(nullptr)},
                    {"pointsPerJouleA", number(e->before)},
                    {"pointsPerJouleB", number(e->after)},
                    {"ci95PercentA", interval(e->uncertaintyBefore)},
                    {"ci95PercentB", interval(e->uncertaintyAfter)},
                    {"ratio", c ? number(c->ratio) : json(nullptr)},
                    {"changePercent", c && c->ratio ? json((*c->ratio - 1.0) * 100.0) : json(nullptr)},
                    {"ratioLow", c ? number(c->ratioLow) : json(nullptr)},
                    {"ratioHigh", c ? number(c->ratioHigh) : json(nullptr)},
                    {"pValue", c ? number(c->pValue) : json(nullptr)},
                    {"verdict", c ? json(std::string(efficiencyVerdictText(c->verdict))) : json(nullptr)},
                    {"notJudged", e->notJudged.empty() ? json(nullptr) : json(e->notJudged)}};
    };
    for (const auto& row : comparison.rows) {
        const ComparedScore& c = row.compared;
        const bool statistics = c.method == ComparisonMethod::statistics;
        rows.push_back({{"title", row.title},
                        {"a", row.before},
                        {"b", row.after},
                        {"ci95PercentA", interval(row.uncertaintyBefore)},
                        {"ci95PercentB", interval(row.uncertaintyAfter)},
                        {"ratio", number(c.ratio)},
                        {"changePercent", c.ratio ? json((*c.ratio - 1.0) * 100.0) : json(nullptr)},
                        {"method", statistics ? "statistics" : "noise band"},
                        {"ratioLow", number(c.ratioLow)},
                        {"ratioHigh", number(c.ratioHigh)},
                        {"pValue", number(c.pValue)},
                        {"thresholdPercent", statistics ? json(c.thresholdPercent) : json(nullptr)},
                        {"noiseBandPercent", statistics ? json(nullptr) : json(c.bandPercent)},
                        {"noiseBandFrom", statistics         ? json(nullptr)
                                          : c.bandFromSpread ? json("accuracy spread")
                                                             : json("default")},
                        {"verdict", std::string(verdictText(c.verdict))},
                        {"notJudged", row.notJudged.empty() ? json(nullptr) : json(row.notJudged)},
                        {"efficiency", efficiency(row.efficiency)}});
    }
    json differences = json::array();
    for (const auto& d : comparison.setupDifferences)
        differences.push_back({{"label", d.label}, {"a", d.before}, {"b", d.after}, {"affects", d.affects}});
    const json document{{"schema", 1},
                        {"a", runJson(before)},
                        {"b", runJson(after)},
                        {"results", rows},
                        {"warnings", comparison.warnings},
                        {"setupDifferences", differences}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string manyRunsText(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons) {
    std::string text;
    std::vector<std::string> header{"Benchmark"};
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::string column = i < 26 ? std::string(1, static_cast<char>('A' + i))
                                          : std::string("#").append(std::to_string(i + 1));
        text += column + ": " + runLabel(runs[i]) + "\n";
        header.push_back(column);
    }
    text += "\n";
    std::vector<std::string> titles;
    for (const SavedRun& run : runs)
        for (const SavedResult& result : run.results)
            if (std::find(titles.begin(), titles.end(), result.title) == titles.end())
                titles.push_back(result.title);
    std::vector<std::vector<std::string>> cells{header};
    for (const std::string& title : titles) {
        std::vector<std::string> row{title};
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const auto result = std::find_if(runs[i].results.begin(), runs[i].results.end(),
                                             [&](const SavedResult& r) { return r.title == title; });
            if (result == runs[i].results.end() || result->status != "ok") {
                row.push_back(result == runs[i].results.end() ? "-" : result->status);
                continue;
            }
            std::string cell = scoreText(result->score);
            if (const std::string interval = uncertaintyText(result->statistics.uncertainty);
                !interval.empty())
                cell += " " + interval;
            if (i > 0) {
                const auto& rows = comparisons[i - 1].rows;
                const auto compared = std::find_if(rows.begin(), rows.end(),
                                                   [&](const ComparisonRow& r) { return r.title == title; });
                if (compared != rows.end() && compared->compared.ratio)
                    cell += "  " + format("%.3f", *compared->compared.ratio) + " " +
                            std::string(verdictText(compared->compared.verdict));
            }
            row.push_back(cell);
        }
        cells.push_back(std::move(row));
    }
    text += aligned(cells);
    text +=
        "Each later run against A: its score, B / A and the verdict (a Welch test on the log of the slice "
        "rates, significance 0.05, changes under " +
        format("%.1f %%", noiseThresholdPercent(std::nullopt)) + " never called).\n";
    std::vector<std::string> warnings;
    for (std::size_t i = 0; i < comparisons.size(); ++i)
        for (const auto& warning : comparisons[i].warnings) {
            const std::string line = header[i + 2] + " against A: " + warning;
            if (std::find(warnings.begin(), warnings.end(), line) == warnings.end()) warnings.push_back(line);
        }
    for (const auto& warning : warnings)
        text += "Warning: " + warning + "\n";
    return text;
}

std::string manyRunsJson(const std::vector<SavedRun>& runs, const std::vector<RunComparison>& comparisons) {
    using json = nlohmann::ordered_json;
    json pairs = json::array();
    for (std::size_t i = 0; i < comparisons.size(); ++i)
        pairs.push_back(json::parse(comparisonJson(runs.front(), runs[i + 1], comparisons[i])));
    const json document{{"schema", 1}, {"baseline", runs.front().path}, {"comparisons", pairs}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace quarbel
