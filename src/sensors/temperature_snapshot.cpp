// SPDX-License-Identifier: Apache-2.0
#include "sensors/temperature.h"

#include "model/number_format.h"

namespace quarbel {

const TemperatureSnapshot TemperatureSnapshot::unavailable{};

TemperatureSnapshot makeTemperatureSnapshot(const QLTemperatureReading& reading,
                                            std::chrono::system_clock::time_point readAt) {
    TemperatureSnapshot snapshot;
    if (reading.hasCPU != 0) snapshot.cpuCelsius = reading.cpu;
    if (reading.hasGPU != 0) snapshot.gpuCelsius = reading.gpu;
    snapshot.updatedAt = readAt;
    return snapshot;
}

std::string temperatureText(std::optional<double> celsius) {
    if (!celsius) return "Unavailable";
    return format(*celsius, 0) + " \u00B0C";
}

} // namespace quarbel
