// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/device_selection.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/gpu/group_size_calibration.h"
#include "workloads/gpu/shader_compiler.h"
#include "workloads/gpu/submission_plan.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <string_view>
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
    // The first n devices of the list: the discrete ones come last, the CPU first.
    for (const auto& [n, chosen] : {std::pair<std::size_t, std::size_t>{5, 3}, {3, 2}, {2, 1}, {1, 0}}) {
        const std::vector<DeviceCandidate> devices(kMixedDevices.begin(), kMixedDevices.begin() + long(n));
        EXPECT_EQ(chooseDevice(devices, "").index, chosen) << n << " devices";
    }
    EXPECT_EQ(chooseDevice(std::vector<DeviceCandidate>{{"odd", DeviceKind::other}}, "").index, 0u);
    EXPECT_EQ(chooseDevice({}, ""), DeviceChoice{});
}

TEST(DeviceSelection, OverrideTakesAnIndexOrANamePartAndWarnsWhenNothingMatches) {
    const std::string kListed = "Devices: 0 llvmpipe (LLVM 15.0.6, 256 bits); 1 Virtio GPU; 2 Intel(R) UHD "
                                "Graphics 770; 3 NVIDIA GeForce RTX 4070; 4 AMD Radeon RX 7600.";
    const struct {
        std::string_view override;
        std::optional<std::size_t> index;
        bool warns;
    } cases[] = {
        {"", 3, false}, {"0", 0, false},       {"4", 4, false}, {"radeon", 4, false}, {"LLVMPIPE", 0, false},
        {"5", 3, true}, {"Apple M3", 3, true}, {"1x", 3, true}, {"-1", 3, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.override);
        const DeviceChoice choice = chooseDevice(kMixedDevices, c.override);
        EXPECT_EQ(choice.index, c.index);
        if (!c.warns) {
            EXPECT_EQ(choice.warning, std::nullopt);
            continue;
        }
        EXPECT_EQ(choice.warning, "QUARBEL_GPU=\"" + std::string(c.override) +
                                      "\" matches no Vulkan device; using the default. " + kListed);
    }
    EXPECT_EQ(chooseDevice({}, "0"),
              (DeviceChoice{std::nullopt, "QUARBEL_GPU=\"0\" matches no Vulkan device: none was found."}));
}

