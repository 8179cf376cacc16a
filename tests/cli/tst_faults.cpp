// SPDX-License-Identifier: Apache-2.0
// quarbel under hostile conditions: broken output, signals, odd report paths, full or
// limited resources. Each row runs the real binary with a private TMPDIR, which must be
// empty afterwards, and is never allowed to die of a signal.
#include "process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quarbel::test;
namespace fs = std::filesystem;

namespace {

constexpr int kTimeoutMs = 30000;

// One row's private directories: `tmp` is the run's TMPDIR, `work` holds report
// targets. Every "@" in a row's arguments and environment stands for `work`.
struct Sandbox {
    Sandbox() {
        std::string pattern = (fs::temp_directory_path() / "quarbel-fault-XXXXXX").string();
        root = mkdtemp(pattern.data());
        tmp = root / "tmp";
        work = root / "work";
        fs::create_directory(tmp);
        fs::create_directory(work);
        gone = (work / "gone").string();
    }
    ~Sandbox() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    std::string expand(std::string text) const {
        for (auto at = text.find('@'); at != std::string::npos;
             at = text.find('@', at + work.native().size()))
            text.replace(at, 1, work.native());
        return text;
    }
    bool scratchFileExists() const {
        std::error_code ignored;
        for (const auto& entry : fs::recursive_directory_iterator(tmp, ignored))
            if (entry.is_regular_file()) return true;
        return false;
    }

    fs::path root, tmp, work;
    std::string gone; // a working directory that the child removes
};

// What the test does to the running child: the storage benchmark's scratch file or the first
// benchmark's start is its cue.
enum class During { nothing, closeStdoutOnScratchFile, hangUpOnScratchFile, removeWorkOnStart };

struct FaultCase {
    std::string name;
    std::vector<std::string> args;
    int exitCode = 0;
    std::string expectedOut = {}; // text standard output must hold
    std::string expectedErr = {}; // text standard error must hold
    During during = During::nothing;
    std::vector<std::string> env = {};
    std::function<void(const Sandbox&)> prepare = {};
    std::function<void(const Sandbox&)> inChild = {};
    std::function<std::string()> unavailable = {}; // why this machine cannot run the row
    std::function<void(const Sandbox&, const ProcessResult&)> check = {};
};

void expectReport(const fs::path& path) {
    const std::string text = readFile(path);
    ASSERT_TRUE(nlohmann::json::accept(text)) << path << ": " << text;
    EXPECT_EQ(nlohmann::json::parse(text)["schema"], 1) << path;
}

// The line of `text` that ends at position `end` (a newline).
std::string lineEndingAt(const std::string& text, std::size_t end) {
    const auto newline = text.rfind('\n', end - 1);
    const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
    return text.substr(start, end - start);
}

void expectDetailUnder(const ProcessResult& result, const std::string& row, const std::string& detail) {
    const auto at = result.out.find("\n    " + detail + "\n");
    ASSERT_NE(at, std::string::npos) << result.out;
    EXPECT_TRUE(lineEndingAt(result.out, at).starts_with(row)) << result.out;
}

// Every thread start fails: a process limit of one, for a user other than root.
void forbidThreads() {
    if (geteuid() == 0) {
        if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) _exit(126);
    }
    const rlimit one{1, 1};
    setrlimit(RLIMIT_NPROC, &one);
}

