// SPDX-License-Identifier: Apache-2.0
#include "sensors/hwmon_reader.h"

#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

// Writes chip `index` of the tree from "name: label=millidegrees, ..." (sensors numbered from 1, an
// empty label is no label file), or a thermal zone from "zone type=millidegrees".
void addChip(const FakeTree& tree, int index, const std::string& chip) {
    const std::string number = std::to_string(index);
    if (chip.starts_with("zone ")) {
        tree.writeRows("type=" + chip.substr(5, chip.find('=') - 5) +
                           " temp=" + chip.substr(chip.find('=') + 1),
                       "thermal/thermal_zone" + number + "/");
        return;
    }
    const std::string base = "hwmon/hwmon" + number + "/";
    tree.write(base + "name", chip.substr(0, chip.find(':')) + "\n");
    int sensor = 0;
    for (std::size_t at = chip.find(':') + 2, end = 0; at < chip.size(); at = end + 2) {
        end = std::min(chip.find(", ", at), chip.size());
        const std::size_t equals = chip.find('=', at);
        const std::string temp = base + "temp" + std::to_string(++sensor);
        tree.write(temp + "_input", chip.substr(equals + 1, end - equals - 1) + "\n");
        if (equals > at) tree.write(temp + "_label", chip.substr(at, equals - at) + "\n");
    }
}

SensorLocations locationsIn(const FakeTree& tree) { return {tree.path("hwmon"), tree.path("thermal")}; }

} // namespace

TEST(HwmonClassification, CpuAndGpuChipsByNameOthersIgnored) {
    for (const char* name : {"coretemp", "k10temp", "zenpower", "cpu_thermal", "cpu0-thermal", "soc_thermal",
                             "bigcore0_thermal", "x86_pkg_temp", "cpuss0_thermal"})
        EXPECT_EQ(classifySensorName(name), SensorKind::cpu) << name;
    for (const char* name : {"amdgpu", "nouveau", "i915", "xe", "radeon", "gpu_thermal", "gpu-thermal"})
        EXPECT_EQ(classifySensorName(name), SensorKind::gpu) << name;
    for (const char* name :
         {"acpitz", "nvme", "iwlwifi_1", "pch_cannonlake", "nct6775", "drivetemp", "BAT0", "thermal", ""})
        EXPECT_EQ(classifySensorName(name), std::nullopt) << name;
}

TEST(HwmonClassification, LabelsRankTheSensorsOfAChip) {
    const auto cpu = [](int rank) { return std::optional(SensorRole{SensorKind::cpu, rank}); };
    const auto gpu = [](int rank) { return std::optional(SensorRole{SensorKind::gpu, rank}); };
    constexpr int other = kUnpreferredSensorRank;
    const struct {
        const char *chip, *label;
        std::optional<SensorRole> role;
    } cases[] = {{"coretemp", "Package id 1", cpu(0)},
                 {"coretemp", "Physical id 0", cpu(0)},
                 {"coretemp", "Core 3", cpu(other)},
                 {"k10temp", "Tdie", cpu(0)},
                 {"zenpower", "Tctl", cpu(1)},
                 {"k10temp", "Tccd1", cpu(other)},
                 {"cpu_thermal", "temp1", cpu(other)},
                 {"amdgpu", "edge", gpu(0)},
                 {"amdgpu", "junction", gpu(other)},
                 {"xe", "pkg", gpu(0)},
                 {"nouveau", "", gpu(other)},
                 {"nvme", "Composite", {}},
                 {"nct6775", "CPUTIN", {}}};
    for (const auto& c : cases)
        EXPECT_EQ(classifySensor(c.chip, c.label), c.role) << c.chip << " / " << c.label;
}

