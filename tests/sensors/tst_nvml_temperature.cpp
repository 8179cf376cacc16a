// SPDX-License-Identifier: Apache-2.0
#include "sensors/nvml_temperature.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <vector>

using quarbel::NvmlTemperatureSource;

namespace {

// Sets what the fake NVML library (FAKE_NVML_LIBRARY) answers next.
void configureFake(int initResult, std::vector<unsigned int> temperatures, int temperatureResult = 0) {
    // Kept loaded, so that the sources below open the same, configured copy.
    static void* const handle = ::dlopen(FAKE_NVML_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << ::dlerror();
    using Configure = void (*)(int, const unsigned int*, unsigned int, int);
    const auto configure = reinterpret_cast<Configure>(::dlsym(handle, "fakeNvmlConfigure"));
    ASSERT_NE(configure, nullptr);
    configure(initResult, temperatures.data(), static_cast<unsigned int>(temperatures.size()),
              temperatureResult);
}

} // namespace

TEST(NvmlTemperature, HottestPlausibleGpuOfAllDevicesOrNoValue) {
    const NvmlTemperatureSource missing("libquarbel-no-such-nvml.so.1");
    EXPECT_FALSE(missing.available() || missing.hottestGpu());
    // Initialisation result 9 is NVML_ERROR_DRIVER_NOT_LOADED, read result 15 NVML_ERROR_GPU_IS_LOST.
    const struct {
        int initResult;
        std::vector<unsigned int> temperatures;
        int readResult;
        bool available;
        std::optional<double> hottest;
    } cases[] = {{0, {52, 145, 61}, 0, true, 61.0},
                 {9, {50}, 0, false, {}},
                 {0, {50, 60}, 15, true, {}},
                 {0, {}, 0, true, {}}};
    for (const auto& c : cases) {
        configureFake(c.initResult, c.temperatures, c.readResult);
        const NvmlTemperatureSource source(FAKE_NVML_LIBRARY);
        EXPECT_EQ(source.available(), c.available) << c.initResult;
        EXPECT_EQ(source.hottestGpu(), c.hottest) << c.temperatures.size();
    }
}
