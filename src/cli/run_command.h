// SPDX-License-Identifier: Apache-2.0
// `quarbel run`: its options, their checks before anything runs, and the run itself.
#pragma once

#include "session/run_session.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace quarbel::cli {

// What `run` was given on its command line (runCommand names each member in this order).
struct RunArguments {
    std::vector<std::string> names;
    bool all = false;
    session::RunOptions options;
    std::string jsonPath, cardsArgument, untilStablePercent, maxPasses, gpuChoice, openclChoice,
        storageChoice;
    std::string baselineArgument, runFailOnSlower, confirmArgument, runJunit, metricsPath, cooldownArgument;
    bool noHistory = false;
    bool noTrace = false;
};

// Adds the `run` options to `run`, each filling its member of `arguments`.
void addRunOptions(CLI::App& run, RunArguments& arguments);

// Checks what `run` was given (2 with one line when it does not fit), then runs it.
int runCommand(const CLI::App& run, RunArguments& arguments, int argc, char** argv);

} // namespace quarbel::cli
