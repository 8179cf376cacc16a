// SPDX-License-Identifier: Apache-2.0
#include "session/run_arguments.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace quarbel::session {

std::variant<std::vector<BenchmarkID>, ArgumentError> benchmarksToRun(const std::vector<std::string>& names,
                                                                      bool all) {
    if (all && !names.empty())
        return ArgumentError{"--all runs every benchmark; leave out the identifiers or --all"};
    if (all) return std::vector<BenchmarkID>(kAllBenchmarks.begin(), kAllBenchmarks.end());
    if (names.empty()) return ArgumentError{"name the benchmarks to run, or pass --all (see 'quarbel list')"};

    std::vector<BenchmarkID> ids;
    for (const auto& name : names) {
        const auto id = benchmarkFromRawValue(name);
        if (!id) {
            std::string valid;
            for (BenchmarkID known : kAllBenchmarks)
                valid += (valid.empty() ? "" : ", ") + std::string(rawValue(known));
            return ArgumentError{"unknown benchmark '" + name + "'; valid identifiers: " + valid};
        }
        if (std::find(ids.begin(), ids.end(), *id) != ids.end()) {
            return ArgumentError{"benchmark '" + name + "' is named more than once"};
        }
        ids.push_back(*id);
    }
    return ids;
}

std::variant<double, ArgumentError> percentArgument(const std::string& option, const std::string& text,
                                                    bool positive) {
    double value = 0;
    std::size_t used = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || !std::isfinite(value))
        return ArgumentError{option + " takes a percentage such as 5 or 2.5, not '" + text + "'"};
    if (value < 0 || (positive && value == 0))
        return ArgumentError{option + " takes a percentage " + (positive ? "above zero" : "of zero or more") +
                             ", not " + text};
    return value;
}

std::variant<std::optional<StabilityTarget>, ArgumentError>
untilStableTarget(const UntilStableArguments& arguments) {
    if (!arguments.requested) {
        if (arguments.maxPasses)
            return ArgumentError{"--max-passes only counts the passes of --until-stable"};
        return std::optional<StabilityTarget>{};
    }
    if (arguments.accuracy)
        return ArgumentError{"--accuracy runs three passes, --until-stable as many as needed; choose one"};
    StabilityTarget target;
    if (!arguments.percent.empty()) {
        const auto percent = percentArgument("--until-stable", arguments.percent, true);
        if (const auto* error = std::get_if<ArgumentError>(&percent)) return *error;
        target.ci95Percent = std::get<double>(percent);
    }
    if (arguments.maxPasses) {
        const std::string& text = *arguments.maxPasses;
        const bool digits =
            !text.empty() && text.size() < 4 &&
            std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!digits || std::stoi(text) < 1)
            return ArgumentError{"--max-passes takes a whole number of passes from 1 to 999, not '" + text +
                                 "'"};
        target.maxPasses = std::stoi(text);
    }
    return std::optional<StabilityTarget>{target};
}

} // namespace quarbel::session
