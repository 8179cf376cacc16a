// SPDX-License-Identifier: Apache-2.0
// CPU and GPU temperatures: the raw reading and the snapshot the run controller keeps.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

extern "C" {

// One reading; a channel holds a value only when its flag is 1.
struct QLTemperatureReading {
    double cpu;     // degrees Celsius; 0 when hasCPU is 0
    double gpu;     // degrees Celsius; 0 when hasGPU is 0
    int32_t hasCPU; // 1 when cpu holds a reading
    int32_t hasGPU; // 1 when gpu holds a reading
};

// Reads the machine's sensors once. Blocking; safe to call from any thread.
QLTemperatureReading QuarbelReadTemperatures(void);
}

namespace quarbel {

struct TemperatureSnapshot {
    std::optional<double> cpuCelsius;
    std::optional<double> gpuCelsius;
    std::optional<std::chrono::system_clock::time_point> updatedAt; // absent for the initial value
    bool operator==(const TemperatureSnapshot&) const = default;

    static const TemperatureSnapshot unavailable;
};

TemperatureSnapshot makeTemperatureSnapshot(const QLTemperatureReading& reading,
                                            std::chrono::system_clock::time_point readAt);

// The hottest CPU core (or CCD) that the machine's sensors report, after a
// QuarbelReadTemperatures found them; nothing without per-core sensors.
std::optional<double> readHottestCpuCoreTemperature();

// "48 °C" for a present temperature, "Unavailable" for an absent one.
std::string temperatureText(std::optional<double> celsius);

} // namespace quarbel