TEST(DispatchGeometry, GroupsOfTheExecutionWidthCoverEveryItemWithAtMostOnePartialRowWithinTheLimit) {
    EXPECT_EQ(threadgroupWidth(32, 1024), 32u);
    EXPECT_EQ(threadgroupWidth(0, 1024), 1u);
    EXPECT_EQ(threadgroupWidth(64, 32), 32u);
    const struct {
        std::uint64_t items;
        std::uint32_t width;
        std::uint32_t limit;
        DispatchGrid expected;
    } cases[] = {
        {0, 8, 65'535, {1, 1}},
        {1, 8, 65'535, {1, 1}},
        {1'001, 8, 65'535, {126, 1}},
        {2'097'152, 64, 65'535, {32'768, 1}},
        {65'535ull * 8 * 4, 8, 65'535, {65'535, 4}},     // exact multiple of full rows
        {65'536ull * 32, 32, 65'535, {32'768, 2}},       // metalCompute, 32 wide: one group past a row
        {2'097'152, 8, 65'535, {52'429, 5}},             // metalCompute on lavapipe's 8 lanes
        {33'177'600, 8, 65'535, {64'800, 64}},           // rawMetalDecode's 8K frame, exactly spread
        {1'000'003, 1, 65'535, {62'501, 16}},            // prime
        {999'983, 7, 1'009, {1'007, 142}},               // primes all round
        {4'294'967'295ull, 1, 65'535, {65'535, 65'537}}, // every 32-bit index: rows past the limit
        {4'294'967'295ull, 32, 65'535, {65'505, 2'049}},
        {5, 1, 1, {1, 5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.items << " items, " << c.width << " wide, limit " << c.limit);
        EXPECT_EQ(dispatchGridFor(c.items, c.width, c.limit), c.expected);
    }
}

TEST(DispatchGeometry, PartsTileTheGridInOrderAlongRowsOrAlongTheOnlyRow) {
    const struct {
        DispatchGrid grid;
        std::uint32_t wanted, parts;
        GridPart second; // part 1 of parts
    } cases[] = {
        {{8'192, 1}, 64, 64, {128, 0, {128, 1}}},
        {{100, 1}, 64, 64, {1, 0, {2, 1}}}, // uneven: 1, 2, 1, 2, ...
        {{16, 1}, 64, 16, {1, 0, {1, 1}}},  // no more parts than groups
        {{52'429, 5}, 64, 5, {0, 1, {52'429, 1}}},
        {{1, 1}, 64, 1, {0, 0, {1, 1}}}, // a single group: nothing to cut
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.grid.groupsX << " x " << c.grid.groupsY);
        const std::uint32_t parts = partsAvailable(c.grid, c.wanted);
        ASSERT_EQ(parts, c.parts);
        if (parts > 1) {
            EXPECT_EQ(gridPart(c.grid, parts, 1, 2), c.second);
        }
        std::uint64_t next = 0, total = 0;
        for (std::uint32_t i = 0; i < parts; ++i) {
            const GridPart part = gridPart(c.grid, parts, i, i + 1);
            EXPECT_EQ(c.grid.groupsY > 1 ? part.baseY : part.baseX, next)
                << "part " << i << " follows the last";
            next += c.grid.groupsY > 1 ? part.groups.groupsY : part.groups.groupsX;
            total += groupCount(part.groups);
        }
        EXPECT_EQ(total, groupCount(c.grid));
        EXPECT_EQ(gridPart(c.grid, parts, 0, parts), (GridPart{0, 0, c.grid}));
        EXPECT_EQ(groupCount(gridPart(c.grid, parts, 3, 3).groups), 0u);
    }
}

TEST(SubmissionPlan, CutsALongDispatchIntoPartsAndLinesBatchesUpWithWholeDispatches) {
    const struct {
        double perPart, remaining;
        std::uint32_t position, expected;
    } cases[] = {
        {0.025, 10.0, 0, 1},         // a slow device: one 64th at a time
        {0.005, 10.0, 10, 5},        // within the dispatch
        {0.0001, 10.0, 1, 63 + 128}, // the rest of this dispatch, then two whole ones
        {0.0001, 10.0, 0, 192},      // 250 parts wanted: whole dispatches only
        {0.00001, 10.0, 0, 4 * 64},  // capped at four dispatches
        {0.0001, 0.0, 40, 24},       // past the budget: only the rest of this dispatch
        {0.005, -1.0, 40, 5},        // ... at the plan's pace
        {0.005, 0.0, 0, 0},          // past the budget at a boundary: done
        {0.0001, 0.00105, 0, 11},    // no further than the budget needs
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << c.perPart << " s a part at " << c.position << ", " << c.remaining << " s left");
        EXPECT_EQ(partsForNextSubmission({0.025, 4}, c.perPart, c.remaining, 64, c.position), c.expected);
    }
    EXPECT_EQ(partsForNextSubmission({0.025, 256}, 0.0, 10.0, 1, 0), 256u) << "whole dispatches when not cut";
}

TEST(SubmissionPlan, FillsTheTargetTimeWithinTheCapAndTheRemainingBudget) {
    const struct {
        double perDispatch, remaining;
        std::uint32_t cap, expected;
    } cases[] = {
        {0.001, 10.0, 256, 25},    // 25 ms of 1 ms dispatches
        {0.0001, 10.0, 256, 250},  // just under the cap
        {0.00001, 10.0, 256, 256}, // capped
        {0.001, 0.0035, 256, 4},   // no further than the budget needs
        {0.001, -1.0, 256, 1},     // at least one
        {0.5, 10.0, 256, 1},       // a dispatch longer than the target goes alone
        {0.001, 10.0, 1, 1},       // one at a time when asked
        {0.0, 10.0, 64, 64},       // an unmeasurably short dispatch: the cap
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.perDispatch << " s each, " << c.remaining << " s left");
        EXPECT_EQ(dispatchesForNextSubmission({0.025, c.cap}, c.perDispatch, c.remaining), c.expected);
    }
}

TEST(GroupSizeCalibration, TriesTheAllowedSizesAndKeepsTheFastest) {
    EXPECT_EQ(groupSizeCandidates(1024), (std::vector<std::uint32_t>{256, 128, 64, 512, 1024}));
    EXPECT_EQ(groupSizeCandidates(256), (std::vector<std::uint32_t>{256, 128, 64}));
    EXPECT_EQ(groupSizeCandidates(48), (std::vector<std::uint32_t>{48}));

    auto context = Context::openDefault();
    ASSERT_TRUE(context) << "no Vulkan device (lavapipe expected)";
    const std::string source =
        "#version 450\nlayout(local_size_x_id = 0) in;\n"
        "layout(std430, binding = 0) buffer B { float v[]; };\nvoid main() { v[0] = 1.0; }\n";
    const std::map<std::uint32_t, double> seconds = {{256, 3e-3}, {128, 1e-3}, {64, 2e-3}, {512, 5e-4}};
    std::vector<std::uint32_t> timed;
    const auto fake = [&](ComputePipeline&, std::uint32_t size) -> std::optional<double> {
        timed.push_back(size);
        const auto found = seconds.find(size); // a size that could not be timed is passed over
        return found == seconds.end() ? std::nullopt : std::optional(found->second);
    };
    const std::vector<std::uint32_t> all = {256, 128, 64, 512, 1024};
    CalibratedKernel chosen = calibrateGroupSize(*context, source, "t.comp", 1, 0, all, fake);
    ASSERT_TRUE(chosen.kernel.pipeline) << chosen.kernel.message;
    EXPECT_EQ(chosen.groupSize, 512u);
    EXPECT_EQ(timed, all);
    EXPECT_EQ(chosen.timings.size(), 4u);

    // Out of calibration time after the first: the first is kept, nothing more is tried.
    timed.clear();
    chosen = calibrateGroupSize(*context, source, "t.comp", 1, 0, all, fake, 0.0);
    EXPECT_EQ(chosen.groupSize, 256u);
    EXPECT_EQ(timed, (std::vector<std::uint32_t>{256}));

    // One size is built without a timing.
    timed.clear();
    chosen = calibrateGroupSize(*context, source, "t.comp", 1, 0, std::vector<std::uint32_t>{96}, fake);
    EXPECT_EQ(chosen.groupSize, 96u);
    EXPECT_TRUE(timed.empty());
}

TEST(ShaderCompiler, CompilesGlslFindsTheStagesEntryPointAndTagsErrorsWithTheSourceName) {
    const CompiledShader shader = compileGlsl("#version 450\nlayout(local_size_x = 1) in;\nvoid main() {}\n",
                                              ShaderStage::compute, "t.comp");
    ASSERT_TRUE(shader.ok()) << shader.error;
    EXPECT_TRUE(hasEntryPoint(shader.spirv, ShaderStage::compute, kEntryPointName));
    EXPECT_FALSE(hasEntryPoint(shader.spirv, ShaderStage::fragment, kEntryPointName));
    EXPECT_FALSE(hasEntryPoint(shader.spirv, ShaderStage::compute, "suite_compute"));
    EXPECT_FALSE(hasEntryPoint(std::vector<std::uint32_t>{0x07230203u, 0, 0}, ShaderStage::compute, "main"));

    const CompiledShader broken = compileGlsl("#version 450\nvoid main() { undefinedThing = 1; }\n",
                                              ShaderStage::compute, "broken.comp");
    EXPECT_TRUE(broken.spirv.empty());
    EXPECT_EQ(broken.error.rfind("broken.comp:2: error:", 0), 0u) << broken.error;
    EXPECT_NE(broken.error.find("undefinedThing"), std::string::npos) << broken.error;
    EXPECT_NE(broken.error.back(), '\n');
}

// The first call in the process fixes the warning, so this must stay the only test here that
// asks for it (ctest runs each test in a process of its own anyway).
TEST(DefaultDevice, NamesTheDeviceFollowsTheOverrideAndWarnsOnceAboutOneThatNamesNoDevice) {
    const auto name = defaultDeviceName();
    ASSERT_TRUE(name.has_value()) << "the test machine provides lavapipe";
    EXPECT_FALSE(name->empty());

    setenv("QUARBEL_GPU", "0", 1);
    const auto byIndex = defaultDeviceName();
    setenv("QUARBEL_GPU", "no such device anywhere", 1);
    const auto unmatched = defaultDeviceName();
    const auto warning = deviceSelectionWarning();
    unsetenv("QUARBEL_GPU");
    ASSERT_TRUE(byIndex.has_value());
    EXPECT_EQ(unmatched, name);
    ASSERT_TRUE(warning.has_value());
    EXPECT_EQ(warning->rfind("QUARBEL_GPU=\"no such device anywhere\" matches no Vulkan device; using the "
                             "default. Devices: 0 ",
                             0),
              0u)
        << *warning;
    EXPECT_NE(warning->find(*name), std::string::npos) << *warning;
    EXPECT_EQ(deviceSelectionWarning(), warning) << "kept from the first call";
}
