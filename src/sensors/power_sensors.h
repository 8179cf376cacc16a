// SPDX-License-Identifier: Apache-2.0
// The machine's power and clock sensors, read at one moment: RAPL package energy (powercap),
// the GPU's power (NVML or amdgpu's hwmon), the battery, per-core clocks (cpufreq) and the
// CPUs' thermal throttle counters. Each reader finds its files once and says why when it
// finds none, so that a result can name every missing sensor instead of inventing one.
#pragma once

#include "sensors/interference.h"
#include "sensors/machine_condition.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quarbel {

// The microjoules between two readings of a counter that wraps at `range` (RAPL's
// max_energy_range_uj): one wrap at most between readings a second apart.
std::uint64_t counterDelta(std::uint64_t before, std::uint64_t after, std::uint64_t range) noexcept;

// Package energy from the powercap RAPL zones ("package-0", "package-1", ...), summed.
class RaplPackageMeter {
  public:
    explicit RaplPackageMeter(const ConditionLocations& locations = {});

    bool available() const noexcept { return !zones_.empty(); }
    // Why there is no reading: "no permission to read …", "no RAPL power sensor (powercap)".
    const std::string& problem() const noexcept { return problem_; }
    std::string source() const; // "RAPL package-0" or "RAPL package-0 + package-1"
    // The package's long-term power limit in watts (constraint "long_term"), summed over packages.
    std::optional<double> longTermLimitWatts() const noexcept { return limitWatts_; }

    // Joules since this meter was made, wraps undone; none when a zone cannot be read.
    std::optional<double> joulesSinceStart();

  private:
    struct Zone {
        std::string name;
        std::string energyPath;
        std::uint64_t range = 0;
        std::uint64_t last = 0;
        double microjoules = 0; // accumulated since the first reading
    };
    std::vector<Zone> zones_;
    std::string problem_;
    std::optional<double> limitWatts_;
};

struct GpuPowerReading {
    std::optional<double> totalJoules; // a cumulative energy counter, where the GPU has one
    std::optional<double> watts;
    std::optional<double> mhz;
    std::optional<double> celsius;
    std::optional<std::uint32_t> throttleReasons; // NVML's clock event reasons
};

// NVML's clock event reasons that mean a power or a thermal limit held the clocks down.
inline constexpr std::uint32_t kGpuPowerCapReasons = 0x4 | 0x80; // software power cap, power brake
inline constexpr std::uint32_t kGpuThermalReasons = 0x20 | 0x40; // software and hardware thermal slowdown

class GpuPowerSource {
  public:
    virtual ~GpuPowerSource() = default;
    virtual std::string name() const = 0; // "NVML", "amdgpu hwmon3"
    virtual std::optional<GpuPowerReading> read() = 0;
};

// NVIDIA GPUs through NVML (loaded with dlopen): board energy and power summed over the GPUs,
// the first GPU's graphics clock, the reasons of all of them. Null without NVML or a GPU.
std::unique_ptr<GpuPowerSource> openNvmlPowerSource(const std::string& library = "libnvidia-ml.so.1");
// An AMD GPU's hwmon (power1_average or power1_input, freq1_input, temp1_input); null without one.
std::unique_ptr<GpuPowerSource> openAmdgpuPowerSource(const ConditionLocations& locations = {});

struct BatteryReading {
    bool onBattery = false;
    std::optional<double> watts; // drawn from the battery; none on AC or when not reported
};

// The first battery under power_supply: power_now, or current_now × voltage_now.
class BatteryMeter {
  public:
    explicit BatteryMeter(const ConditionLocations& locations = {});
    bool available() const noexcept { return !path_.empty(); }
    std::string source() const; // "battery BAT0"
    std::optional<BatteryReading> read() const;

  private:
    std::string path_;
    std::string name_;
    std::vector<std::string> mainsPaths_; // online files of the AC adapters
};

struct CoreClocks {
    double meanMHz = 0;
    double lowMHz = 0;
    double highMHz = 0;
};

// scaling_cur_freq of every CPU that has one.
class CoreClockReader {
  public:
    explicit CoreClockReader(const ConditionLocations& locations = {});
    bool available() const noexcept { return !paths_.empty(); }
    std::optional<CoreClocks> read() const;

  private:
    std::vector<std::string> paths_;
};

// The sum of the CPUs' thermal_throttle core and package counters; none without them.
std::optional<std::uint64_t> readThermalThrottleCount(const ConditionLocations& locations = {});

// True on a virtual machine (the CPU's hypervisor flag, or a DMI vendor of one).
bool runsVirtualized(const ConditionLocations& locations = {});

} // namespace quarbel
