// SPDX-License-Identifier: Apache-2.0
// quarbel under hostile conditions: broken output, signals, odd report paths, full or
// limited resources. Each row runs the real binary with a private TMPDIR, which must be
// empty afterwards, and is never allowed to die of a signal.
#include "process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quarbel::test;
namespace fs = std::filesystem;

namespace {

constexpr int kTimeoutMs = 30000;

// A row's TMPDIR (`tmp`) and `work`, which holds report targets and stands for each "@" of the row.
struct Sandbox {
    Sandbox() {
        fs::create_directory(tmp = root.path() / "tmp");
        fs::create_directory(work = root.path() / "work");
    }
    std::string expand(const std::string& text) const { return expandAt(text, work.string()); }
    bool scratchFileExists() const {
        std::error_code ignored;
        for (const auto& entry : fs::recursive_directory_iterator(tmp, ignored))
            if (entry.is_regular_file()) return true;
        return false;
    }
    std::string gone() const { return (work / "gone").string(); } // a working directory the child removes

    TempDir root;
    fs::path tmp, work;
};

// What the test does to the running child, on the storage test's scratch file or the first start.
enum class During { nothing, closeStdoutOnScratchFile, hangUpOnScratchFile, removeWorkOnStart };

using Step = std::function<void(const Sandbox&)>;

struct FaultCase {
    std::string name;
    std::string command; // words split at spaces
    int exitCode = 0;
    std::string out = {};              // text standard output must hold
    std::vector<std::string> err = {}; // texts standard error must hold
    std::string absent = {};           // text standard output must not hold
    std::string once = {};             // text standard output holds exactly once
    std::string report = {};           // a file in work ("-": standard output) that holds a whole report
    std::string symlink = {};          // a link in work that stays a link
    std::string row = {}, detail = {}; // the detail line printed under the result row that begins with `row`
    During during = During::nothing;
    std::string env = {};
    Step prepare = {}, inChild = {};
    std::function<std::string()> unavailable = {}; // why this machine cannot run the row
    Step check = {};
};

// Every thread start fails: a process limit of one, for a user other than root.
void forbidThreads() {
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))
        _exit(126);
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
constexpr auto kOwnerOnly = fs::perms::owner_read | fs::perms::owner_write;
const std::string kVisual = "run metalVisual --quick --json @/";

// clang-format off
const std::vector<FaultCase> kCases = {
    {.name = "ClosedStdoutPipeDuringStorageTest", .command = "run ssdSequential --quick", .exitCode = 1,
     .err = {"cannot write to standard output: Broken pipe; stopping the run"}, .during = During::closeStdoutOnScratchFile},
    {.name = "HangUpDuringStorageTest", .command = "run ssdSequential cpuInteger --quick", .exitCode = 130,
     .out = "] Run stopped\n", .absent = "CPU Single-Core:", .during = During::hangUpOnScratchFile},
    {.name = "ListIntoAFullDevice", .command = "list", .exitCode = 1,
     .err = {"quarbel: cannot write to standard output: No space left on device"},
     .inChild = [](const Sandbox&) { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }},
    {.name = "JsonOverAPrivateReportKeepsItsMode", .command = kVisual + "r.json", .report = "r.json",
     .prepare = [](const Sandbox& s) { std::ofstream(s.work / "r.json") << "old"; fs::permissions(s.work / "r.json", kOwnerOnly); },
     .check = [](const Sandbox& s) { EXPECT_EQ(fs::status(s.work / "r.json").permissions(), kOwnerOnly); }},
    {.name = "JsonThroughASymlinkReplacesItsTarget", .command = kVisual + "link.json", .report = "target.json", .symlink = "link.json",
     .prepare = [](const Sandbox& s) { std::ofstream(s.work / "target.json") << "old"; fs::create_symlink("target.json", s.work / "link.json"); }},
    {.name = "JsonThroughADanglingSymlinkCreatesItsTarget", .command = kVisual + "link.json", .report = "sub/new.json", .symlink = "link.json",
     .prepare = [](const Sandbox& s) { fs::create_directory(s.work / "sub"); fs::create_symlink("sub/new.json", s.work / "link.json"); }},
    {.name = "JsonToStandardOutputSendsTheTableToStandardError", .command = "run metalVisual --quick --json -",
     .err = {"Global score: "}, .report = "-"},
    {.name = "JsonWithTheLongestFileName", .command = kVisual + kLongName, .report = kLongName},
    {.name = "JsonRelativeToARemovedWorkingDirectory", .command = "run cpuInteger --json r.json", .exitCode = 2,
     .err = {"--json r.json: the working directory cannot be found"},
     .prepare = [](const Sandbox& s) { fs::create_directory(s.gone()); },
     .inChild = [](const Sandbox& s) { if (chdir(s.gone().c_str()) != 0 || rmdir(s.gone().c_str()) != 0) _exit(126); }},
    // The report's folder goes while the run runs: the run fails, and the report is not lost.
    {.name = "JsonWhoseFolderGoesDuringTheRun", .command = "run cpuInteger --quick --no-history --json @/r.json", .exitCode = 1,
     .err = {"; the report follows on standard error\n{", "\"CPU Single-Core\""}, .during = During::removeWorkOnStart},
    {.name = "FailedBenchmarkShowsItsDetail", .command = "run ssdSequential --quick", .exitCode = 1, .out = "SSD Sequential: failed",
     .row = "SSD Sequential (quick)", .detail = "SSD sequential test failed: Not a directory", .env = "TMPDIR=@/file/tmp",
     .prepare = [](const Sandbox& s) { std::ofstream(s.work / "file") << "not a directory"; }},
    {.name = "FileSizeLimitFailsTheWriteInsteadOfKilling", .command = "run ssdSequential --quick", .exitCode = 1,
     .row = "SSD Sequential (quick)", .detail = "SSD sequential test failed: File too large",
     .inChild = [](const Sandbox&) { const rlimit limit{100 << 20, 100 << 20}; setrlimit(RLIMIT_FSIZE, &limit); }},
    {.name = "ThreadsThatCannotStartFailTheBenchmark", .command = "run cpuInteger --quick", .exitCode = 1,
     .once = "Temperatures not read: ", .row = "CPU Single-Core (quick)",
     .detail = "Quarbel could not start a worker thread: Resource temporarily unavailable.",
     .inChild = [](const Sandbox&) { forbidThreads(); }, .unavailable = threadsCannotBeForbidden},
};
// clang-format on

