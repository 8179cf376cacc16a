// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/group_size_calibration.h"

#include "model/workload_context.h"
#include "workloads/gpu/gpu_timer.h"
#include "workloads/gpu/shader_compiler.h"
#include "workloads/gpu/vk_result_text.h"

#include <algorithm>

namespace quarbel::gpu {
namespace {
constexpr double kLongDispatchSeconds = 0.05;
// Many waves deep on any GPU: a part of a dispatch this long rates the whole one.
constexpr double kLongPartSeconds = 0.02;
} // namespace

std::vector<std::uint32_t> groupSizeCandidates(std::uint32_t maxThreadsPerGroup) {
    std::vector<std::uint32_t> sizes;
    for (std::uint32_t size : {256u, 128u, 64u, 512u, 1024u})
        if (size <= maxThreadsPerGroup) sizes.push_back(size);
    if (sizes.empty()) sizes.push_back(std::max<std::uint32_t>(maxThreadsPerGroup, 1));
    return sizes;
}

std::vector<std::uint32_t> groupSizesToTry(const Context& context, std::optional<std::uint32_t> chosen) {
    if (chosen) return {std::clamp<std::uint32_t>(*chosen, 1, context.maxThreadsPerGroup())};
    return groupSizeCandidates(context.maxThreadsPerGroup());
}

CalibratedKernel calibrateGroupSize(const Context& context, std::string_view source,
                                    std::string_view sourceName, std::uint32_t bufferCount,
                                    std::uint32_t argumentBytes, std::span<const std::uint32_t> candidates,
                                    const DispatchTiming& time, double maxSeconds) {
    CalibratedKernel result;
    CompiledShader compiled = compileGlsl(source, ShaderStage::compute, sourceName);
    if (!compiled.ok()) {
        result.kernel.failure = ComputeKernel::Failure::compile;
        result.kernel.message = std::move(compiled.error);
        return result;
    }
    if (!hasEntryPoint(compiled.spirv, ShaderStage::compute, kEntryPointName)) {
        result.kernel.failure = ComputeKernel::Failure::entryPointMissing;
        return result;
    }
    const double start = monotonicSeconds();
    std::optional<double> best;
    for (std::uint32_t size : candidates) {
        if (result.kernel.pipeline && monotonicSeconds() - start >= maxSeconds) break;
        VkResult error = VK_SUCCESS;
        auto pipeline =
            ComputePipeline::create(context, compiled.spirv, bufferCount, argumentBytes, size, error);
        if (!pipeline) {
            if (!result.kernel.pipeline) result.kernel.message = vkResultName(error);
            continue;
        }
        if (candidates.size() == 1) {
            result.kernel.pipeline = std::move(pipeline);
            result.groupSize = size;
            break;
        }
        const auto seconds = time(*pipeline, size);
        if (!seconds) continue;
        result.timings.emplace_back(size, *seconds);
        if (!best || *seconds < *best) {
            best = seconds;
            result.kernel.pipeline = std::move(pipeline);
            result.groupSize = size;
        }
    }
    if (result.kernel.pipeline) {
        result.kernel.message.clear();
    } else {
        result.kernel.failure = ComputeKernel::Failure::pipeline;
        if (result.kernel.message.empty()) result.kernel.message = "no workgroup size could be timed";
    }
    return result;
}

std::optional<double> timeOneDispatch(Context& context, const ComputePipeline& pipeline,
                                      const void* arguments, DispatchGrid grid) {
    const auto timer = GpuTimer::create(context);
    const auto once = [&](GridPart part) -> std::optional<double> {
        const double start = monotonicSeconds();
        const VkResult result = context.submitAndWait([&](VkCommandBuffer commands) {
            if (timer) timer->recordStart(commands);
            pipeline.recordDispatch(commands, arguments, part);
            if (timer) timer->recordEnd(commands);
        });
        if (result != VK_SUCCESS) return std::nullopt;
        return timer ? timer->seconds() : std::optional(monotonicSeconds() - start);
    };
    // A slow device (a CPU one) takes seconds for a whole dispatch: a share of the grid that is
    // long enough to keep any device's schedulers full stands in for it.
    for (std::uint32_t share : {64u, 16u, 4u}) {
        const std::uint32_t parts = partsAvailable(grid, share);
        if (parts == 1) break;
        const GridPart part = gridPart(grid, parts, 0, 1);
        const auto seconds = once(part);
        if (!seconds) return std::nullopt;
        if (*seconds >= kLongPartSeconds)
            return *seconds * static_cast<double>(groupCount(grid)) /
                   static_cast<double>(groupCount(part.groups));
    }
    // A first dispatch also pays for caches and clocks warming up; once it is long, that
    // share is small, and a slow device is spared a second.
    const GridPart whole{0, 0, grid};
    const auto first = once(whole);
    if (!first || *first >= kLongDispatchSeconds) return first;
    return once(whole);
}

} // namespace quarbel::gpu
