// SPDX-License-Identifier: Apache-2.0
#include "sensors/hwmon_reader.h"
#include "sensors/nvml_temperature.h"
#include "sensors/temperature.h"

// Linux: the hwmon sensors (through libsensors, else sysfs) for the CPU and for GPUs whose
// kernel driver reports a temperature, and NVML for NVIDIA GPUs, whose proprietary driver
// has no hwmon chip.
// The controller logic of smc_controller.h serves machines with an SMC transport.
namespace {

quarbel::HwmonTemperatureReader& systemReader() {
    // Never destroyed: a background read may still run while the process exits.
    static auto* const hwmon = new quarbel::HwmonTemperatureReader();
    return *hwmon;
}

} // namespace

std::optional<double> quarbel::readHottestCpuCoreTemperature() { return systemReader().readHottestCpuCore(); }

extern "C" QLTemperatureReading QuarbelReadTemperatures(void) {
    QLTemperatureReading reading = systemReader().read();
    if (const auto nvidia = quarbel::NvmlTemperatureSource::system().hottestGpu()) {
        if (reading.hasGPU == 0 || *nvidia > reading.gpu) {
            reading.gpu = *nvidia;
            reading.hasGPU = 1;
        }
    }
    return reading;
}
