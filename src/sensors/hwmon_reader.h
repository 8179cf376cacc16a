// SPDX-License-Identifier: Apache-2.0
// CPU and GPU temperatures from the kernel's hwmon sensors (and, where hwmon has no
// chip of a kind, from thermal zones).
//
// The running system's chips are read through libsensors, so that lm-sensors' labels and
// the ignore and compute lines of sensors3.conf apply; when libsensors cannot be set up or
// finds no chip, and for any other location (a recorded tree), the hwmon files are read
// straight from sysfs.
//
// A chip counts as CPU (coretemp, k10temp, zenpower, cpu_thermal and the like) or GPU
// (amdgpu, nouveau, i915, xe, gpu_thermal and the like); chips of other devices (disks,
// network cards, board controllers) are ignored. Each chip's temperatures are grouped in
// tiers of preference: the package sensor before the cores, Tdie before Tctl, the edge
// sensor of amdgpu before its hot spot. A chip's value is the highest plausible value of
// its first tier that has one; a channel's value is the highest over its chips.
#pragma once

#include "sensors/libsensors_session.h"
#include "sensors/temperature.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel {

inline constexpr const char* kSystemHwmonRoot = "/sys/class/hwmon";

// The default locations are the running system's, read through libsensors when it works.
struct SensorLocations {
    std::string hwmonRoot = kSystemHwmonRoot;       // holds hwmon0, hwmon1, ...
    std::string thermalRoot = "/sys/class/thermal"; // holds thermal_zone0, ...
};

enum class SensorKind { cpu, gpu };

// One temperature: a sysfs file of millidegrees, or a subfeature of a libsensors chip.
struct SensorInput {
    std::string path;    // empty for a libsensors input
    int subfeature = -1; // the libsensors subfeature number
};

// One chip (or thermal zone) and its temperature inputs.
struct SensorChip {
    std::string name; // as the kernel names it, e.g. "coretemp"
    SensorKind kind = SensorKind::cpu;
    std::vector<std::vector<SensorInput>> tiers;    // most preferred tier first
    std::optional<libsensors::Chip> libsensorsChip; // set when the inputs are read through libsensors
};

// What to read, found once by `discoverSensors`.
struct SensorPlan {
    std::vector<SensorChip> chips;
};

// CPU, GPU, or nothing for a chip or zone name that belongs to another device.
std::optional<SensorKind> classifySensorName(std::string_view name);

// Rank of a temperature that matches none of its chip's preferred labels.
inline constexpr int kUnpreferredSensorRank = 100;

struct SensorRole {
    SensorKind kind = SensorKind::cpu;
    int rank = kUnpreferredSensorRank; // 0 for the chip's most preferred sensors
    bool operator==(const SensorRole&) const = default;
};

// The role of the temperature labelled `label` on chip `chipName` ("coretemp", "Package id 0"),
// or nothing when the chip belongs to another device. Both the libsensors and the sysfs
// reading use it.
std::optional<SensorRole> classifySensor(std::string_view chipName, std::string_view label);

// Lists the CPU and GPU chips under `locations`. Missing directories give an empty plan.
// For the default locations libsensors is initialised again first, finding new drivers.
SensorPlan discoverSensors(const SensorLocations& locations);

// One chip's value now: the highest plausible value of its first tier that has one.
std::optional<double> readChipTemperature(const SensorChip& chip);

// Reads every chip of `plan` once; a channel without a plausible value is left at 0 / 0.
QLTemperatureReading readSensorPlan(const SensorPlan& plan);

// "<chip> <channel>" of each hwmon temperature at or above its critical mark, e.g.
// "k10temp temp1"; chips of every device count. Marks of 0 or below mean none.
std::vector<std::string> sensorsAtCriticalTemperature(const std::string& hwmonRoot = kSystemHwmonRoot);

// Discovers the sensors on first use and keeps their inputs, re-reading only the
// values on each call. When a cached chip stops giving values (a driver reloaded, a
// device gone) the call discovers again at once; when nothing was found, the next call
// looks again. Safe from any thread; calls are serialised.
// The hottest of a CPU chip's sensors after its preferred tier (its cores, or the CCDs under
// Tctl), or nothing for a chip without them.
std::optional<double> readHottestCore(const SensorChip& chip);

class HwmonTemperatureReader {
  public:
    explicit HwmonTemperatureReader(SensorLocations locations = {});
    QLTemperatureReading read();
    // The hottest core over the CPU chips found by read(); nothing before it found one.
    std::optional<double> readHottestCpuCore();

  private:
    SensorLocations locations_;
    std::mutex mutex_;
    std::optional<SensorPlan> plan_; // guarded by mutex_
};

} // namespace quarbel
