// SPDX-License-Identifier: Apache-2.0
#include "cli/command_output.h"

#include "session/output_check.h"
#include "session/run_session.h"
#include "workloads/gpu/gpu_device_name.h"

#include <cstdio>

namespace quarbel::cli {

int afterFlushingOutput(int exitCode) {
    const std::string problem = session::flushProblem(stdout, "standard output");
    if (problem.empty()) return exitCode;
    std::fprintf(stderr, "quarbel: %s\n", problem.c_str());
    return exitCode == session::kExitOk ? session::kExitFailed : exitCode;
}

void warnAboutDeviceChoice() {
    if (const auto warning = gpu::deviceSelectionWarning())
        std::fprintf(stderr, "quarbel: %s\n", warning->c_str());
}

int badInput(const std::string& problem) {
    std::fprintf(stderr, "quarbel: %s\n", problem.c_str());
    return session::kExitBadInput;
}

} // namespace quarbel::cli
