// SPDX-License-Identifier: Apache-2.0
// What the sensors said while one benchmark ran, and how much energy it took: plain values,
// recorded by the run controller, kept in the report and drawn under each result.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel {

// Samples taken at a fixed rate while a benchmark runs, one column per sensor. A column is
// either empty (the machine has no such sensor, or it could not be read) or as long as
// `seconds`; a sample that could not be read in an otherwise present column is NaN.
struct SensorTrace {
    std::vector<float> seconds;     // since the benchmark started
    std::vector<float> coreMHzMean; // current clock over the online cores (cpufreq)
    std::vector<float> coreMHzLow;  // the slowest core's
    std::vector<float> coreMHzHigh; // the fastest core's
    std::vector<float> cpuCelsius;  // the CPU package, or its hottest sensor
    std::vector<float> coreCelsius; // the hottest core (or CCD), where cores have sensors
    std::vector<float> cpuWatts;    // CPU package power since the previous sample (RAPL)
    std::vector<float> gpuWatts;
    std::vector<float> gpuMHz; // graphics clock
    std::vector<float> gpuCelsius;
    std::vector<std::uint32_t> gpuThrottleReasons; // NVML's clock event reasons, a bit set
    std::vector<float> otherCores;                 // cores other processes used since the previous sample
    std::vector<std::uint8_t> onBattery;           // 1 on battery, 0 on AC
    std::uint64_t thermalThrottleEvents = 0;       // rise of the CPUs' thermal_throttle counters
    std::optional<double> packageLimitWatts;       // the CPU package's long-term power limit
    std::optional<double> criticalCelsius;         // the CPU sensor's critical temperature
    bool operator==(const SensorTrace&) const = default;

    bool empty() const noexcept { return seconds.empty(); }
};

// A float column of the trace as it is kept: its name in the report and how finely its
// values are stored, a power-of-two step of about 2^-bits of the column's largest magnitude
// (or of `magnitudeFloor`, when that is larger). The steps follow what the chart and the
// summary show: a core clock of 3.4 GHz to 32 MHz, 80 °C to 1 °C, 150 W to 2 W, 28 W to 0.25 W,
// a 20-second run's seconds to 1/8 s.
struct TraceColumn {
    const char* name;
    std::vector<float> SensorTrace::*values;
    int bits;
    float magnitudeFloor;
};
inline constexpr TraceColumn kTraceColumns[] = {
    {"seconds", &SensorTrace::seconds, 7, 0},
    {"coreMHzMean", &SensorTrace::coreMHzMean, 6, 0},
    {"coreMHzLow", &SensorTrace::coreMHzLow, 6, 0},
    {"coreMHzHigh", &SensorTrace::coreMHzHigh, 6, 0},
    {"cpuCelsius", &SensorTrace::cpuCelsius, 6, 0},
    {"coreCelsius", &SensorTrace::coreCelsius, 6, 0},
    {"cpuWatts", &SensorTrace::cpuWatts, 6, 0},
    {"gpuWatts", &SensorTrace::gpuWatts, 6, 0},
    {"gpuMHz", &SensorTrace::gpuMHz, 8, 0},
    {"gpuCelsius", &SensorTrace::gpuCelsius, 6, 0},
    {"otherCores", &SensorTrace::otherCores, 4, 1.0f},
};

// The exponent of the step `values` are kept to (step = 2^exponent). Rounding to that step
// never raises the exponent, so a column that is kept already keeps its values when kept again.
int traceStepExponent(const std::vector<float>& values, const TraceColumn& column) noexcept;
// `values` rounded to their step; a value that is not finite becomes a missing sample (NaN).
std::vector<float> keptTraceColumn(std::vector<float> values, const TraceColumn& column);

// Whose energy a measurement counts.
enum class PowerDomain {
    cpuPackage, // RAPL's package domains, summed over the packages
    gpu,        // the GPU board (NVML) or the GPU chip (amdgpu)
    battery,    // the whole machine, while it runs on its battery
};

std::string_view rawValue(PowerDomain domain); // "cpuPackage", "gpu", "battery"
std::optional<PowerDomain> powerDomainFromRawValue(std::string_view raw);
std::string_view powerDomainLabel(PowerDomain domain); // "CPU package", "GPU", "Machine (battery)"

struct EnergyMeasurement {
    PowerDomain domain = PowerDomain::cpuPackage;
    std::string source; // "RAPL package-0", "NVML", "amdgpu hwmon2", "battery BAT0"
    double joules = 0;
    double averageWatts = 0; // joules over the benchmark's seconds
    double peakWatts = 0;    // the highest between two trace samples
    bool operator==(const EnergyMeasurement&) const = default;
};

// A domain without a measurement, and why: "no sensor", "no permission to read …", "a virtual
// machine exposes no power sensors".
struct EnergyAbsence {
    PowerDomain domain = PowerDomain::cpuPackage;
    std::string reason;
    bool operator==(const EnergyAbsence&) const = default;
};

struct ResultEnergy {
    std::vector<EnergyMeasurement> measured;
    std::vector<EnergyAbsence> missing;
    bool operator==(const ResultEnergy&) const = default;

    bool empty() const noexcept { return measured.empty() && missing.empty(); }
    const EnergyMeasurement* find(PowerDomain domain) const noexcept;
};

// The measurement a benchmark's efficiency is judged by: the GPU's for a GPU benchmark, else
// the CPU package's, else the machine's on battery; null when none was measured.
const EnergyMeasurement* efficiencyMeasurement(const ResultEnergy& energy, bool gpuBenchmark) noexcept;

// Points per joule: the score (a rate) over the average power, i.e. the work one joule buys,
// in the score's scale. None without a positive power.
std::optional<double> pointsPerJoule(double score, const EnergyMeasurement& measurement) noexcept;

} // namespace quarbel