TEST(HwmonReader, PicksEachChannelsSensorFromTheChipsAndZones) {
    const struct {
        std::optional<double> cpu, gpu;
        std::vector<std::string> chips;
    } cases[] = {
        // clang-format off
        {55.0, 48.0, {"acpitz: =91000", "coretemp: Package id 0=55000, Core 0=60000, Core 1=62000",
                      "nvme: Composite=70850", "amdgpu: edge=48000, junction=65000, mem=80000", "iwlwifi_1: =99000"}},
        // A package stuck at 150 °C falls back to the cores; 200 °C and garbage are skipped.
        {58.5, {}, {"coretemp: Package id 0=150000, Core 0=58500, Core 1=200000, Core 2=n/a", "nouveau: =-40000"}},
        {63.0, 52.25, {"coretemp: Package id 0=51000, Core 0=77000", "coretemp: Package id 1=63000, Core 0=79000",
                       "amdgpu: edge=44000", "nouveau: =52250"}},
        {60.0, {}, {"k10temp: Tctl=87000, Tdie=60000, Tccd1=75000"}},
        {70.125, {}, {"k10temp: Tctl=70125, Tccd1=75000"}},
        {45.277, 41.0, {"cpu_thermal: =45277", "gpu_thermal: =41000"}},
        {47.0, 43.0, {"zone cpu-thermal=47000", "zone gpu-thermal=43000", "zone acpitz=99000"}},
        {55.0, 50.0, {"coretemp: Package id 0=55000", "zone x86_pkg_temp=88000", "zone gpu-thermal=50000"}},
        {{}, {}, {}},
        {{}, {}, {"nvme: Composite=40000", "i915: "}}};
    // clang-format on
    for (const auto& c : cases) {
        FakeTree tree;
        for (std::size_t i = 0; i < c.chips.size(); ++i)
            addChip(tree, static_cast<int>(i), c.chips[i]);
        const QLTemperatureReading reading = readSensorPlan(discoverSensors(locationsIn(tree)));
        const std::string name = c.chips.empty() ? "nothing" : c.chips[0];
        EXPECT_EQ(reading.hasCPU != 0 ? std::optional(reading.cpu) : std::nullopt, c.cpu) << name;
        EXPECT_EQ(reading.hasGPU != 0 ? std::optional(reading.gpu) : std::nullopt, c.gpu) << name;
        EXPECT_EQ(reading.cpu + reading.gpu, c.cpu.value_or(0) + c.gpu.value_or(0))
            << "an absent channel reads 0";
    }
}

TEST(HwmonReader, TheHottestCoreAndTheFilesOfOlderDrivers) {
    FakeTree tree;
    addChip(tree, 1, "coretemp: Package id 0=55000, Core 0=60000, Core 1=62000");
    std::optional<double> hottest;
    for (const SensorChip& chip : discoverSensors(locationsIn(tree)).chips)
        if (const auto core = readHottestCore(chip); core && chip.kind == SensorKind::cpu)
            hottest = std::max(hottest.value_or(*core), *core);
    EXPECT_EQ(hottest, 62.0);

    FakeTree older("name=coretemp temp1_input=49000 temp2_input=66000", "hwmon/hwmon0/device/");
    older.write("hwmon/hwmon0/device/temp1_label", "Physical id 0\n");
    EXPECT_EQ(readSensorPlan(discoverSensors(locationsIn(older))).cpu, 49.0);
}

TEST(HwmonTemperatureReaderCache, RereadsValuesRediscoversWhenChipsMoveAndAgreesAcrossThreads) {
    FakeTree tree;
    HwmonTemperatureReader reader(locationsIn(tree));
    EXPECT_EQ(reader.read().hasCPU, 0);

    // A driver that loads after the first reading is found by the next one.
    addChip(tree, 0, "coretemp: Package id 0=50000, Core 0=64000");
    EXPECT_EQ(reader.read().cpu, 50.0);

    tree.write("hwmon/hwmon0/temp1_input", "57000\n");
    EXPECT_EQ(reader.read().cpu, 57.0);

    // A reloaded driver comes back under another hwmon number.
    tree.rename("hwmon/hwmon0", "hwmon/hwmon4");
    std::vector<double> seen(4, 0);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&reader, &seen, i] {
            for (int round = 0; round < 20; ++round)
                seen[i] = reader.read().cpu;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(seen, std::vector<double>(4, 57.0));
}
