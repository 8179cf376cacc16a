// SPDX-License-Identifier: Apache-2.0
#include "run/run_lock.h"
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
    const std::optional<std::string> savedValue = saved ? std::optional<std::string>(saved) : std::nullopt;
    ::unsetenv("QUARBEL_RUN_LOCK_DIR");
    for (const char* runtime : {"/run/user/1000", ""}) {
        ::setenv("XDG_RUNTIME_DIR", runtime, 1);
        EXPECT_EQ(RunLock::defaultDirectory(), "/tmp/quarbel-" + std::to_string(::geteuid())) << runtime;
    }
    ::setenv("QUARBEL_RUN_LOCK_DIR", "/somewhere/else", 1);
    EXPECT_EQ(RunLock::defaultDirectory(), "/somewhere/else");
    savedValue ? ::setenv("QUARBEL_RUN_LOCK_DIR", savedValue->c_str(), 1)
               : ::unsetenv("QUARBEL_RUN_LOCK_DIR");
}

TEST(RunLock, SaysWhyARunCouldNotBeMarked) {
    test::TempDir dir;
    std::ofstream(dir.path() / "file") << "x";
    EXPECT_EQ(unmarkedRunWarning(RunLock(dir.path() / "file")),
              "Another Quarbel run at the same time would not be noticed: cannot use " +
                  (dir.path() / "file").string() + ": it is not a folder.");
    fs::create_directory(dir.path() / "locked");
    fs::permissions(dir.path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    if (::geteuid() != 0) { // root writes anyway
        const RunLock unwritable(dir.path() / "locked");
        EXPECT_FALSE(unwritable.held());
        EXPECT_NE(unmarkedRunWarning(unwritable).find("cannot mark the run in"), std::string::npos);
    }
    fs::permissions(dir.path() / "locked", fs::perms::owner_all);
    EXPECT_EQ(unmarkedRunWarning(RunLock(dir.path() / "locked")), "");
}

TEST(RunLock, MarksTheRunUntilItEndsAndClearsMarksOfEndedProcesses) {
    test::TempDir dir;
    const fs::path directory = dir.path() / "quarbel";
    {
        const RunLock first(directory);
        EXPECT_TRUE(first.held());
        EXPECT_EQ(fs::status(directory).permissions(), fs::perms::owner_all) << "made private to the user";
        std::string pid;
        std::ifstream(directory / ("run-" + std::to_string(::getpid()) + ".lock")) >> pid;
        EXPECT_EQ(pid, std::to_string(::getpid()));
    }
    EXPECT_TRUE(fs::is_empty(directory)) << "the run's mark goes when it ends";

    std::ofstream(directory / "run-999999999.lock") << "999999999\n"; // left by a killed process
    {
        const RunLock second(directory);
        EXPECT_TRUE(second.otherRuns().empty()) << "neither a leftover mark nor its own is another run";
        EXPECT_FALSE(fs::exists(directory / "run-999999999.lock"));
    }

    // A directory that is a link somewhere else is not used.
    fs::create_directory_symlink(directory, dir.path() / "link");
    EXPECT_FALSE(RunLock(dir.path() / "link").held());
    EXPECT_TRUE(fs::is_empty(directory));
}

TEST(RunLock, WarningNamesTheOtherRuns) { // one other run: see ConcurrentRunWatch
    EXPECT_EQ(concurrentRunWarning(std::vector<pid_t>{}), "");
    EXPECT_EQ(concurrentRunWarning(std::vector<pid_t>{1234, 5678}),
              "Other Quarbel runs are in progress (pids 1234, 5678): all "
              "their results and this run's will be skewed.");
}
