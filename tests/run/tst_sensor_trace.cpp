// SPDX-License-Identifier: Apache-2.0
#include "model/trace_summary.h"
#include "results/trace_json.h"
#include "run/cooldown.h"
#include "sensors/effective_clock.h"
#include "sensors/fake_tree.h"
#include "sensors/trace_recorder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <tuple>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

SensorSample sampleAt(double seconds, double packageJoules) {
    SensorSample s;
    s.seconds = seconds;
    s.packageJoules = packageJoules;
    return s;
}

template <typename Change> SensorFacts factsWith(Change change) {
    SensorFacts facts;
    change(facts);
    return facts;
}

} // namespace

TEST(PowerSensors, RaplSumsPackagesUndoesWrapsAndNamesItsLimit) {
    // The subzone intel-rapl:0:0 and the MMIO copy of package 0 would count the same joules twice.
    const FakeTree sys(
        "intel-rapl:0/name=package-0 intel-rapl:0/energy_uj=262143000000 "
        "intel-rapl:0/max_energy_range_uj=262143328850 intel-rapl:0/constraint_0_name=long_term "
        "intel-rapl:0/constraint_0_power_limit_uw=28000000 intel-rapl:0/constraint_1_name=short_term "
        "intel-rapl:0/constraint_1_power_limit_uw=64000000 intel-rapl:0:0/name=core "
        "intel-rapl:0:0/energy_uj=5 intel-rapl-mmio:0/name=package-0 intel-rapl-mmio:0/energy_uj=7 "
        "intel-rapl:1/name=package-1 intel-rapl:1/energy_uj=1000000 "
        "intel-rapl:1/max_energy_range_uj=262143328850",
        "class/powercap/");
    RaplPackageMeter meter({sys.root(), sys.root()});
    ASSERT_TRUE(meter.available());
    EXPECT_EQ(meter.source(), "RAPL package-0 + package-1");
    EXPECT_EQ(meter.longTermLimitWatts(), 28.0);
    EXPECT_DOUBLE_EQ(*meter.joulesSinceStart(), 0.0);
    // Package 0 passes its range: 328,850 µJ to the top and 671,150 after it.
    sys.writeRows("intel-rapl:0/energy_uj=671150 intel-rapl:1/energy_uj=3000000", "class/powercap/");
    EXPECT_NEAR(*meter.joulesSinceStart(), 1.0 + 2.0, 1e-9);
    EXPECT_EQ(counterDelta(10, 4, 0), 4u) << "a counter without a range";

    FakeTree vm;
    vm.write("proc/cpuinfo", "processor\t: 0\nflags\t\t: fpu sse2 hypervisor\n");
    const RaplPackageMeter none({vm.root(), vm.path("proc")});
    EXPECT_FALSE(none.available());
    EXPECT_EQ(none.problem(), "a virtual machine exposes no power sensors");
}

