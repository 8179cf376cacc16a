// SPDX-License-Identifier: Apache-2.0
// A stand-in for libnvidia-ml.so.1 with the few entry points the readers use; the tests steer it
// through fakeNvmlConfigure and fakeNvmlConfigurePower.
#include <vector>

#define FAKE_NVML_EXPORT extern "C" __attribute__((visibility("default")))

namespace {
struct Device {};
Device devices[8];
int initResult = 0, temperatureResult = 0;
std::vector<unsigned int> temperatures;
// Power, clock and clock event reasons are the same for every device; the energy counter
// advances by a fixed step on each read.
unsigned int milliwatts = 0;
unsigned long long millijoules = 0, millijoulesPerRead = 0, reasons = 0;
} // namespace

FAKE_NVML_EXPORT void fakeNvmlConfigure(int init, const unsigned int* values, unsigned int count,
                                        int temperature) {
    initResult = init;
    temperatureResult = temperature;
    temperatures.assign(values, values + count);
}

FAKE_NVML_EXPORT void fakeNvmlConfigurePower(unsigned int watts, unsigned int joulesPerRead,
                                             unsigned long long clockReasons) {
    milliwatts = watts * 1000;
    millijoules = 0;
    millijoulesPerRead = joulesPerRead * 1000ull;
    reasons = clockReasons;
}

FAKE_NVML_EXPORT int nvmlInit_v2() { return initResult; }
FAKE_NVML_EXPORT int nvmlShutdown() { return 0; }

FAKE_NVML_EXPORT int nvmlDeviceGetCount_v2(unsigned int* count) {
    *count = static_cast<unsigned int>(temperatures.size());
    return 0;
}

FAKE_NVML_EXPORT int nvmlDeviceGetHandleByIndex_v2(unsigned int index, Device** device) {
    if (index >= temperatures.size() || index >= 8) return 2; // NVML_ERROR_INVALID_ARGUMENT
    *device = &devices[index];
    return 0;
}

FAKE_NVML_EXPORT int nvmlDeviceGetTemperature(Device* device, int sensor, unsigned int* celsius) {
    if (sensor != 0) return 2; // only NVML_TEMPERATURE_GPU exists
    if (temperatureResult != 0) return temperatureResult;
    *celsius = temperatures[static_cast<unsigned int>(device - devices)];
    return 0;
}

FAKE_NVML_EXPORT int nvmlDeviceGetPowerUsage(Device*, unsigned int* value) { return *value = milliwatts, 0; }
FAKE_NVML_EXPORT int nvmlDeviceGetClockInfo(Device*, int, unsigned int* mhz) { return *mhz = 1800, 0; }

FAKE_NVML_EXPORT int nvmlDeviceGetTotalEnergyConsumption(Device*, unsigned long long* value) {
    return *value = millijoules += millijoulesPerRead, 0;
}

FAKE_NVML_EXPORT int nvmlDeviceGetCurrentClocksEventReasons(Device*, unsigned long long* value) {
    return *value = reasons, 0;
}
