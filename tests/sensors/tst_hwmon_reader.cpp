// SPDX-License-Identifier: Apache-2.0
#include "sensors/hwmon_reader.h"

#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

// Writes one hwmon chip: its name and, per sensor, an optional label and a value.
struct FakeSensor {
    int index;
    std::string label; // empty = no label file
    std::string millidegrees;
};

void addChip(const FakeTree& tree, const std::string& hwmon, const std::string& name,
             const std::vector<FakeSensor>& sensors) {
    tree.write("hwmon/" + hwmon + "/name", name + "\n");
    for (const auto& sensor : sensors) {
        const std::string base = "hwmon/" + hwmon + "/temp" + std::to_string(sensor.index);
        tree.write(base + "_input", sensor.millidegrees + "\n");
        if (!sensor.label.empty()) tree.write(base + "_label", sensor.label + "\n");
    }
}

void addZone(const FakeTree& tree, int index, const std::string& type, const std::string& millidegrees) {
    const std::string base = "thermal/thermal_zone" + std::to_string(index);
    tree.write(base + "/type", type + "\n");
    tree.write(base + "/temp", millidegrees + "\n");
}

SensorLocations locationsIn(const FakeTree& tree) { return {tree.path("hwmon"), tree.path("thermal")}; }

QLTemperatureReading readTree(const FakeTree& tree) {
    return readSensorPlan(discoverSensors(locationsIn(tree)));
}

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
    constexpr int other = kUnpreferredSensorRank;
    const struct {
        const char* chip;
        const char* label;
        std::optional<SensorRole> role;
    } cases[] = {
        {"coretemp", "Package id 1", SensorRole{SensorKind::cpu, 0}},
        {"coretemp", "Physical id 0", SensorRole{SensorKind::cpu, 0}},
        {"coretemp", "Core 3", SensorRole{SensorKind::cpu, other}},
        {"k10temp", "Tdie", SensorRole{SensorKind::cpu, 0}},
        {"zenpower", "Tctl", SensorRole{SensorKind::cpu, 1}},
        {"k10temp", "Tccd1", SensorRole{SensorKind::cpu, other}},
        {"cpu_thermal", "temp1", SensorRole{SensorKind::cpu, other}},
        {"amdgpu", "edge", SensorRole{SensorKind::gpu, 0}},
        {"amdgpu", "junction", SensorRole{SensorKind::gpu, other}},
        {"xe", "pkg", SensorRole{SensorKind::gpu, 0}},
        {"nouveau", "", SensorRole{SensorKind::gpu, other}},
        {"nvme", "Composite", std::nullopt},
        {"nct6775", "CPUTIN", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(classifySensor(c.chip, c.label), c.role) << c.chip << " / " << c.label;
}

TEST(HwmonReader, SeveralChipsPickThePackageSensorAndIgnoreOtherDevices) {
    FakeTree tree;
    addChip(tree, "hwmon0", "acpitz", {{1, "", "91000"}});
    addChip(tree, "hwmon1", "coretemp",
            {{1, "Package id 0", "55000"}, {2, "Core 0", "60000"}, {3, "Core 1", "62000"}});
    addChip(tree, "hwmon2", "nvme", {{1, "Composite", "70850"}});
    addChip(tree, "hwmon3", "amdgpu", {{1, "edge", "48000"}, {2, "junction", "65000"}, {3, "mem", "80000"}});
    addChip(tree, "hwmon10", "iwlwifi_1", {{1, "", "99000"}});
    const QLTemperatureReading reading = readTree(tree);
    EXPECT_EQ(reading.hasCPU, 1);
    EXPECT_EQ(reading.cpu, 55.0);
    EXPECT_EQ(reading.hasGPU, 1);
    EXPECT_EQ(reading.gpu, 48.0);
    // The trace's hottest core is read beside the package, from the cores alone.
    std::optional<double> hottest;
    for (const SensorChip& chip : discoverSensors(locationsIn(tree)).chips)
        if (const auto core = readHottestCore(chip); core && chip.kind == SensorKind::cpu)
            hottest = std::max(hottest.value_or(*core), *core);
    EXPECT_EQ(hottest, 62.0);
}

TEST(HwmonReader, ImplausibleOrUnreadableValuesAreSkipped) {
    FakeTree tree;
    // A package sensor stuck at 150 °C falls back to the cores; 200 °C and garbage are skipped.
    addChip(tree, "hwmon0", "coretemp",
            {{1, "Package id 0", "150000"},
             {2, "Core 0", "58500"},
             {3, "Core 1", "200000"},
             {4, "Core 2", "n/a"}});
    addChip(tree, "hwmon1", "nouveau", {{1, "", "-40000"}});
    const QLTemperatureReading reading = readTree(tree);
    EXPECT_EQ(reading.hasCPU, 1);
    EXPECT_EQ(reading.cpu, 58.5);
    EXPECT_EQ(reading.hasGPU, 0);
    EXPECT_EQ(reading.gpu, 0.0);
}

TEST(HwmonReader, HighestOverChipsAndOverPackages) {
    FakeTree tree;
    addChip(tree, "hwmon0", "coretemp", {{1, "Package id 0", "51000"}, {2, "Core 0", "77000"}});
    addChip(tree, "hwmon1", "coretemp", {{1, "Package id 1", "63000"}, {2, "Core 0", "79000"}});
    addChip(tree, "hwmon2", "amdgpu", {{1, "edge", "44000"}});
    addChip(tree, "hwmon3", "nouveau", {{1, "", "52250"}});
    const QLTemperatureReading reading = readTree(tree);
    EXPECT_EQ(reading.cpu, 63.0);
    EXPECT_EQ(reading.gpu, 52.25);
}

TEST(HwmonReader, AmdCpuPrefersTdieThenTctl) {
    FakeTree withTdie;
    addChip(withTdie, "hwmon0", "k10temp",
            {{1, "Tctl", "87000"}, {2, "Tdie", "60000"}, {3, "Tccd1", "75000"}});
    EXPECT_EQ(readTree(withTdie).cpu, 60.0);

    FakeTree tctlOnly;
    addChip(tctlOnly, "hwmon0", "k10temp", {{1, "Tctl", "70125"}, {3, "Tccd1", "75000"}});
    EXPECT_EQ(readTree(tctlOnly).cpu, 70.125);
}

TEST(HwmonReader, OlderDriversKeepTheirFilesInTheDeviceFolder) {
    FakeTree tree;
    tree.write("hwmon/hwmon0/device/name", "coretemp\n");
    tree.write("hwmon/hwmon0/device/temp1_input", "49000\n");
    tree.write("hwmon/hwmon0/device/temp1_label", "Physical id 0\n");
    tree.write("hwmon/hwmon0/device/temp2_input", "66000\n");
    EXPECT_EQ(readTree(tree).cpu, 49.0);
}

TEST(HwmonReader, ArmThermalChipsAndZones) {
    FakeTree hwmon;
    addChip(hwmon, "hwmon0", "cpu_thermal", {{1, "", "45277"}});
    addChip(hwmon, "hwmon1", "gpu_thermal", {{1, "", "41000"}});
    const QLTemperatureReading fromHwmon = readTree(hwmon);
    EXPECT_EQ(fromHwmon.cpu, 45.277);
    EXPECT_EQ(fromHwmon.gpu, 41.0);

    // Without hwmon chips the thermal zones of the same names stand in.
    FakeTree zones;
    addZone(zones, 0, "cpu-thermal", "47000");
    addZone(zones, 1, "gpu-thermal", "43000");
    addZone(zones, 2, "acpitz", "99000");
    const QLTemperatureReading fromZones = readTree(zones);
    EXPECT_EQ(fromZones.cpu, 47.0);
    EXPECT_EQ(fromZones.gpu, 43.0);
}

TEST(HwmonReader, ThermalZonesOnlyFillChannelsHwmonLacks) {
    FakeTree tree;
    addChip(tree, "hwmon0", "coretemp", {{1, "Package id 0", "55000"}});
    addZone(tree, 0, "x86_pkg_temp", "88000");
    addZone(tree, 1, "gpu-thermal", "50000");
    const QLTemperatureReading reading = readTree(tree);
    EXPECT_EQ(reading.cpu, 55.0);
    EXPECT_EQ(reading.gpu, 50.0);
}

TEST(HwmonReader, NoSensorsGiveBothFlagsZero) {
    FakeTree empty;
    const QLTemperatureReading none = readTree(empty); // neither folder exists
    EXPECT_EQ(none.hasCPU, 0);
    EXPECT_EQ(none.hasGPU, 0);
    EXPECT_EQ(none.cpu, 0.0);
    EXPECT_EQ(none.gpu, 0.0);

    FakeTree unrelated;
    addChip(unrelated, "hwmon0", "nvme", {{1, "Composite", "40000"}});
    addChip(unrelated, "hwmon1", "i915", {}); // an integrated GPU that reports no temperature
    unrelated.write("hwmon/hwmon1/power1_max", "28000000\n");
    EXPECT_TRUE(discoverSensors(locationsIn(unrelated)).chips.empty());
    EXPECT_EQ(readTree(unrelated).hasGPU, 0);
}

TEST(HwmonTemperatureReaderCache, RereadsValuesAndRediscoversWhenChipsMove) {
    FakeTree tree;
    HwmonTemperatureReader reader(locationsIn(tree));
    EXPECT_EQ(reader.read().hasCPU, 0);

    // A driver that loads after the first reading is found by the next one.
    addChip(tree, "hwmon0", "coretemp", {{1, "Package id 0", "50000"}});
    EXPECT_EQ(reader.read().cpu, 50.0);

    tree.write("hwmon/hwmon0/temp1_input", "57000\n");
    EXPECT_EQ(reader.read().cpu, 57.0);

    // A reloaded driver comes back under another hwmon number.
    tree.rename("hwmon/hwmon0", "hwmon/hwmon4");
    const QLTemperatureReading moved = reader.read();
    EXPECT_EQ(moved.hasCPU, 1);
    EXPECT_EQ(moved.cpu, 57.0);
}

TEST(QuarbelReadTemperatures, ChannelsAreEitherPlausibleOrZero) {
    for (int i = 0; i < 3; ++i) {
        const QLTemperatureReading reading = QuarbelReadTemperatures();
        if (reading.hasCPU != 0) {
            EXPECT_EQ(reading.hasCPU, 1);
            EXPECT_GT(reading.cpu, -40.0);
            EXPECT_LT(reading.cpu, 140.0);
        } else {
            EXPECT_EQ(reading.cpu, 0.0);
        }
        if (reading.hasGPU != 0) {
            EXPECT_EQ(reading.hasGPU, 1);
            EXPECT_GT(reading.gpu, -40.0);
            EXPECT_LT(reading.gpu, 140.0);
        } else {
            EXPECT_EQ(reading.gpu, 0.0);
        }
    }
}

TEST(HwmonTemperatureReaderCache, ConcurrentReadsAgree) {
    FakeTree tree;
    addChip(tree, "hwmon0", "coretemp", {{1, "Package id 0", "61000"}, {2, "Core 0", "64000"}});
    HwmonTemperatureReader reader(locationsIn(tree));
    std::vector<double> seen(4, 0);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&reader, &seen, i] {
            for (int round = 0; round < 20; ++round)
                seen[i] = reader.read().cpu;
        });
    for (auto& thread : threads)
        thread.join();
    for (const double value : seen)
        EXPECT_EQ(value, 61.0);
}