TEST(PowerSensors, BatteryClocksAndThrottleCountersFromALaptopsTree) {
    const struct {
        const char *status, *mainsOnline, *powerNow;
        bool onBattery;
        double watts; // -1: none
    } cases[] = {
        {"Discharging", "0", "12500000", true, 12.5},
        {"Discharging", "0", "0", true, 1.5 * 11.0},  // no power_now: current × voltage
        {"Discharging", "1", "9000000", false, -1.0}, // a full battery on AC reports odd states
    };
    for (const auto& c : cases) {
        const FakeTree sys(
            "AC/type=Mains hidpp_battery_0/type=Battery hidpp_battery_0/scope=Device BAT0/type=Battery "
            "BAT0/current_now=1500000 BAT0/voltage_now=11000000 AC/online=" +
                std::string(c.mainsOnline) + " BAT0/status=" + c.status + " BAT0/power_now=" + c.powerNow,
            "class/power_supply/");
        const BatteryMeter battery({sys.root(), sys.root()});
        EXPECT_EQ(battery.source(), "battery BAT0");
        const auto reading = battery.read().value();
        EXPECT_EQ(reading.onBattery, c.onBattery) << c.powerNow;
        EXPECT_NEAR(reading.watts.value_or(-1), c.watts, 1e-9) << c.powerNow;
    }

    FakeTree sys("cpufreq/policy0/scaling_cur_freq=1", "devices/system/cpu/"); // not a CPU
    for (const auto& [cpu, khz] : {std::pair{"cpu0", "3400000"}, {"cpu1", "2200000"}, {"cpu2", "2800000"}})
        sys.writeRows(
            std::string("/cpufreq/scaling_cur_freq=") + khz +
                " /thermal_throttle/core_throttle_count=3 /thermal_throttle/package_throttle_count=1",
            std::string("devices/system/cpu/") + cpu);
    const auto clocks = CoreClockReader({sys.root(), sys.root()}).read().value();
    EXPECT_EQ(std::tuple(clocks.lowMHz, clocks.highMHz, clocks.meanMHz), std::tuple(2200.0, 3400.0, 2800.0));
    EXPECT_EQ(readThermalThrottleCount({sys.root(), sys.root()}), 12u);
    EXPECT_FALSE(readThermalThrottleCount({sys.path("none"), sys.root()}).has_value());
}

TEST(PowerSensors, NvmlGivesBoardEnergyPowerClockAndReasons) {
    void* fake = ::dlopen(FAKE_NVML_LIBRARY, RTLD_NOW);
    ASSERT_NE(fake, nullptr);
    const unsigned int temperatures[] = {61};
    reinterpret_cast<void (*)(int, const unsigned int*, unsigned int, int)>(
        ::dlsym(fake, "fakeNvmlConfigure"))(0, temperatures, 1, 0);
    reinterpret_cast<void (*)(unsigned int, unsigned int, unsigned long long)>(
        ::dlsym(fake, "fakeNvmlConfigurePower"))(250, 50, 0x4);
    auto source = openNvmlPowerSource(FAKE_NVML_LIBRARY);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->name(), "NVML");
    std::vector<SensorSample> samples(3);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i].seconds = 0.2 * static_cast<double>(i), samples[i].gpu = source->read();
    const GpuPowerReading gpu0 = samples[0].gpu.value();
    EXPECT_EQ(std::tuple(gpu0.watts, gpu0.mhz, gpu0.celsius), std::tuple(250.0, 1800.0, 61.0));
    // The board's own counter, not the power samples, gives the joules: 2 reads of 50 J.
    const TracedPass pass = assembleTrace(samples, factsWith([](SensorFacts& f) { f.gpuSource = "NVML"; }));
    const EnergyMeasurement* gpu = pass.energy.find(PowerDomain::gpu);
    ASSERT_NE(gpu, nullptr);
    EXPECT_DOUBLE_EQ(gpu->joules, 100.0);
    EXPECT_DOUBLE_EQ(gpu->averageWatts, 250.0);
    EXPECT_EQ(pass.trace.gpuThrottleReasons, (std::vector<std::uint32_t>{4, 4, 4}));
    EXPECT_EQ(traceSummary(pass.trace), "GPU power-limited from 0.0 s");
    EXPECT_EQ(openNvmlPowerSource("/nonexistent/libnvidia-ml.so.1"), nullptr);
    ::dlclose(fake);
}

