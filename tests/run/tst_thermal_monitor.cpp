// SPDX-License-Identifier: Apache-2.0
#include "run/background_tasks.h"
#include "run/thermal_monitor.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace quarbel;

namespace {
TemperatureSnapshot celsius(double cpu) {
    TemperatureSnapshot snapshot;
    snapshot.cpuCelsius = cpu;
    return snapshot;
}
} // namespace

TEST(ThermalMonitor, PeaksRiseOnlyWhileABenchmarkRuns) {
    QObject receiver;
    BackgroundTasks background(&receiver);
    ThermalMonitor monitor(background, [] { return QLTemperatureReading{}; }, {});
    monitor.apply(celsius(55));
    monitor.beginRun();
    monitor.setPeaksRising(true);
    monitor.apply(celsius(70));
    monitor.apply(celsius(65));
    monitor.setPeaksRising(false);
    monitor.apply(celsius(95));
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
    std::vector<ThermalMonitor::Reading> published;
    ThermalMonitor monitor(
        background,
        [&] {
            ++reads;
            while (!gate.load())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            return QLTemperatureReading{50, 60, 1, 1};
        },
        {{}, [&](const ThermalMonitor::Reading& reading) { published.push_back(reading); }, {}});
    monitor.setInterval(2.0);
    monitor.read([] { return ThrottleSample{std::nullopt, {"k10temp temp1"}}; });
    monitor.read({});
    test::processEventsFor(50);
    EXPECT_EQ(reads.load(), 1) << "a read in flight makes later requests skip";
    EXPECT_EQ(monitor.interval(), 2.0);
    gate = true;
    ASSERT_TRUE(test::processEventsUntil([&] { return published.size() == 1; }));
    EXPECT_EQ(monitor.snapshot().gpuCelsius, 60.0);
    ASSERT_TRUE(published[0].throttle);
    EXPECT_EQ(published[0].throttle->sensorsAtCritical, std::vector<std::string>{"k10temp temp1"});
    monitor.read({});
    ASSERT_TRUE(test::processEventsUntil([&] { return published.size() == 2; }));
    EXPECT_FALSE(published[1].throttle);
}
