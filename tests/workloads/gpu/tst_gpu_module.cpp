#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/device_selection.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/gpu/shader_compiler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

using namespace quarbel::gpu;

namespace {

const std::vector<DeviceCandidate> kMixedDevices = {
    {"llvmpipe (LLVM 15.0.6, 256 bits)", DeviceKind::cpu}, {"Virtio GPU", DeviceKind::virtualGpu},
    {"Intel(R) UHD Graphics 770", DeviceKind::integrated}, {"NVIDIA GeForce RTX 4070", DeviceKind::discrete},
    {"AMD Radeon RX 7600", DeviceKind::discrete},
};

} // namespace

TEST(DeviceSelection, PrefersDiscreteThenIntegratedThenVirtualThenCpu) {
    EXPECT_EQ(chooseDevice(kMixedDevices, ""), 3u);
    std::vector<DeviceCandidate> devices(kMixedDevices.begin(), kMixedDevices.begin() + 3);
    EXPECT_EQ(chooseDevice(devices, ""), 2u);
    devices.pop_back();
    EXPECT_EQ(chooseDevice(devices, ""), 1u);
    devices.pop_back();
    EXPECT_EQ(chooseDevice(devices, ""), 0u);
    EXPECT_EQ(chooseDevice(std::vector<DeviceCandidate>{{"odd", DeviceKind::other}}, ""), 0u);
    EXPECT_EQ(chooseDevice({}, ""), std::nullopt);
}

TEST(DeviceSelection, OverrideTakesAnIndexOrANamePartAndFallsBackWhenNothingMatches) {
    EXPECT_EQ(chooseDevice(kMixedDevices, "0"), 0u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "4"), 4u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "radeon"), 4u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "LLVMPIPE"), 0u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "9"), 3u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "Apple M3"), 3u);
    EXPECT_EQ(chooseDevice(kMixedDevices, "1x"), 3u) << "not an index, and no name contains it";
}

TEST(DispatchGeometry, CoversEveryItemWithWholeGroupsWithinTheDeviceLimit) {
    EXPECT_EQ(threadgroupWidth(32, 1024), 32u);
    EXPECT_EQ(threadgroupWidth(0, 1024), 1u);
    EXPECT_EQ(threadgroupWidth(64, 32), 32u);

    EXPECT_EQ(dispatchGridFor(2'097'152, 64, 65'535), (DispatchGrid{32'768, 1}));
    EXPECT_EQ(dispatchGridFor(1'001, 8, 65'535), (DispatchGrid{126, 1}));
    EXPECT_EQ(dispatchGridFor(0, 8, 65'535), (DispatchGrid{1, 1}));
    // 8K frame with narrow groups: more groups than one dimension holds.
    const DispatchGrid grid = dispatchGridFor(33'177'600, 8, 65'535);
    EXPECT_EQ(grid.groupsX, 65'535u);
    EXPECT_GE(std::uint64_t{grid.groupsX} * grid.groupsY * 8, 33'177'600u);
    EXPECT_LT(std::uint64_t{grid.groupsX} * (grid.groupsY - 1) * 8, 33'177'600u) << "no whole spare row";
}

TEST(ShaderCompiler, CompilesGlslAndFindsTheStagesEntryPoint) {
    const CompiledShader shader = compileGlsl("#version 450\nlayout(local_size_x = 1) in;\nvoid main() {}\n",
                                              ShaderStage::compute, "t.comp");
    ASSERT_TRUE(shader.ok()) << shader.error;
    EXPECT_TRUE(hasEntryPoint(shader.spirv, ShaderStage::compute, kEntryPointName));
    EXPECT_FALSE(hasEntryPoint(shader.spirv, ShaderStage::fragment, kEntryPointName));
    EXPECT_FALSE(hasEntryPoint(shader.spirv, ShaderStage::compute, "suite_compute"));
    EXPECT_FALSE(hasEntryPoint(std::vector<std::uint32_t>{0x07230203u, 0, 0}, ShaderStage::compute, "main"));
}

TEST(ShaderCompiler, ReportsTheCompilersMessageTaggedWithTheSourceName) {
    const CompiledShader shader = compileGlsl("#version 450\nvoid main() { undefinedThing = 1; }\n",
                                              ShaderStage::compute, "broken.comp");
    EXPECT_FALSE(shader.ok());
    EXPECT_TRUE(shader.spirv.empty());
    EXPECT_NE(shader.error.find("broken.comp:2: error:"), std::string::npos) << shader.error;
    EXPECT_NE(shader.error.find("undefinedThing"), std::string::npos) << shader.error;
    EXPECT_NE(shader.error.back(), '\n');
}

TEST(DefaultDevice, NamesTheDeviceAndFollowsTheOverride) {
    const auto name = defaultDeviceName();
    ASSERT_TRUE(name.has_value()) << "the test machine provides lavapipe";
    EXPECT_FALSE(name->empty());

    setenv("QUARBEL_GPU", "0", 1);
    const auto byIndex = defaultDeviceName();
    setenv("QUARBEL_GPU", "no such device anywhere", 1);
    const auto unmatched = defaultDeviceName();
    unsetenv("QUARBEL_GPU");
    ASSERT_TRUE(byIndex.has_value());
    EXPECT_EQ(unmatched, name);
}