TEST(SensorTrace, SamplesBecomeColumnsEnergyAndTheReasonsForWhatIsMissing) {
    // Package energy at 20 W, then 40 W; 4 of every 200 ticks were other processes'.
    std::vector<SensorSample> samples = {sampleAt(0, 100), sampleAt(0.5, 110), sampleAt(1.0, 130)};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].ticks = CpuTickSample{100 * i, 0, 200 * i, 96 * i};
        samples[i].battery = BatteryReading{true, 15.0};
        samples[i].clocks = CoreClocks{3000, 2900, 3100};
    }
    samples[1].clocks.reset();
    const TracedPass pass = assembleTrace(samples, factsWith([](SensorFacts& f) {
                                              f.packageSource = "RAPL package-0", f.packageLimitWatts = 28,
                                              f.batterySource = "battery BAT0", f.onlineCpus = 2;
                                          }));
    const SensorTrace& t = pass.trace;
    EXPECT_EQ(t.seconds, (std::vector<float>{0, 0.5f, 1.0f}));
    EXPECT_EQ(nlohmann::json(t.cpuWatts).dump(), "[null,20.0,40.0]") << "no power before the second sample";
    EXPECT_TRUE(std::isnan(t.coreMHzMean[1])) << "a sample that could not be read";
    EXPECT_FLOAT_EQ(t.otherCores[1], 0.04f) << "4 of 200 ticks: 2 % of two cores";
    // Our ticks can run ahead of the machine's over a short span: other processes never go below 0.
    EXPECT_EQ(interferenceBetween({100, 0, 1000, 90}, {110, 0, 2000, 130})->otherCpuPercent, 0.0);
    EXPECT_TRUE(t.cpuCelsius.empty()) << "no sensor: no column";
    EXPECT_EQ(t.onBattery, (std::vector<std::uint8_t>{1, 1, 1}));
    EXPECT_EQ(t.packageLimitWatts, 28.0);

    const auto* package = pass.energy.find(PowerDomain::cpuPackage);
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(*package, (EnergyMeasurement{PowerDomain::cpuPackage, "RAPL package-0", 30, 30, 40}));
    const auto* battery = pass.energy.find(PowerDomain::battery);
    EXPECT_DOUBLE_EQ(battery ? battery->joules : -1, 15.0);
    ASSERT_EQ(pass.energy.missing.size(), 1u);
    EXPECT_EQ(pass.energy.missing[0].domain, PowerDomain::gpu);
    EXPECT_EQ(efficiencyMeasurement(pass.energy, true), package) << "no GPU sensor: the package";
    EXPECT_EQ(pointsPerJoule(600, *package), 20.0);

    const ResultEnergy none = assembleTrace({sampleAt(0, 0), sampleAt(1, 0)},
                                            factsWith([](SensorFacts& f) { f.packageProblem = "none"; }))
                                  .energy;
    ASSERT_EQ(none.missing.size(), 3u);
    EXPECT_EQ(none.missing[0].reason + "; " + none.missing[2].reason, "none; no battery");
}

TEST(SensorTrace, ALaptopThatHitsItsPowerCapAndThrottlesSaysSoFromItsOwnFiles) {
    // Half-second samples of a recorded laptop: 10 W, then its 15 W cap from 1.0 s on; the
    // clocks fall by a fifth and the throttle counters rise.
    const FakeTree sys("name=package-0 max_energy_range_uj=262143328850 constraint_0_name=long_term "
                       "constraint_0_power_limit_uw=15000000",
                       "class/powercap/intel-rapl:0/");
    MachineSensors* sensors = nullptr;
    std::optional<MachineSensors> owned;
    std::vector<SensorSample> samples;
    long long microjoules = 262000000000; // wraps at the third sample
    for (int i = 0; i < 8; ++i) {
        if (i > 0) microjoules += i < 3 ? 5000000 : 7500000;
        microjoules %= 262143328850;
        sys.write("class/powercap/intel-rapl:0/energy_uj", std::to_string(microjoules));
        for (const char* cpu : {"cpu0", "cpu1"})
            sys.writeRows(std::string("/cpufreq/scaling_cur_freq=") + (i >= 4 ? "2400000" : "3000000") +
                              " /thermal_throttle/package_throttle_count=" + (i >= 5 ? "4" : "0"),
                          std::string("devices/system/cpu/") + cpu);
        if (!sensors) sensors = &owned.emplace(ConditionLocations{sys.root(), sys.root()}, nullptr, false);
        samples.push_back(sensors->sample(0.5 * i));
    }
    const TracedPass pass = assembleTrace(samples, sensors->facts());
    EXPECT_EQ(pass.trace.thermalThrottleEvents, 8u);
    const EnergyMeasurement* package = pass.energy.find(PowerDomain::cpuPackage);
    ASSERT_NE(package, nullptr);
    EXPECT_NEAR(package->joules, 2 * 5 + 5 * 7.5, 1e-6);
    EXPECT_NEAR(package->peakWatts, 15, 1e-6);
    EXPECT_EQ(traceSummary(pass.trace),
              "power-limited from 1.0 s (package 15 W cap); thermal: throttled, clocks \u221220 %");
}

