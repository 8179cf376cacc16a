// Runs the quarbel binary as a child process and collects what it printed.
#pragma once

#include <string>
#include <vector>

namespace quarbel::test {

struct ProcessResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// Runs `args` (args[0] is the program) with `extraEnv` ("NAME=value") added; when
// `interruptAfterLine` is not empty, sends SIGINT once stdout holds that text.
ProcessResult runProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv = {},
                         const std::string& interruptAfterText = {}, int timeoutMs = 60000);

} // namespace quarbel::test
