// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "gpu_test_support.h"
#include "model/number_format.h"
#include "workloads/gpu/buffer.h"
#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/embedded_shaders.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/raw_frame.h"

#include <algorithm>
#include <cstring>

using namespace quarbel;
using namespace quarbel::gpu;
using quarbel::testing::CancellingProgress;

namespace {

// Runs the built-in kernel once over `samples` and copies the private output back.
std::vector<std::uint32_t> decodeOnDevice(const std::vector<std::uint16_t>& samples, std::uint32_t width,
                                          std::uint32_t height) {
    auto context = Context::openDefault();
    if (!context) {
        ADD_FAILURE() << "no Vulkan device (lavapipe expected)";
        return {};
    }
    const std::uint32_t groupWidth =
        threadgroupWidth(context->threadExecutionWidth(), context->maxThreadsPerGroup());
    ComputeKernel kernel = buildComputeKernel(*context, shaderSource(EmbeddedShader::rawDecode),
                                              "raw_decode.comp", 2, sizeof(RawFrameSize), groupWidth);
    if (!kernel.pipeline) {
        ADD_FAILURE() << kernel.message;
        return {};
    }
    const std::uint64_t count = samples.size();
    auto input = Buffer::create(*context, rawInputBytes(count), Storage::shared);
    auto output = Buffer::create(*context, count * 4, Storage::privateGpu);
    auto readBack = Buffer::create(*context, count * 4, Storage::shared);
    std::memcpy(input->contents(), samples.data(), count * 2);
    kernel.pipeline->bindBuffers({input.get(), output.get()});
    const RawFrameSize size{width, height};
    const DispatchGrid grid = dispatchGridFor(count, groupWidth, context->maxGroupsPerDimension());
    const VkResult result = context->submitAndWait([&](VkCommandBuffer commands) {
        kernel.pipeline->recordDispatch(commands, &size, grid);
        recordCopy(commands, *output, *readBack);
    });
    EXPECT_EQ(result, VK_SUCCESS);
    const auto* pixels = static_cast<const std::uint32_t*>(readBack->contents());
    return {pixels, pixels + count};
}

// The decode of one pixel on the CPU, with the same edge clamping and single precision.
std::uint32_t referencePixel(const std::vector<std::uint16_t>& raw, std::uint32_t width, std::uint32_t height,
                             std::uint32_t id) {
    const int x = static_cast<int>(id % width), y = static_cast<int>(id / width);
    const auto at = [&](int dx, int dy) -> std::uint32_t {
        return raw[static_cast<std::size_t>(std::clamp(y + dy, 0, static_cast<int>(height) - 1)) * width +
                   static_cast<std::size_t>(std::clamp(x + dx, 0, static_cast<int>(width) - 1))];
    };
    const float c = static_cast<float>(raw[id]) / 65535.0f;
    const float hz = static_cast<float>(at(-1, 0) + at(1, 0)) / 131070.0f;
    const float vt = static_cast<float>(at(0, -1) + at(0, 1)) / 131070.0f;
    const float rgb[3] = {c * 1.38f - vt * 0.18f, (hz + vt) * 0.54f, c * 0.82f + hz * 0.22f};
    std::uint32_t pixel = 0xFF000000u;
    for (int channel = 0; channel < 3; ++channel) {
        const float shaped = std::clamp(std::pow(std::clamp(rgb[channel], 0.0f, 1.0f), 0.4545f), 0.0f, 1.0f);
        pixel |= static_cast<std::uint32_t>(shaped * 255.0f) << (16 - 8 * channel);
    }
    return pixel;
}

// Each of r, g, b within 1 of the expected: the device's pow may round a channel that sits
// just below a whole number the other way; a wrong neighbour or formula moves it by far more.
void expectPixelNear(std::uint32_t actual, std::uint32_t expected, std::size_t index) {
    EXPECT_EQ(actual >> 24, 0xFFu) << "pixel " << index;
    for (int shift : {16, 8, 0}) {
        const int a = static_cast<int>((actual >> shift) & 0xFF);
        const int e = static_cast<int>((expected >> shift) & 0xFF);
        EXPECT_LE(std::abs(a - e), 1) << "pixel " << index << " channel shift " << shift << std::hex
                                      << ": got 0x" << actual << ", expected 0x" << expected;
    }
}

} // namespace

TEST(RawDecodeKernel, FramesDecodeLikeTheCpuWithEdgesAsTheirOwnNeighbours) {
    // Odd sample count: the last word is half used. More groups than one row of the grid holds
    // on lavapipe (8 lanes: 67,275 groups in two rows, the second one group short).
    constexpr std::uint32_t kWidth = 1033;
    constexpr std::uint32_t kHeight = 521;
    std::vector<std::uint16_t> raw(kWidth * kHeight);
    fillSyntheticRawFrame(raw);
    EXPECT_EQ(raw[0], 0x4A5B);
    EXPECT_EQ(raw[33], static_cast<std::uint16_t>((33u * 257u) ^ (1u ^ 0x4A5Bu)));
    std::vector<std::uint32_t> synthetic(raw.size());
    for (std::uint32_t id = 0; id < raw.size(); ++id)
        synthetic[id] = referencePixel(raw, kWidth, kHeight, id);
    const struct {
        const char* name;
        std::vector<std::uint16_t> samples;
        std::uint32_t width, height;
        std::vector<std::uint32_t> pixels; // r, g, b each within 1
    } cases[] = {
        {"black stays opaque black", std::vector<std::uint16_t>(12, 0), 4, 3,
         std::vector<std::uint32_t>(12, 0xFF000000u)},
        {"saturation gives white", std::vector<std::uint16_t>(12, 0xFFFF), 4, 3,
         std::vector<std::uint32_t>(12, 0xFFFFFFFFu)},
        // The first pixel is its own left, up and down neighbour.
        {"one row", {0xFFFF, 0}, 2, 1, {0xFFFFE7F6u, 0xFF008C5Du}},
        // The same samples now reach each other only as up and down neighbours.
        {"one column", {0xFFFF, 0}, 1, 2, {0xFFFFE7FFu, 0xFF008C00u}},
        {"synthetic frame", raw, kWidth, kHeight, synthetic},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto pixels = decodeOnDevice(c.samples, c.width, c.height);
        ASSERT_EQ(pixels.size(), c.pixels.size());
        for (std::size_t i = 0; i < pixels.size(); ++i)
            expectPixelNear(pixels[i], c.pixels[i], i);
    }
}

TEST(RawMetalDecode, ReportsFramesPerSecondOfTheFramesItDecodedWhereverTheFrameLives) {
    // 16 groups of 128 a frame: a 16th first, then the rest, in parts or whole frames; the frame
    // is copied once, before timing.
    quarbel::testing::forEachPlacement(
        2 * 16, rawInputBytes(64 * 32),
        [](const WorkloadContext& context, GpuMemoryPlacement placement) {
            return runRawMetalDecode(context, {64, 32, std::nullopt, {placement, 128, 1}});
        },
        [](const BenchmarkOutcome& outcome, const CancellingProgress&) {
            const double fps = 2.0 / outcome.duration;
            EXPECT_EQ(outcome.primary, (MeasurementLine{"Decode", format(fps, 2), "FPS"}));
            EXPECT_DOUBLE_EQ(outcome.score, fps * 2250.0);
            EXPECT_EQ(outcome.secondary, (MeasurementLine{"Frame", "8K", "RAW"}));
        });
}