TEST(SensorTrace, SummaryNamesWhatHeldTheBenchmarkBack) {
    EXPECT_EQ(traceSummary(SensorTrace{}), "");
    const std::pair<void (*)(SensorTrace&), std::string> cases[] = {
        {[](SensorTrace& t) { t.coreMHzMean.assign(8, 3000); }, "steady"},
        {[](SensorTrace& t) { t.cpuWatts = {kNaN, 20, 27, 27.5f, 28, 28, 28, 28}, t.packageLimitWatts = 28; },
         "power-limited from 1.0 s (package 28 W cap)"},
        // One sample at the cap is not a limit.
        {[](SensorTrace& t) { t.cpuWatts = {kNaN, 20, 28, 20, 20, 20, 20, 20}, t.packageLimitWatts = 28; },
         "steady"},
        {[](SensorTrace& t) {
             t.cpuCelsius = {80, 90, 95, 97, 97, 96, 97, 97};
             t.coreMHzMean = {4000, 4000, 3600, 3500, 3300, 3300, 3280, 3280};
         },
         "thermal: 97 \u00b0C, clocks \u221218 %"},
        {[](SensorTrace& t) { t.thermalThrottleEvents = 3, t.cpuCelsius.assign(8, 60); },
         "thermal: 60 \u00b0C"},
        {[](SensorTrace& t) { t.cpuCelsius.assign(8, 70), t.coreCelsius.assign(8, 96); },
         "thermal: 96 \u00b0C"},
        {[](SensorTrace& t) { t.cpuCelsius.assign(8, 82), t.criticalCelsius = 85; }, "thermal: 82 \u00b0C"},
        {[](SensorTrace& t) { t.otherCores = {kNaN, 0.7f, 0.9f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f}; },
         "another process took 0.8 cores"},
        {[](SensorTrace& t) { t.onBattery.assign(8, 1), t.otherCores.assign(8, 1.0f); },
         "on battery; another process took 1.0 cores"},
        {[](SensorTrace& t) { t.coreMHzMean = {3000, 3000, 2800, 2700, 2600, 2600, 2600, 2600}; },
         "clocks \u221213 % with no thermal or power limit seen"}};
    for (const auto& [change, summary] : cases) {
        SensorTrace trace;
        trace.seconds = {0, 1, 2, 3, 4, 5, 6, 7};
        change(trace);
        EXPECT_EQ(traceSummary(trace), summary);
    }
}

// Steps of 32 MHz, 1 °C or 0.5 °C, 2 W, 1/32 core (never finer than for one core), and 0.5 s up to
// 64 s then 0.25 s.
TEST(SensorTrace, ColumnsAreKeptToAPowerOfTwoStepOfTheirLargestMagnitude) {
    const auto column = [](const char* name) {
        return *std::find_if(std::begin(kTraceColumns), std::end(kTraceColumns),
                             [&](const TraceColumn& c) { return std::string(c.name) == name; });
    };
    const struct {
        const char* column;
        std::vector<float> values, kept;
    } cases[] = {{"coreMHzMean", {3400, 3391, 2207}, {3392, 3392, 2208}},
                 {"cpuCelsius", {80.4f, 64.6f}, {80, 65}},
                 {"cpuCelsius", {45.3f, 40.1f, kNaN}, {45.5f, 40, kNaN}},
                 {"cpuWatts", {kNaN, 150.9f, 20.9f}, {kNaN, 150, 20}},
                 {"otherCores", {0.3f, 0.02f}, {0.3125f, 0.03125f}},
                 {"seconds", {0, 63.9f, INFINITY}, {0, 64, kNaN}}};
    for (const auto& c : cases) {
        const std::vector<float> kept = keptTraceColumn(c.values, column(c.column));
        EXPECT_EQ(nlohmann::json(kept).dump(), nlohmann::json(c.kept).dump()) << c.column;
        EXPECT_EQ(nlohmann::json(keptTraceColumn(kept, column(c.column))).dump(), nlohmann::json(kept).dump())
            << c.column << " kept again";
    }
}

