// SPDX-License-Identifier: Apache-2.0
#include "run/concurrent_run_watch.h"
#include "support/other_quarbel_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace quarbel;

TEST(ConcurrentRunWatch, NoticesEachOtherRunOnceAndForgetsItWhenItEnds) {
    test::TempDir dir;
    const std::string directory = dir.path() / "locks";
    test::OtherQuarbelRun first(directory, "SSD Random");
    ConcurrentRunWatch watch(directory);
    const ConcurrentRunWatch::Start start = watch.begin();
    EXPECT_TRUE(watch.active());
    EXPECT_EQ(start.othersWarning, "Another Quarbel run is in progress (pid " + std::to_string(first.pid()) +
                                       "): both runs' results will be skewed.");
    EXPECT_EQ(start.unmarkedWarning, "");
    EXPECT_TRUE(watch.look().empty()) << "said as the run started";
    EXPECT_NE(watch.warning().find("on SSD Random"), std::string::npos) << watch.warning();
    {
        test::OtherQuarbelRun second(directory, "CPU Integer");
        EXPECT_EQ(watch.look(),
                  std::vector<std::string>{"Another Quarbel run is going on beside this one (pid " +
                                           std::to_string(second.pid()) +
                                           ", on CPU Integer): the results of both are skewed."});
        EXPECT_TRUE(watch.look().empty()) << "each run is said once";
    }
    first.end();
    EXPECT_TRUE(watch.look().empty());
    EXPECT_EQ(watch.warning(), "") << "a run that ended is not found";
    EXPECT_TRUE(watch.others().empty()) << "its own mark is not another run";
    watch.end();
    EXPECT_FALSE(watch.active());
    EXPECT_FALSE(std::filesystem::exists(directory + "/run-" + std::to_string(::getpid()) + ".lock"))
        << "its mark goes with the run";
}
