// SPDX-License-Identifier: Apache-2.0
#include "run/run_clock.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

using namespace quarbel;

TEST(RunClock, ElapsedAndProgressFollowTheTicksUntilTheClockStops) {
    QDateTime now = QDateTime::currentDateTime();
    int ticks = 0;
    RunClock clock([&] { return now; }, [&] { ++ticks; });
    clock.start(10);
    ASSERT_TRUE(test::processEventsUntil([&] { return ticks > 0; })) << "it ticks by itself";
    const struct {
        int advanceMs;
        double elapsed, progress;
    } steps[] = {{5000, 5, 0.5}, {60000, 65, 1.0}, {-70000, 0, 0}};
    for (const auto& step : steps) {
        now = now.addMSecs(step.advanceMs);
        clock.tick();
        EXPECT_DOUBLE_EQ(clock.elapsed(), step.elapsed) << step.advanceMs;
        EXPECT_DOUBLE_EQ(clock.progress(), step.progress) << step.advanceMs;
    }
    clock.stop();
    EXPECT_FALSE(clock.ticking());
    now = now.addMSecs(5000);
    EXPECT_EQ(clock.elapsed(), 0);
}