TEST(SensorTrace, KeptCompactPackedAndReadBackInEitherForm) {
    // 100 samples become 32 points; a throttle flag of one sample survives the averaging.
    SensorTrace full;
    for (int i = 0; i < 100; ++i) {
        full.seconds.push_back(0.25f * static_cast<float>(i));
        full.cpuCelsius.push_back(i == 50 ? kNaN : 40.0f + 0.3f * static_cast<float>(i));
        full.cpuWatts.push_back(i < 4 ? kNaN : i < 60 ? 95.0f + static_cast<float>(i % 3) : 20.0f);
        full.gpuMHz.push_back(1980);
        full.gpuThrottleReasons.push_back(i == 77 ? 0x40u : 0u);
    }
    full.thermalThrottleEvents = 2;
    full.packageLimitWatts = 45;
    full.criticalCelsius = 99.5;
    const SensorTrace compact = compactTrace(full);
    ASSERT_EQ(compact.seconds.size(), kMostTracePoints);
    EXPECT_EQ(std::count(compact.gpuThrottleReasons.begin(), compact.gpuThrottleReasons.end(), 0x40u), 1);
    EXPECT_NEAR(compact.cpuCelsius.front(), 40.3, 0.5);
    EXPECT_NEAR(compact.cpuCelsius.back(), 69.25, 0.5);
    EXPECT_TRUE(std::isnan(compact.cpuWatts[0]));
    EXPECT_EQ(traceJson(compactTrace(compact)), traceJson(compact)) << "compacting twice changes nothing";

    const nlohmann::json written = nlohmann::json::parse(traceJson(compact).dump());
    EXPECT_LT(written.get<std::string>().size(), 90u) << "four columns and flags of 32 points";
    SensorTrace read;
    ASSERT_EQ(readTrace(written, read), std::nullopt);
    EXPECT_TRUE(std::isnan(read.cpuWatts[0]));
    read.cpuWatts[0] = 0;
    SensorTrace expected = compact;
    expected.cpuWatts[0] = 0;
    EXPECT_EQ(read, expected);

    // The column form of earlier reports reads as it always did.
    const auto legacy = nlohmann::json::parse(
        R"({"points": 2, "columns": {"seconds": {"low": 0, "high": 0.5, "steps": "00fe"},
            "cpuWatts": {"low": 10, "high": 20, "steps": "ff7f"}}, "onBattery": [0, 1],
            "thermalThrottleEvents": 3, "packageLimitWatts": 28})");
    ASSERT_EQ(readTrace(legacy, read), std::nullopt);
    EXPECT_TRUE(std::isnan(read.cpuWatts[0]));
    EXPECT_FLOAT_EQ(read.cpuWatts[1], 15);
    EXPECT_EQ(std::tuple(read.seconds, read.onBattery, read.thermalThrottleEvents, read.packageLimitWatts),
              std::tuple(std::vector<float>{0, 0.5f}, std::vector<std::uint8_t>{0, 1}, 3u, 28.0));

    ResultEnergy energy{{{PowerDomain::gpu, "NVML", 3000, 200, 250}}, {{PowerDomain::battery, "no battery"}}};
    const nlohmann::json energyWritten = nlohmann::json::parse(energyJson(energy, 4000).dump());
    EXPECT_EQ(energyWritten["measured"][0]["pointsPerJoule"], 20.0);
    ResultEnergy energyRead;
    EXPECT_EQ(readEnergy(energyWritten, energyRead), std::nullopt);
    EXPECT_EQ(energyRead, energy);
}

