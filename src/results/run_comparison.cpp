#include "results/run_comparison.h"

#include "model/catalogue.h"
#include "model/outcome.h"

#include <nlohmann/json.hpp>

#include <algorithm>
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

} // namespace

std::variant<SavedRun, std::string> resolveSavedRun(const std::string& argument,
                                                    const HistoryListing& history) {
    const bool number =
        !argument.empty() && argument.size() < 7 &&
        std::all_of(argument.begin(), argument.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (number) {
        const auto index = std::stoul(argument);
        if (index < 1 || index > history.runs.size())
            return "no run " + argument + " in the history (it holds " + std::to_string(history.runs.size()) +
                   "; see 'quarbel history')";
        return history.runs[index - 1];
    }
    std::string problem;
    if (auto run = readSavedRun(argument, &problem)) return std::move(*run);
    return argument + " " + problem;
}

RunComparison compareRuns(const SavedRun& before, const SavedRun& after) {
    RunComparison comparison;
    if (before.version != after.version)
        comparison.warnings.push_back("The runs come from different Quarbel versions (" +
                                      (before.version.empty() ? "unknown" : before.version) + " and " +
                                      (after.version.empty() ? "unknown" : after.version) +
                                      "); their scores may not be comparable.");
    if (before.quick != after.quick)
        comparison.warnings.push_back("One run is quick and the other full; quick runs measure a tenth of "
                                      "the time and score differently.");
    if (before.stopped || after.stopped) comparison.warnings.push_back("A run was stopped before its end.");
    for (const auto& first : before.results) {
        const auto second = std::find_if(after.results.begin(), after.results.end(),
                                         [&](const SavedResult& r) { return r.title == first.title; });
        if (second == after.results.end()) continue;
        ScorePair pair{first.title,
                       categoryOfTitle(first.title),
                       first.status == "ok" ? first.score : 0.0,
                       second->status == "ok" ? second->score : 0.0,
                       first.spreadPercent,
                       second->spreadPercent,
                       before.quick || after.quick ? RunLength::quick : RunLength::full};
        comparison.rows.push_back({first.title, pair.before, pair.after, compareScores(pair)});
    }
    return comparison;
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
    std::vector<std::vector<std::string>> cells{{"Benchmark", "A", "B", "B / A", "Noise band", "Verdict"}};
    for (const auto& row : comparison.rows) {
        const auto score = [](double value) { return value > 0 ? scoreText(value) : std::string("-"); };
        cells.push_back({row.title, score(row.before), score(row.after),
                         row.compared.ratio ? format("%.3f", *row.compared.ratio) : std::string("-"),
                         format("%.1f %%", row.compared.bandPercent) +
                             (row.compared.bandFromSpread ? " (Accuracy Mode)" : ""),
                         std::string(verdictText(row.compared.verdict))});
    }
    text += comparison.rows.empty() ? "The two runs have no benchmark in common.\n" : aligned(cells);
    for (const auto& warning : comparison.warnings)
        text += "Warning: " + warning + "\n";
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
    for (const auto& row : comparison.rows)
        rows.push_back({{"title", row.title},
                        {"a", row.before},
                        {"b", row.after},
                        {"ratio", row.compared.ratio ? json(*row.compared.ratio) : json(nullptr)},
                        {"noiseBandPercent", row.compared.bandPercent},
                        {"noiseBandFrom", row.compared.bandFromSpread ? "accuracy spread" : "default"},
                        {"verdict", std::string(verdictText(row.compared.verdict))}});
    const json document{{"schema", 1},
                        {"a", runJson(before)},
                        {"b", runJson(after)},
                        {"results", rows},
                        {"warnings", comparison.warnings}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace quarbel
