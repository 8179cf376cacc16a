// SPDX-License-Identifier: Apache-2.0
// The command line of the desktop program:
//   quarbel-gui [--run all|ID[,ID...]] [--accuracy] [--quick] [--json FILE] [--quit-when-done]
//               [--history]
#pragma once

#include "session/run_session.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quarbel::app {

struct LaunchOptions {
    // The run to start as the window opens, with its report file; absent: none.
    std::optional<session::RunOptions> run;
    bool accuracy = false;     // Accuracy Mode on from the start
    bool quick = false;        // quick runs (a tenth of every budget) from the start
    bool quitWhenDone = false; // quit once the run's summary is out
    bool history = false;      // open the Run History beside the main window
};

// Leave before the window opens: `exitCode` 0 prints `text` on standard output (help,
// version), 2 prints it on standard error (a bad argument).
struct LaunchExit {
    int exitCode = 0;
    std::string text;
};

// `arguments` as main() receives them, the program name first, after Qt has taken its own.
std::variant<LaunchOptions, LaunchExit> parseLaunchArguments(const std::vector<std::string>& arguments);

} // namespace quarbel::app