TEST(SensorTrace, AMalformedTraceOrEnergyNamesItsProblem) {
    SensorTrace four;
    four.seconds = {0, 1, 2, 3};
    const std::string packed = traceJson(compactTrace(four)).get<std::string>();
    const std::pair<std::string, std::string> broken[] = {
        {R"({"columns": {"seconds": {"low": 0, "high": 1, "steps": "00fe"}, "cpuWatts": {"low": 0, "high": 1, "steps": "00"}}})",
         "trace.columns.cpuWatts is not as long as seconds"},
        {R"({"columns": {"seconds": {"low": 0, "high": 1, "steps": "0g"}}})",
         "trace.columns.seconds.steps is not hexadecimal"},
        {R"({"columns": {"seconds": {"low": 0, "high": 1e39, "steps": "00"}}})",
         "trace.columns.seconds has an endless range"},
        {R"({"columns": {"seconds": {"low": 0, "high": 1, "steps": "00"}}, "onBattery": [2, 1]})",
         "trace.onBattery is not a list as long as seconds"},
        {"[1]", "trace is neither an object nor packed base64 text"},
        {R"("not base64!")", "trace is neither an object nor packed base64 text"},
        {nlohmann::json(packed.substr(0, packed.size() / 2)).dump(), "trace ends early"},
        {R"("Y")", "trace is packed in a form this version cannot read"},
        {R"({"measured": [{"domain": "moon", "joules": 1}], "missing": []})",
         "energy.measured has no known domain"},
        {R"({"measured": [{"domain": "gpu", "joules": -1, "averageWatts": 1, "peakWatts": 1}], "missing": []})",
         "energy.measured needs joules, averageWatts and peakWatts of zero or more"}};
    for (const auto& [text, problem] : broken) {
        SensorTrace t;
        ResultEnergy e;
        const auto json = nlohmann::json::parse(text);
        EXPECT_EQ(problem.starts_with("energy") ? readEnergy(json, e) : readTrace(json, t), problem) << text;
    }
}

TEST(EffectiveClock, MhzFromCounterDeltasOverTheCoresThatRan) {
    const std::vector<ClockCounters> before = {{1000, 1000}, {0, 0}, {500, 500}, {900, 900}};
    const std::vector<ClockCounters> after = {{4000, 2000}, {1500, 1000}, {500, 500}, {100, 1900}};
    // Core 0 ran at 3x the 1000 MHz reference, core 1 at 1.5x; core 2 slept, core 3 was reset.
    const auto clocks = effectiveClocks(before, after, 1000).value();
    EXPECT_EQ(std::tuple(clocks.lowMHz, clocks.highMHz, clocks.meanMHz), std::tuple(1500.0, 3000.0, 2250.0));
    EXPECT_FALSE(effectiveClocks(before, before, 1000).has_value()) << "no core ran";
}

