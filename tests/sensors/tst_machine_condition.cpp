// SPDX-License-Identifier: Apache-2.0
#include "fake_tree.h"
#include "sensors/machine_condition.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

ConditionLocations locationsOf(const FakeTree& tree) { return {tree.path("sys"), tree.path("proc")}; }

} // namespace

TEST(MachineCondition, GovernorsBatteryAndLoadFromSysAndProc) {
    const struct {
        std::vector<std::string> governors; // per CPU, "" for a CPU without cpufreq
        const char* supplies;               // rows below class/power_supply
        std::vector<std::string> expectedGovernors;
        std::optional<bool> onBattery;
        std::vector<std::string> badges;
    } cases[] = {// clang-format off
        {{"powersave", "powersave"}, "AC/type=Mains AC/online=0 BAT0/type=Battery BAT0/status=Discharging",
         {"powersave"}, true, {"on battery", "powersave governor"}},
        {{"schedutil"}, "AC/type=Mains AC/online=1 BAT0/type=Battery BAT0/status=Charging",
         {"schedutil"}, false, {"schedutil governor"}},
        // A discharging mouse is not the machine's battery.
        {{"performance", ""}, "AC/type=Mains AC/online=1 mouse/type=Battery mouse/status=Discharging mouse/scope=Device",
         {"performance"}, false, {}},
        {{"performance", "powersave"}, "", {"performance", "powersave"}, std::nullopt, {"powersave governor"}},
        {{"", ""}, "", {}, std::nullopt, {}}};
    // clang-format on
    for (const auto& c : cases) {
        FakeTree tree(c.supplies, "sys/class/power_supply/");
        for (std::size_t cpu = 0; cpu < c.governors.size(); ++cpu) {
            const std::string dir = "sys/devices/system/cpu/cpu" + std::to_string(cpu);
            tree.write(dir + "/online", "1\n");
            if (!c.governors[cpu].empty())
                tree.write(dir + "/cpufreq/scaling_governor", c.governors[cpu] + "\n");
        }
        tree.writeRows("sys/devices/system/cpu/cpufreq/policy0/scaling_governor=ignored");
        tree.write("proc/loadavg", "1.73 0.90 0.41 3/210 4242\n");
        const MachineCondition condition = readMachineCondition(locationsOf(tree));
        EXPECT_EQ(condition.governors, c.expectedGovernors) << c.supplies;
        EXPECT_EQ(condition.onBattery, c.onBattery) << c.supplies;
        EXPECT_DOUBLE_EQ(condition.loadAverage.value_or(-1), 1.73);
        EXPECT_EQ(conditionBadges(condition, false), c.badges) << c.supplies;
    }
}

TEST(MachineCondition, BusyProcessesBetweenTwoSamples) {
    FakeTree tree;
    const auto write = [&](int pid, const std::string& name, unsigned long long ticks) {
        tree.write("proc/" + std::to_string(pid) + "/stat",
                   std::to_string(pid) + " (" + name + ") R 1 1 1 0 -1 4194304 100 0 0 0 " +
                       std::to_string(ticks) + " 0 0 0 20 0 1 0 100 1000 100\n");
    };
    write(10, "ffmpeg", 1000);
    write(11, "idle daemon", 50);
    write(12, "quarbel", 0); // ourselves
    write(13, "short-lived", 10);
    write(14, "odd) name (x", 0);
    tree.write("proc/self/stat", "not a process directory");
    ProcessTicks before = readProcessTicks(locationsOf(tree));
    EXPECT_EQ(before.ticks.size(), 5u);

    write(10, "ffmpeg", 1000 + 150); // 1.5 cores over one second at 100 ticks per second
    write(11, "idle daemon", 50 + 10);
    write(12, "quarbel", 200);
    write(14, "odd) name (x", 30);
    write(15, "newcomer", 500);      // not in the first sample
    write(13, "other program", 900); // pid reused
    ProcessTicks after = readProcessTicks(locationsOf(tree));
    after.at = before.at + std::chrono::seconds(1);

    const auto busy = busyProcessesBetween(before, after, 12, 100);
    ASSERT_EQ(busy.size(), 2u);
    EXPECT_EQ(busy[0], (BusyProcess{10, "ffmpeg", 1.5}));
    EXPECT_EQ(std::pair(busy[1].name, std::round(busy[1].cores * 10)),
              std::pair(std::string("odd) name (x"), 3.0));

    MachineCondition condition;
    condition.busyProcesses = busy;
    EXPECT_EQ(conditionBadges(condition, true),
              (std::vector<std::string>{"busy machine", "throttling seen"}));
    condition.busyProcesses.pop_back();
    condition.busyProcesses[0].cores = 1.0; // exactly one core is not yet a busy machine
    EXPECT_TRUE(conditionBadges(condition, false).empty());
}

TEST(MachineCondition, ThrottleSignsFromCriticalSensorsAndFrequencyDrops) {
    // The nvme sensor has no critical mark at all.
    const FakeTree tree(
        "hwmon0/name=k10temp hwmon0/temp1_input=95000 hwmon0/temp1_crit=95000 hwmon0/temp2_input=60000 "
        "hwmon0/temp2_crit=95000 hwmon1/name=nvme hwmon1/temp1_input=40000 hwmon1/temp1_crit=0",
        "sys/class/hwmon/");
    const auto frequencies = [&](long long cpu0, long long cpu1) {
        tree.writeRows("cpu0/cpufreq/scaling_cur_freq=" + std::to_string(cpu0) +
                           " cpu1/cpufreq/scaling_cur_freq=" + std::to_string(cpu1),
                       "sys/devices/system/cpu/");
    };
    frequencies(3'500'000, 2'000'000);
    const ThrottleSample hot = readThrottleSample(locationsOf(tree));
    EXPECT_EQ(hot.highestFrequencyKHz, 3'500'000);
    EXPECT_EQ(hot.sensorsAtCritical, std::vector<std::string>{"k10temp temp1"});

    ThrottleWatch watch;
    watch.observe(hot);
    watch.observe(hot); // the same sensor is noted once
    frequencies(3'000'000, 3'000'000);
    watch.observe(readThrottleSample(locationsOf(tree))); // 86 %: not yet a drop
    watch.beginBenchmark();
    frequencies(2'000'000, 1'000'000);
    watch.observe(readThrottleSample(locationsOf(tree))); // compared within a benchmark only
    frequencies(1'600'000, 1'000'000);
    watch.observe(readThrottleSample(locationsOf(tree))); // 80 % of 2.0 GHz
    frequencies(1'000'000, 1'000'000);
    watch.observe(readThrottleSample(locationsOf(tree))); // noted once
    EXPECT_EQ(watch.signs(), (std::vector<std::string>{"k10temp temp1 at its critical temperature",
                                                       "CPU frequency fell from 2.00 to 1.60 GHz"}));
}