class Faults : public testing::TestWithParam<FaultCase> {};

TEST_P(Faults, EndCleanlyWithTheDocumentedExitStatus) {
    const FaultCase& c = GetParam();
    if (const std::string why = c.unavailable ? c.unavailable() : ""; !why.empty()) GTEST_SKIP() << why;
    Sandbox sandbox;
    if (c.prepare) c.prepare(sandbox);
    std::vector<std::string> args = words(kQuarbel + " " + sandbox.expand(c.command));
    std::vector<std::string> env = kNoVulkan;
    env.push_back("TMPDIR=" + sandbox.tmp.string());
    if (!c.env.empty()) env.push_back(sandbox.expand(c.env));

    ChildProcess child(args, env, c.inChild ? [&] { c.inChild(sandbox); } : std::function<void()>{});
    if (c.during == During::removeWorkOnStart) {
        ASSERT_TRUE(child.readUntil([&] { return mentions(child.out(), "] Running "); }, kTimeoutMs));
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
    EXPECT_TRUE(mentions(result.out, c.out)) << result.out;
    for (const auto& text : c.err)
        EXPECT_TRUE(mentions(result.err, text)) << result.err;
    EXPECT_TRUE(c.absent.empty() || !mentions(result.out, c.absent)) << result.out;
    EXPECT_TRUE(c.once.empty() || count(result.out, c.once) == 1) << "said once: " << result.out;
    EXPECT_TRUE(c.exitCode != 2 || result.out.empty()) << "nothing may run after bad input: " << result.out;
    if (!c.report.empty()) {
        const std::string text = c.report == "-" ? result.out : readFile(sandbox.work / c.report);
        ASSERT_TRUE(nlohmann::json::accept(text)) << c.report << ": " << text;
        EXPECT_EQ(nlohmann::json::parse(text)["schema"], 1);
    }
    EXPECT_TRUE(c.symlink.empty() || fs::is_symlink(sandbox.work / c.symlink));
    if (!c.detail.empty()) { // the detail line sits right under its row
        const auto at = result.out.find("\n    " + c.detail + "\n");
        ASSERT_NE(at, std::string::npos) << result.out;
        EXPECT_TRUE(result.out.substr(result.out.rfind('\n', at - 1) + 1).starts_with(c.row)) << result.out;
    }
    if (c.check) c.check(sandbox);
    EXPECT_TRUE(fs::is_empty(sandbox.tmp)) << "scratch data left behind";
    std::error_code workGone;
    for (const auto& entry : fs::recursive_directory_iterator(sandbox.work, workGone))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".quarbel-")) << entry.path();
}

INSTANTIATE_TEST_SUITE_P(QuarbelCommand, Faults, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<FaultCase>& row) { return row.param.name; });

} // namespace
