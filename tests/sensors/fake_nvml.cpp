// SPDX-License-Identifier: Apache-2.0
// A stand-in for libnvidia-ml.so.1 with the few entry points the reader uses; the
// tests steer it through fakeNvmlConfigure.
#include <vector>

namespace {
int initResult = 0;
int temperatureResult = 0;
std::vector<unsigned int> temperatures;
struct Device {};
Device devices[8];
} // namespace

extern "C" {

__attribute__((visibility("default"))) void fakeNvmlConfigure(int init, const unsigned int* values,
                                                              unsigned int count, int temperature) {
    initResult = init;
    temperatureResult = temperature;
    temperatures.assign(values, values + count);
}

__attribute__((visibility("default"))) int nvmlInit_v2() { return initResult; }
__attribute__((visibility("default"))) int nvmlShutdown() { return 0; }

__attribute__((visibility("default"))) int nvmlDeviceGetCount_v2(unsigned int* count) {
    *count = static_cast<unsigned int>(temperatures.size());
    return 0;
}

__attribute__((visibility("default"))) int nvmlDeviceGetHandleByIndex_v2(unsigned int index,
                                                                         Device** device) {
    if (index >= temperatures.size() || index >= 8) return 2; // NVML_ERROR_INVALID_ARGUMENT
    *device = &devices[index];
    return 0;
}

__attribute__((visibility("default"))) int nvmlDeviceGetTemperature(Device* device, int sensor,
                                                                    unsigned int* celsius) {
    if (sensor != 0) return 2; // only NVML_TEMPERATURE_GPU exists
    if (temperatureResult != 0) return temperatureResult;
    *celsius = temperatures[static_cast<unsigned int>(device - devices)];
    return 0;
}
}

// Power, energy, clock and clock event reasons, the same for every device; the energy counter
// advances by `joulesPerRead` on each read.
namespace {
unsigned int milliwatts = 0;
unsigned long long millijoules = 0;
unsigned long long millijoulesPerRead = 0;
unsigned long long reasons = 0;
} // namespace

extern "C" {

__attribute__((visibility("default"))) void
fakeNvmlConfigurePower(unsigned int watts, unsigned int joulesPerRead, unsigned long long clockReasons) {
    milliwatts = watts * 1000;
    millijoules = 0;
    millijoulesPerRead = joulesPerRead * 1000ull;
    reasons = clockReasons;
}

__attribute__((visibility("default"))) int nvmlDeviceGetPowerUsage(Device*, unsigned int* value) {
    *value = milliwatts;
    return 0;
}

__attribute__((visibility("default"))) int nvmlDeviceGetTotalEnergyConsumption(Device*,
                                                                               unsigned long long* value) {
    millijoules += millijoulesPerRead;
    *value = millijoules;
    return 0;
}

__attribute__((visibility("default"))) int nvmlDeviceGetClockInfo(Device*, int, unsigned int* mhz) {
    *mhz = 1800;
    return 0;
}

__attribute__((visibility("default"))) int nvmlDeviceGetCurrentClocksEventReasons(Device*,
                                                                                  unsigned long long* value) {
    *value = reasons;
    return 0;
}
}