std::string threadsCannotBeForbidden() {
    const pid_t pid = fork();
    if (pid == 0) {
        forbidThreads();
        pthread_t thread;
        const bool refused = pthread_create(
                                 &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr) != 0;
        _exit(refused && access(kQuarbel.c_str(), X_OK) == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
    return "a process limit does not stop thread creation here (or the binary is out of reach)";
}

const std::string kLongName(255, 'r');

const std::vector<FaultCase> kCases = {
    {.name = "ClosedStdoutPipeDuringStorageTest",
     .args = {"run", "ssdSequential", "--quick"},
     .exitCode = 1,
     .expectedErr = "cannot write to standard output: Broken pipe; stopping the run",
     .during = During::closeStdoutOnScratchFile},
    {.name = "HangUpDuringStorageTest",
     .args = {"run", "ssdSequential", "cpuInteger", "--quick"},
     .exitCode = 130,
     .expectedOut = "] Run stopped\n",
     .during = During::hangUpOnScratchFile,
     .check = [](const Sandbox&,
                 const ProcessResult& r) { EXPECT_EQ(r.out.find("CPU Single-Core:"), std::string::npos); }},
    {.name = "ListIntoAFullDevice",
     .args = {"list"},
     .exitCode = 1,
     .expectedErr = "quarbel: cannot write to standard output: No space left on device",
     .inChild = [](const Sandbox&) { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }},
    {.name = "JsonOverAPrivateReportKeepsItsMode",
     .args = {"run", "metalVisual", "--quick", "--json", "@/r.json"},
     .exitCode = 0,
     .prepare =
         [](const Sandbox& s) {
             std::ofstream(s.work / "r.json") << "old";
             fs::permissions(s.work / "r.json", fs::perms::owner_read | fs::perms::owner_write);
         },
     .check =
         [](const Sandbox& s, const ProcessResult&) {
             expectReport(s.work / "r.json");
             EXPECT_EQ(fs::status(s.work / "r.json").permissions(),
                       fs::perms::owner_read | fs::perms::owner_write);
         }},
    {.name = "JsonThroughASymlinkReplacesItsTarget",
     .args = {"run", "metalVisual", "--quick", "--json", "@/link.json"},
     .exitCode = 0,
     .prepare =
         [](const Sandbox& s) {
             std::ofstream(s.work / "target.json") << "old";
             fs::create_symlink("target.json", s.work / "link.json");
         },
     .check =
         [](const Sandbox& s, const ProcessResult&) {
             EXPECT_TRUE(fs::is_symlink(s.work / "link.json"));
             expectReport(s.work / "target.json");
         }},
    {.name = "JsonThroughADanglingSymlinkCreatesItsTarget",
     .args = {"run", "metalVisual", "--quick", "--json", "@/link.json"},
     .exitCode = 0,
     .prepare =
         [](const Sandbox& s) {
             fs::create_directory(s.work / "sub");
             fs::create_symlink("sub/new.json", s.work / "link.json");
         },
     .check =
         [](const Sandbox& s, const ProcessResult&) {
             EXPECT_TRUE(fs::is_symlink(s.work / "link.json"));
             expectReport(s.work / "sub" / "new.json");
         }},
    {.name = "JsonToStandardOutputSendsTheTableToStandardError",
     .args = {"run", "metalVisual", "--quick", "--json", "-"},
     .exitCode = 0,
     .expectedErr = "Global score: ",
     .check =
         [](const Sandbox&, const ProcessResult& r) {
             EXPECT_TRUE(nlohmann::json::accept(r.out)) << "nothing but the report: " << r.out;
         }},
    {.name = "JsonWithTheLongestFileName",
     .args = {"run", "metalVisual", "--quick", "--json", "@/" + kLongName},
     .exitCode = 0,
     .check = [](const Sandbox& s, const ProcessResult&) { expectReport(s.work / kLongName); }},
    {.name = "JsonRelativeToARemovedWorkingDirectory",
     .args = {"run", "cpuInteger", "--json", "r.json"},
     .exitCode = 2,
     .expectedErr = "--json r.json: the working directory cannot be found",
     .prepare = [](const Sandbox& s) { fs::create_directory(s.gone); },
     .inChild =
         [](const Sandbox& s) {
             if (chdir(s.gone.c_str()) != 0 || rmdir(s.gone.c_str()) != 0) _exit(126);
         }},
    // The report's folder goes while the run runs: the run fails, and the report is not lost.
    {.name = "JsonWhoseFolderGoesDuringTheRun",
     .args = {"run", "cpuInteger", "--quick", "--no-history", "--json", "@/r.json"},
     .exitCode = 1,
     .expectedErr = "; the report follows on standard error\n{",
     .during = During::removeWorkOnStart,
     .check =
         [](const Sandbox&, const ProcessResult& r) {
             EXPECT_NE(r.err.find("\"CPU Single-Core\""), std::string::npos);
         }},
    {.name = "FailedBenchmarkShowsItsDetail",
     .args = {"run", "ssdSequential", "--quick"},
     .exitCode = 1,
     .expectedOut = "SSD Sequential: failed",
     .env = {"TMPDIR=@/file/tmp"},
     .prepare = [](const Sandbox& s) { std::ofstream(s.work / "file") << "not a directory"; },
     .check =
         [](const Sandbox&, const ProcessResult& r) {
             expectDetailUnder(r, "SSD Sequential (quick)", "SSD sequential test failed: Not a directory");
         }},
    {.name = "FileSizeLimitFailsTheWriteInsteadOfKilling",
     .args = {"run", "ssdSequential", "--quick"},
     .exitCode = 1,
     .inChild =
         [](const Sandbox&) {
             const rlimit limit{100 << 20, 100 << 20};
             setrlimit(RLIMIT_FSIZE, &limit);
         },
     .check =
         [](const Sandbox&, const ProcessResult& r) {
             expectDetailUnder(r, "SSD Sequential (quick)", "SSD sequential test failed: File too large");
         }},
    {.name = "ThreadsThatCannotStartFailTheBenchmark",
     .args = {"run", "cpuInteger", "--quick"},
     .exitCode = 1,
     .inChild = [](const Sandbox&) { forbidThreads(); },
     .unavailable = threadsCannotBeForbidden,
     .check =
         [](const Sandbox&, const ProcessResult& r) {
             expectDetailUnder(r, "CPU Single-Core (quick)",
                               "Quarbel could not start a worker thread: Resource temporarily unavailable.");
             const auto first = r.out.find("Temperatures not read: ");
             EXPECT_NE(first, std::string::npos) << r.out;
             EXPECT_EQ(r.out.find("Temperatures not read: ", first + 1), std::string::npos) << "said once";
         }},
};

// Rows print as their names in test listings.
void PrintTo(const FaultCase& row, std::ostream* out) { *out << row.name; }

class Faults : public testing::TestWithParam<FaultCase> {};

TEST_P(Faults, EndCleanlyWithTheDocumentedExitStatus) {
    const FaultCase& c = GetParam();
    if (c.unavailable) {
        if (const std::string why = c.unavailable(); !why.empty()) GTEST_SKIP() << why;
    }
    Sandbox sandbox;
    if (c.prepare) c.prepare(sandbox);
    std::vector<std::string> args{kQuarbel};
    for (const auto& arg : c.args)
        args.push_back(sandbox.expand(arg));
    std::vector<std::string> env = kNoVulkan;
    env.push_back("TMPDIR=" + sandbox.tmp.string());
    for (const auto& variable : c.env)
        env.push_back(sandbox.expand(variable));

    ChildProcess child(args, env, c.inChild ? [&] { c.inChild(sandbox); } : std::function<void()>{});
    if (c.during == During::removeWorkOnStart) {
        ASSERT_TRUE(
            child.readUntil([&] { return child.out().find("] Running ") != std::string::npos; }, kTimeoutMs));
        fs::remove_all(sandbox.work);
    } else if (c.during != During::nothing) {
        ASSERT_TRUE(child.readUntil([&] { return sandbox.scratchFileExists(); }, kTimeoutMs))
            << "the storage test never wrote its file";
        if (c.during == During::closeStdoutOnScratchFile) child.closeStdout();
        if (c.during == During::hangUpOnScratchFile) child.signal(SIGHUP);
    }
    const ProcessResult result = child.wait(kTimeoutMs);

    EXPECT_EQ(result.killedBy, 0) << "killed by signal " << result.killedBy;
    EXPECT_EQ(result.exitCode, c.exitCode) << result.out << result.err;
    EXPECT_NE(result.out.find(c.expectedOut), std::string::npos) << result.out;
    EXPECT_NE(result.err.find(c.expectedErr), std::string::npos) << result.err;
    if (c.exitCode == 2) {
        EXPECT_EQ(result.out, "") << "nothing may run after bad input";
    }
    if (c.check) c.check(sandbox, result);
    EXPECT_TRUE(fs::is_empty(sandbox.tmp)) << "scratch data left behind";
    std::error_code workGone;
    for (const auto& entry : fs::recursive_directory_iterator(sandbox.work, workGone))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".quarbel-")) << entry.path();
}

INSTANTIATE_TEST_SUITE_P(QuarbelCommand, Faults, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<FaultCase>& row) { return row.param.name; });

} // namespace
