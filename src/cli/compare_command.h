// SPDX-License-Identifier: Apache-2.0
// `quarbel history` and `quarbel compare`: the runs kept in the history, and runs compared with
// the first, with the CI gate of --fail-on-slower.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace quarbel::cli {

// What `compare` was given on its command line (the command names each member in this order).
struct CompareArguments {
    std::vector<std::string> comparedRuns;
    bool compareAsJson = false;
    std::vector<std::string> comparedReferences;
    std::string failOnSlower;
    std::string compareJunit;
};

// Adds the `compare` options to `compare`, each filling its member of `arguments`.
void addCompareOptions(CLI::App& compare, CompareArguments& arguments);

// `history` when `listOnly`, else `compare` with what `compare` was given.
int historyOrCompareCommand(bool listOnly, const CLI::App& compare, CompareArguments& arguments);

} // namespace quarbel::cli
