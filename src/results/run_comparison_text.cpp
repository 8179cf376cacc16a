// SPDX-License-Identifier: Apache-2.0
// What `quarbel history` and `quarbel compare` print: the comparisons of run_comparison.cpp
// laid out as aligned text tables and as JSON for scripts.
#include "results/run_comparison.h"

#include "model/number_format.h"
#include "model/outcome.h"
#include "results/run_report.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quarbel {
namespace {

std::string padded(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
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

// "CPU Single-Core efficiency (CPU package): 57.7 → 60.1 pts/J, +4.2 % (B / A 1.012 to 1.071),
// more efficient", or why it was not judged.
std::string efficiencyLine(const ComparisonRow& row) {
    const EfficiencyComparison& e = *row.efficiency;
    std::string line = row.title + " efficiency";
    if (e.domain) line += " (" + std::string(powerDomainLabel(*e.domain)) + ")";
    if (!e.compared) return line + ": not judged: " + e.notJudged + "\n";
    const ComparedScore& c = *e.compared;
    line += ": " + pointsPerJouleText(*e.before) + " \u2192 " + pointsPerJouleText(*e.after) + " pts/J";
    if (c.ratio) line += ", " + signedFormat((*c.ratio - 1.0) * 100.0, 1) + " %";
    if (c.ratioLow && c.ratioHigh)
        line += " (B / A " + format(*c.ratioLow, 3) + " to " + format(*c.ratioHigh, 3) + ")";
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
            interval = format(*c.ratioLow, 3) + " to " + format(*c.ratioHigh, 3);
        else if (c.ratio)
            interval =
                "band " + format(c.bandPercent, 1) + " %" + (c.bandFromSpread ? " (Accuracy Mode)" : "");
        cells.push_back({row.title, score(row.before, row.uncertaintyBefore),
                         score(row.after, row.uncertaintyAfter),
                         c.ratio ? format(*c.ratio, 3) : std::string("-"), interval,
                         c.ratio ? signedFormat((*c.ratio - 1.0) * 100.0, 1) + " %" : std::string("-"),
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
                format(noiseThresholdPercent(std::nullopt), 1) + " % never called, however significant.\n";
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
                    cell += "  " + format(*compared->compared.ratio, 3) + " " +
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
        format(noiseThresholdPercent(std::nullopt), 1) + " % never called).\n";
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
