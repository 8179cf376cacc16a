// SPDX-License-Identifier: Apache-2.0
// Runs the quarbel binary as a child process and collects what it printed.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace quarbel::test {

struct ProcessResult {
    int exitCode = -1; // the exit status, or 128 + the signal that ended the process
    int killedBy = 0;  // the signal that ended the process, 0 when it exited
    std::string out;
    std::string err;
};

class ChildProcess {
  public:
    // Starts args[0] with `extraEnv` ("NAME=value") added, later values winning. `inChild` runs in the
    // child just before exec, after its standard output and error are connected to this process.
    explicit ChildProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv = {},
                          const std::function<void()>& inChild = {});
    ~ChildProcess(); // kills and reaps a child that is still running
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Collects output until `done()` holds (checked every few milliseconds), both
    // streams end or `timeoutMs` pass. Returns whether `done()` held.
    bool readUntil(const std::function<bool()>& done, int timeoutMs);
    const std::string& out() const { return result_.out; }

    void closeStdout(); // the reader of the child's standard output goes away
    void signal(int signalNumber);
    pid_t pid() const { return pid_; }

    // Reads to the end of both streams (killing the child after `timeoutMs`) and reaps it.
    ProcessResult wait(int timeoutMs = 60000);

  private:
    pid_t pid_ = -1;
    int fds_[2] = {-1, -1}; // read ends of the child's standard output and error
    ProcessResult result_;
};

// Runs `args` (args[0] is the program) with `extraEnv` ("NAME=value") added; when
// `interruptAfterText` is not empty, sends SIGINT once stdout holds that text.
ProcessResult runProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv = {},
                         const std::string& interruptAfterText = {}, int timeoutMs = 60000);

// The quarbel under test, and an environment in which it finds no Vulkan device (a GPU
// benchmark is then skipped at once, which makes the shortest real run).
inline const std::string kQuarbel = QUARBEL_BINARY;
inline const std::vector<std::string> kNoVulkan = {"VK_ICD_FILENAMES=/nonexistent/quarbel-no-vulkan.json",
                                                   "VK_DRIVER_FILES=/nonexistent/quarbel-no-vulkan.json"};

// quarbel with `args`; the second expects it to exit 0.
ProcessResult runQuarbel(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv = {});
ProcessResult runQuarbelOk(const std::vector<std::string>& args,
                           const std::vector<std::string>& extraEnv = {});

// A command line (words split at spaces) and what quarbel answers: its exit status and a part of
// standard error, each "@" standing for a folder the test names. A refusal (2) prints no output.
struct Answer {
    std::string command;
    int exitCode;
    std::string err;
};
std::string expandAt(std::string text, const std::string& at);
std::vector<std::string> words(const std::string& command);
void expectAnswers(const std::vector<Answer>& rows, const std::vector<std::string>& extraEnv = {},
                   const std::string& at = {});

std::string readFile(const std::string& path);

// How often `part` occurs in `text`, not overlapping, and whether it does at all.
std::size_t count(const std::string& text, const std::string& part);
inline bool mentions(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace quarbel::test
