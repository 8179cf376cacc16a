// SPDX-License-Identifier: Apache-2.0
// Runs with the Vulkan and OpenCL loaders pointed at nothing (see main), as on a machine
// without drivers.
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/gpu/gpu_workloads.h"
#include "workloads/gpu/opencl_compute.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace quarbel;

TEST(WithoutDevices, EveryGpuWorkloadIsSkippedWithItsReasonAndNoDeviceIsFound) {
    WorkloadContext context;
    context.budgetSeconds = 0.0;
    const BenchmarkOutcome metal = skippedOutcome("Metal is not available on this machine.");
    EXPECT_EQ(runMetalCompute(context, {64, 1, std::nullopt}), metal);
    EXPECT_EQ(runRawMetalDecode(context, {8, 8, std::nullopt}), metal);
    EXPECT_EQ(runMetalVisual(context, {16, 9, std::nullopt, std::nullopt}), metal);
    EXPECT_EQ(runOpenCLCompute(context, {64, 1}),
              skippedOutcome("OpenCL is unavailable or no compatible device was found."));
    EXPECT_EQ(gpu::defaultDeviceName(), std::nullopt);
    cl_device_id device = nullptr;
    cl_platform_id platform = nullptr;
    EXPECT_NE(QLFindOpenCLDevice(&device, &platform), 0);
    const QLResult result = QuarbelRunOpenCL(64, 1, 0.01);
    EXPECT_EQ(result.status, -1);
    EXPECT_EQ(result.gflops, 0.0);
    EXPECT_EQ(result.seconds, 0.0);
}

int main(int argc, char** argv) {
    // The loaders read these once, at their first call, so set them before any test runs.
    char vendors[] = "/tmp/quarbel-no-opencl-XXXXXX";
    if (mkdtemp(vendors) == nullptr) return 2;
    setenv("OCL_ICD_VENDORS", vendors, 1);
    setenv("VK_ICD_FILENAMES", "/nonexistent/quarbel-no-vulkan.json", 1);
    setenv("VK_DRIVER_FILES", "/nonexistent/quarbel-no-vulkan.json", 1);
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::filesystem::remove(vendors);
    return result;
}
