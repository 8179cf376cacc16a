// SPDX-License-Identifier: Apache-2.0
// The mark a run leaves while it lasts: where it goes, what a finished or killed run leaves
// behind (nothing that counts) and the warning a second run logs. Two real processes
// meeting are tested on the command line (tst_cli).
#include "run/run_lock.h"
#include "support/other_quarbel_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <unistd.h>
#include <vector>

using namespace quarbel;
namespace fs = std::filesystem;

TEST(RunLock, EverySessionOfTheUserFindsTheSameFolderWhateverItsRuntimeDirectory) {
    const char* saved = std::getenv("QUARBEL_RUN_LOCK_DIR");
    const std::string savedValue = saved != nullptr ? saved : "";
    const std::string shared = "/tmp/quarbel-" + std::to_string(::geteuid());
    ::unsetenv("QUARBEL_RUN_LOCK_DIR");
    for (const char* runtime : {"/run/user/1000", ""}) {
        ::setenv("XDG_RUNTIME_DIR", runtime, 1);
        EXPECT_EQ(RunLock::defaultDirectory(), shared) << runtime;
    }
    ::setenv("QUARBEL_RUN_LOCK_DIR", "/somewhere/else", 1);
    EXPECT_EQ(RunLock::defaultDirectory(), "/somewhere/else");
    if (saved != nullptr)
        ::setenv("QUARBEL_RUN_LOCK_DIR", savedValue.c_str(), 1);
    else
        ::unsetenv("QUARBEL_RUN_LOCK_DIR");
}

TEST(RunLock, SaysWhyARunCouldNotBeMarked) {
    test::TempDir dir;
    std::ofstream(dir.path() / "file") << "x";
    const RunLock onAFile(dir.path() / "file");
    EXPECT_FALSE(onAFile.held());
    EXPECT_EQ(unmarkedRunWarning(onAFile),
              "Another Quarbel run at the same time would not be noticed: cannot use " +
                  (dir.path() / "file").string() + ": it is not a folder.");
    fs::create_directory(dir.path() / "locked");
    fs::permissions(dir.path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    const RunLock unwritable(dir.path() / "locked");
    if (::geteuid() != 0) { // root writes anyway
        EXPECT_FALSE(unwritable.held());
        EXPECT_NE(unmarkedRunWarning(unwritable).find("cannot mark the run in"), std::string::npos);
    }
    fs::permissions(dir.path() / "locked", fs::perms::owner_all);
    const RunLock held(dir.path() / "locked");
    EXPECT_EQ(unmarkedRunWarning(held), "");
}

TEST(RunLock, MarksTheRunUntilItEndsAndClearsMarksOfEndedProcesses) {
    test::TempDir dir;
    const fs::path directory = dir.path() / "quarbel";
    const fs::path own = directory / ("run-" + std::to_string(::getpid()) + ".lock");
    {
        const RunLock first(directory);
        EXPECT_TRUE(first.held());
        EXPECT_EQ(fs::status(directory).permissions(), fs::perms::owner_all) << "made private to the user";
        std::ifstream file(own);
        std::string pid;
        file >> pid;
        EXPECT_EQ(pid, std::to_string(::getpid()));
    }
    EXPECT_TRUE(fs::is_empty(directory)) << "the run's mark goes when it ends";

    std::ofstream(directory / "run-999999999.lock") << "999999999\n"; // left by a killed process
    {
        const RunLock second(directory);
        EXPECT_TRUE(second.otherRuns().empty()) << "an unlocked mark is left over, not a run";
        EXPECT_FALSE(fs::exists(directory / "run-999999999.lock"));
    }

    // A directory that is a link somewhere else is not used.
    fs::create_directory_symlink(directory, dir.path() / "link");
    const RunLock refused(dir.path() / "link");
    EXPECT_FALSE(refused.held());
    EXPECT_TRUE(fs::is_empty(directory));
}

TEST(RunLock, WarningNamesTheOtherRuns) {
    EXPECT_EQ(concurrentRunWarning(std::vector<pid_t>{}), "");
    EXPECT_EQ(concurrentRunWarning(std::vector<pid_t>{1234}),
              "Another Quarbel run is in progress (pid 1234): both runs' results will be skewed.");
    EXPECT_EQ(concurrentRunWarning(std::vector<pid_t>{1234, 5678}),
              "Other Quarbel runs are in progress (pids 1234, 5678): all "
              "their results and this run's will be skewed.");
}

TEST(RunLock, ARunFindsTheRunsBesideItAndWhatTheyAreOn) {
    test::TempDir dir;
    const fs::path directory = dir.path() / "quarbel";
    test::OtherQuarbelRun other(directory, "SSD Sequential");
    ASSERT_TRUE(other.marked());
    const auto others = RunLock::runsIn(directory);
    EXPECT_EQ(others, (std::vector<RunLock::OtherRun>{{other.pid(), "SSD Sequential"}}));
    EXPECT_EQ(runsBesideThisWarning(others), "Another Quarbel run is going on beside this one (pid " +
                                                 std::to_string(other.pid()) +
                                                 ", on SSD Sequential): the results of both are skewed.");
    other.end();
    EXPECT_TRUE(RunLock::runsIn(directory).empty()) << "a run that ended is not found";
}
