// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/checksum_text.h"
#include "workloads/cpu/parallel.h"

#include <gtest/gtest.h>

#include <sched.h>

#include <thread>

using namespace quarbel::cpu;

TEST(ChecksumText, IsLowerCaseHexWithoutLeadingZerosCutToEightCharacters) {
    EXPECT_EQ(checksumPrefix(0), "0");
    EXPECT_EQ(checksumPrefix(0xabc), "abc");
    EXPECT_EQ(checksumPrefix(0x1A2B3C4D), "1a2b3c4d");
    EXPECT_EQ(checksumPrefix(0x1a2b3c4d5e6fULL), "1a2b3c4d");
    EXPECT_EQ(checksumPrefix(0xffffffffffffffffULL), "ffffffff");
}

TEST(ActiveProcessorCount, FollowsTheAffinityMaskOfTheCallingThread) {
    ASSERT_GE(activeProcessorCount(), 1);
    std::int64_t pinnedCount = 0;
    std::int64_t pinnedWorkers = 0;
    std::thread pinned([&] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<int>(sched_getcpu()), &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
        pinnedCount = activeProcessorCount();
        pinnedWorkers = multiCoreWorkerCount();
    });
    pinned.join();
    EXPECT_EQ(pinnedCount, 1);
    EXPECT_EQ(pinnedWorkers, 1);
    EXPECT_EQ(multiCoreWorkerCount(), activeProcessorCount() >= 2 ? activeProcessorCount() : 1);
}
