// SPDX-License-Identifier: Apache-2.0
// Checks of the `quarbel run` arguments, made before anything runs.
#pragma once

#include "model/accuracy.h"
#include "model/catalogue.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quarbel::session {

struct ArgumentError {
    std::string message; // one line, for standard error
};

// The benchmarks to run: all thirteen for `all`, else the named identifiers in the
// order given. Unknown and repeated identifiers, and `all` with identifiers, are errors.
std::variant<std::vector<BenchmarkID>, ArgumentError> benchmarksToRun(const std::vector<std::string>& names,
                                                                      bool all);

// A percentage given on the command line ("--fail-on-slower 5", "--until-stable 1.5"): a
// finite number, not negative (and above zero when `positive`). `option` names it in the error.
std::variant<double, ArgumentError> percentArgument(const std::string& option, const std::string& text,
                                                    bool positive);

struct UntilStableArguments {
    bool requested = false;               // --until-stable was given
    std::string percent;                  // its value, empty for the default target
    std::optional<std::string> maxPasses; // --max-passes N, when given
    bool accuracy = false;                // --accuracy was given too
};

// The rerun target of `quarbel run`: absent without --until-stable. --max-passes must be a
// whole number of at least 1 and needs --until-stable; Accuracy Mode's fixed three passes
// and reruns until stable exclude each other.
std::variant<std::optional<StabilityTarget>, ArgumentError>
untilStableTarget(const UntilStableArguments& arguments);

} // namespace quarbel::session
