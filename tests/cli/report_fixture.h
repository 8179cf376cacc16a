// SPDX-License-Identifier: Apache-2.0
// Small reports written by hand, for the history, compare and gate tests.
#pragma once

#include "results/run_history.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace quarbel::test {

struct Result {
    const char* title;
    double score;
    std::optional<double> spread = std::nullopt;
    std::optional<double> standardError = std::nullopt; // relative, with 19 degrees of freedom
    bool noisy = false;
};

// A report as `quarbel run --json` writes it, cut down to what the readers use.
inline std::string reportText(const std::string& startedAt, const std::vector<Result>& results = {},
                              const std::string& version = "1.0", bool quick = false, bool stopped = false) {
    nlohmann::json entries = nlohmann::json::array();
    for (const auto& r : results)
        entries.push_back(
            {{"id", "x"},
             {"title", r.title},
             {"status", r.score > 0 ? "ok" : "failed"},
             {"score", r.score},
             {"spreadPercent", r.spread ? nlohmann::json(*r.spread) : nlohmann::json(nullptr)},
             {"noisy", r.noisy},
             {"uncertainty", r.standardError ? nlohmann::json{{"relativeStandardError", *r.standardError},
                                                              {"degreesOfFreedom", 19},
                                                              {"samples", 20}}
                                             : nlohmann::json(nullptr)}});
    return nlohmann::json{
        {"schema", 1},
        {"app", {{"name", "Quarbel"}, {"version", version}}},
        {"mode", "standard"},
        {"quick", quick},
        {"startedAt", startedAt},
        {"system", {{{"label", "CPU"}, {"value", "Test CPU"}}}},
        {"results", entries},
        {"summary", stopped ? nlohmann::json(nullptr) : nlohmann::json{{"title", "Full Suite"}}},
        {"globalScore", 1234.5}}
        .dump();
}

// A CPU Single-Core result as the history reads it back.
inline SavedResult savedResult(double score, const std::string& status = "ok") {
    return {"cpuInteger", "CPU Single-Core", status, score, std::nullopt, {}};
}

// A run of `results` as the history reads it back; a test sets the other fields it needs.
inline SavedRun savedRun(std::vector<SavedResult> results, const std::string& path = "",
                         const std::string& version = "") {
    SavedRun run;
    run.path = path;
    run.version = version;
    run.results = std::move(results);
    return run;
}

} // namespace quarbel::test
