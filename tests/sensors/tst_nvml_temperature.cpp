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

TEST(NvmlTemperature, MissingLibraryIsUnavailable) {
    const NvmlTemperatureSource source("libquarbel-no-such-nvml.so.1");
    EXPECT_FALSE(source.available());
    EXPECT_EQ(source.hottestGpu(), std::nullopt);
}

TEST(NvmlTemperature, HottestPlausibleGpuOfAllDevices) {
    configureFake(0, {52, 145, 61});
    const NvmlTemperatureSource source(FAKE_NVML_LIBRARY);
    ASSERT_TRUE(source.available());
    EXPECT_EQ(source.hottestGpu(), 61.0);
}

TEST(NvmlTemperature, FailedInitialisationOrReadsGiveNoValue) {
    configureFake(9, {50}); // NVML_ERROR_DRIVER_NOT_LOADED
    const NvmlTemperatureSource noDriver(FAKE_NVML_LIBRARY);
    EXPECT_FALSE(noDriver.available());
    EXPECT_EQ(noDriver.hottestGpu(), std::nullopt);

    configureFake(0, {50, 60}, 15); // NVML_ERROR_GPU_IS_LOST
    const NvmlTemperatureSource lost(FAKE_NVML_LIBRARY);
    EXPECT_TRUE(lost.available());
    EXPECT_EQ(lost.hottestGpu(), std::nullopt);

    configureFake(0, {});
    const NvmlTemperatureSource noDevices(FAKE_NVML_LIBRARY);
    EXPECT_EQ(noDevices.hottestGpu(), std::nullopt);
}
