// SPDX-License-Identifier: Apache-2.0
// The cost of one temperature reading, which the thermal monitor takes every 2 s while
// workloads run; it must stay far below 10 ms.
//   cmake --preset bench
//   cmake --build build/bench -j2 --target bench_temperature_reading
//   build/bench/bench/bench_temperature_reading --benchmark_min_time=0.5
#include "sensors/fake_tree.h"
#include "sensors/hwmon_reader.h"
#include "sensors/temperature.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

// A desktop-sized tree: a 16-core coretemp chip, an amdgpu, and the usual chips of
// other devices, plus thermal zones.
void fillDesktopTree(const quarbel::testing::FakeTree& tree) {
    const auto sensor = [&tree](const std::string& chip, int index, const std::string& label, int milli) {
        const std::string base = "hwmon/" + chip + "/temp" + std::to_string(index);
        tree.write(base + "_input", std::to_string(milli) + "\n");
        if (!label.empty()) tree.write(base + "_label", label + "\n");
    };
    tree.write("hwmon/hwmon0/name", "acpitz\n");
    sensor("hwmon0", 1, "", 27800);
    tree.write("hwmon/hwmon1/name", "nvme\n");
    for (int i = 1; i <= 3; ++i)
        sensor("hwmon1", i, "Sensor " + std::to_string(i), 38000 + i);
    tree.write("hwmon/hwmon2/name", "coretemp\n");
    sensor("hwmon2", 1, "Package id 0", 55000);
    for (int core = 0; core < 16; ++core)
        sensor("hwmon2", core + 2, "Core " + std::to_string(core), 50000 + core);
    tree.write("hwmon/hwmon3/name", "amdgpu\n");
    sensor("hwmon3", 1, "edge", 45000);
    sensor("hwmon3", 2, "junction", 52000);
    sensor("hwmon3", 3, "mem", 60000);
    tree.write("hwmon/hwmon4/name", "iwlwifi_1\n");
    sensor("hwmon4", 1, "", 41000);
    for (int zone = 0; zone < 4; ++zone) {
        tree.write("thermal/thermal_zone" + std::to_string(zone) + "/type",
                   zone == 0 ? "x86_pkg_temp\n" : "acpitz\n");
        tree.write("thermal/thermal_zone" + std::to_string(zone) + "/temp", "50000\n");
    }
}

void BM_QuarbelReadTemperatures(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(QuarbelReadTemperatures());
}
BENCHMARK(BM_QuarbelReadTemperatures)->Unit(benchmark::kMicrosecond);

// The reader as the thermal monitor uses it: paths found once, values re-read.
void BM_CachedReaderDesktopTree(benchmark::State& state) {
    quarbel::testing::FakeTree tree;
    fillDesktopTree(tree);
    quarbel::HwmonTemperatureReader reader({tree.path("hwmon"), tree.path("thermal")});
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.read());
}
BENCHMARK(BM_CachedReaderDesktopTree)->Unit(benchmark::kMicrosecond);

// Discovery and reading on every call: what caching the paths saves.
void BM_DiscoverAndReadDesktopTree(benchmark::State& state) {
    quarbel::testing::FakeTree tree;
    fillDesktopTree(tree);
    const quarbel::SensorLocations locations{tree.path("hwmon"), tree.path("thermal")};
    for (auto _ : state)
        benchmark::DoNotOptimize(quarbel::readSensorPlan(quarbel::discoverSensors(locations)));
}
BENCHMARK(BM_DiscoverAndReadDesktopTree)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