TEST(EffectiveClock, TheCountersAreUsedWhereTheKernelOffersThemElseTheReasonIsGiven) {
    // Each case has the files of the one before it and one more.
    const struct {
        const char *file, *content;
        std::string problem;
    } steps[] = {
        {"", "", "no msr PMU in this kernel"},
        {"bus/event_source/devices/msr/type", "11", "the msr PMU offers no aperf and mperf events"},
        {"bus/event_source/devices/msr/events/aperf", "event=0x02",
         "the msr PMU offers no aperf and mperf events"},
        {"bus/event_source/devices/msr/events/mperf", "event=0x01",
         "no base clock to scale them by (cpufreq base_frequency)"},
        {"devices/system/cpu/cpu0/cpufreq/base_frequency", "2100000", ""},
    };
    FakeTree tree;
    const ConditionLocations locations{tree.path("sys"), tree.path("proc")};
    for (const auto& [file, content, problem] : steps) {
        if (*file) tree.write(std::string("sys/") + file, content);
        EXPECT_EQ(clockCounterSupport(locations, true).problem, problem) << file;
        EXPECT_EQ(clockCounterSupport(locations, false).problem,
                  "not an x86 processor (APERF/MPERF are x86 counters)");
    }
    const ClockCounterSupport support = clockCounterSupport(locations, true);
    EXPECT_EQ((std::tuple{support.pmuType, support.aperfConfig, support.mperfConfig, support.referenceMHz}),
              (std::tuple{11, 2u, 1u, 2100.0}));
    EXPECT_EQ(
        counterOpenProblem(EACCES, 2),
        "no permission to open the counters: perf_event_paranoid is 2 (needs 0 or less, or CAP_PERFMON)");
    // A virtual machine is named as the likely reason; without counters the trace keeps cpufreq.
    FakeTree vm("sys/devices/system/cpu/cpu0/cpufreq/scaling_cur_freq=2000000");
    vm.write("proc/cpuinfo", "processor\t: 0\nflags\t\t: fpu hypervisor\n");
    EXPECT_EQ(
        coreClockSourceText({vm.path("sys"), vm.path("proc")}),
        "cpufreq scaling_cur_freq (APERF/MPERF unavailable: no msr PMU (a virtual machine exposes none))");
}

TEST(Cooldown, WaitsForTheIdleTemperatureWithACapOrAFixedGap) {
    const struct {
        const char* text;
        std::optional<CooldownSetting> setting;
    } parsed[] = {{"auto", CooldownSetting{}},
                  {"0", CooldownSetting{CooldownSetting::Mode::off, 0}},
                  {"30", CooldownSetting{CooldownSetting::Mode::fixed, 30}},
                  {"2.5", CooldownSetting{CooldownSetting::Mode::fixed, 2.5}},
                  {"-1", std::nullopt},
                  {"601", std::nullopt},
                  {"soon", std::nullopt}};
    for (const auto& p : parsed) {
        const auto result = parseCooldown(p.text);
        if (p.setting)
            EXPECT_EQ(std::get<CooldownSetting>(result), *p.setting) << p.text;
        else
            EXPECT_EQ(std::get<std::string>(result),
                      "--cooldown must be auto or a number of seconds from 0 to 600, not '" +
                          std::string(p.text) + "'");
    }
    EXPECT_EQ(std::pair(defaultCooldown(true).mode, defaultCooldown(false).mode),
              std::pair(CooldownSetting::Mode::off, CooldownSetting::Mode::automatic));

    const CooldownWait automatic(CooldownSetting{}, 45.0);
    EXPECT_TRUE(automatic.keepWaiting(10, 62.0));
    EXPECT_FALSE(automatic.keepWaiting(10, 48.0)) << "within 3 \u00b0C of idle";
    EXPECT_FALSE(automatic.keepWaiting(120, 62.0)) << "the cap";
    EXPECT_FALSE(automatic.keepWaiting(0, std::nullopt));
    EXPECT_EQ(automatic.text(3, 62.4), "Cooling down: 62 \u00b0C \u2192 45 \u00b0C");
    EXPECT_EQ(CooldownWait(CooldownSetting{}, std::nullopt).unavailableReason(), "no CPU temperature sensor");
    const CooldownWait fixed(CooldownSetting{CooldownSetting::Mode::fixed, 30}, std::nullopt);
    EXPECT_TRUE(fixed.keepWaiting(29.5, std::nullopt));
    EXPECT_FALSE(fixed.keepWaiting(30, std::nullopt));
    EXPECT_EQ(fixed.text(17.2, std::nullopt), "Cooling down: 13 s left");
    EXPECT_FALSE(CooldownWait(CooldownSetting{CooldownSetting::Mode::off, 0}, 45.0).keepWaiting(0, 90.0));
}
