// SPDX-License-Identifier: Apache-2.0
#include "run/background_tasks.h"
#include "run/thermal_monitor.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace quarbel;

TEST(ThermalMonitor, PeaksRiseOnlyWhileABenchmarkRuns) {
    QObject receiver;
    BackgroundTasks background(&receiver);
    ThermalMonitor monitor(background, [] { return QLTemperatureReading{}; }, {});
    monitor.apply({55, {}, {}});
    monitor.beginRun();
    monitor.setPeaksRising(true);
    monitor.apply({70, {}, {}});
    monitor.apply({65, {}, {}});
    monitor.setPeaksRising(false);
    monitor.apply({95, {}, {}});
    EXPECT_EQ(monitor.peakCPU(), 70.0) << "the peak never falls, and stops following between benchmarks";
    EXPECT_EQ(monitor.snapshot().cpuCelsius, 95.0);
    EXPECT_FALSE(monitor.peakGPU());
    monitor.beginRun();
    EXPECT_EQ(monitor.peakCPU(), 95.0) << "a new run starts from the latest reading";
}

TEST(ThermalMonitor, ReadsOffTheMainThreadNeverTwoAtOnce) {
    QObject receiver;
    BackgroundTasks background(&receiver);
    std::atomic<int> reads = 0;
    std::atomic<bool> gate = false;
    int published = 0;
    ThermalMonitor monitor(background,
                           [&] {
                               ++reads;
                               while (!gate.load())
                                   std::this_thread::sleep_for(std::chrono::milliseconds(1));
                               return QLTemperatureReading{50, 60, 1, 1};
                           },
                           {{}, [&](const ThermalMonitor::Reading&) { ++published; }, {}});
    monitor.read({});
    monitor.read({});
    test::processEventsFor(50);
    EXPECT_EQ(reads.load(), 1) << "a read in flight makes later requests skip";
    gate = true;
    ASSERT_TRUE(test::processEventsUntil([&] { return published == 1; }));
    EXPECT_EQ(monitor.snapshot().gpuCelsius, 60.0);
    monitor.read({});
    ASSERT_TRUE(test::processEventsUntil([&] { return published == 2; })) << "and the next read goes ahead";
}
