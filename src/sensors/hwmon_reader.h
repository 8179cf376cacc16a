// CPU and GPU temperatures from the kernel's hwmon sensors (and, where hwmon has no
// chip of a kind, from thermal zones), read straight from sysfs.
//
// A chip counts as CPU (coretemp, k10temp, zenpower, cpu_thermal and the like) or GPU
// (amdgpu, nouveau, i915, xe, gpu_thermal and the like); chips of other devices (disks,
// network cards, board controllers) are ignored. Each chip's temperatures are grouped in
// tiers of preference: the package sensor before the cores, Tdie before Tctl, the edge
// sensor of amdgpu before its hot spot. A chip's value is the highest plausible value of
// its first tier that has one; a channel's value is the highest over its chips.
#pragma once

#include "sensors/temperature.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel {

struct SensorLocations {
    std::string hwmonRoot = "/sys/class/hwmon";     // holds hwmon0, hwmon1, ...
    std::string thermalRoot = "/sys/class/thermal"; // holds thermal_zone0, ...
};

enum class SensorKind { cpu, gpu };

// One chip (or thermal zone) and its temperature files (millidegrees Celsius).
struct SensorChip {
    std::string name; // as the kernel names it, e.g. "coretemp"
    SensorKind kind = SensorKind::cpu;
    std::vector<std::vector<std::string>> tiers; // input file paths, most preferred tier first
};

// What to read, found once by `discoverSensors`.
struct SensorPlan {
    std::vector<SensorChip> chips;
};

// CPU, GPU, or nothing for a chip or zone name that belongs to another device.
std::optional<SensorKind> classifySensorName(std::string_view name);

// Lists the CPU and GPU chips under `locations`. Missing directories give an empty plan.
SensorPlan discoverSensors(const SensorLocations& locations);

// One chip's value now: the highest plausible value of its first tier that has one.
std::optional<double> readChipTemperature(const SensorChip& chip);

// Reads every chip of `plan` once; a channel without a plausible value is left at 0 / 0.
QLTemperatureReading readSensorPlan(const SensorPlan& plan);

// Discovers the sensors on first use and keeps their file paths, re-reading only the
// values on each call. When a cached chip stops giving values (a driver reloaded, a
// device gone) the call discovers again at once; when nothing was found, the next call
// looks again. Safe from any thread; calls are serialised.
class HwmonTemperatureReader {
  public:
    explicit HwmonTemperatureReader(SensorLocations locations = {});
    QLTemperatureReading read();

  private:
    SensorLocations locations_;
    std::mutex mutex_;
    std::optional<SensorPlan> plan_; // guarded by mutex_
};

} // namespace quarbel
