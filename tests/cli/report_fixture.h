// SPDX-License-Identifier: Apache-2.0
// Small reports written by hand, for the history, compare and gate tests.
#pragma once

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

inline std::string reportText(const std::string& startedAt, const std::string& version, bool quick,
                              std::vector<Result> results, bool stopped = false) {
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

} // namespace quarbel::test
