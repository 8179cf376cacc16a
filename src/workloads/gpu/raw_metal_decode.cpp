// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "model/number_format.h"
#include "workloads/gpu/buffer.h"
#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/embedded_shaders.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/group_size_calibration.h"
#include "workloads/gpu/raw_frame.h"
#include "workloads/gpu/timed_dispatch.h"
#include "workloads/gpu/working_buffer.h"

#include <algorithm>
#include <exception>
#include <string>

namespace quarbel {
namespace gpu {

void fillSyntheticRawFrame(std::span<std::uint16_t> samples) noexcept {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto index = static_cast<std::uint32_t>(i);
        samples[i] =
            static_cast<std::uint16_t>(((index * 257u) & 0xFFFFu) ^ (((index >> 5) ^ 0x4A5Bu) & 0xFFFFu));
    }
}

std::uint64_t rawInputBytes(std::uint64_t samples) noexcept { return (samples + 1) / 2 * 4; }

} // namespace gpu

namespace {

constexpr double kBudgetSeconds = 18.0;
constexpr double kScoreFactor = 2250.0;

BenchmarkOutcome measure(const WorkloadContext& context, const RawMetalDecodeParameters& parameters) {
    auto device = gpu::Context::openDefault();
    if (!device) return skippedOutcome("Metal is not available on this machine.");

    const gpu::RawFrameSize size{std::max<std::uint32_t>(parameters.width, 1),
                                 std::max<std::uint32_t>(parameters.height, 1)};
    const std::uint64_t samples = std::uint64_t{size.width} * size.height;
    // The frame is read on every pass and lives where the device reads fastest; the decoded
    // pixels are never read by the CPU and stay in the device's own memory.
    auto input = gpu::WorkingBuffer::create(*device, gpu::rawInputBytes(samples),
                                            gpu::placementFor(*device, parameters.dispatch.placement));
    auto output =
        input ? gpu::Buffer::create(*device, samples * sizeof(std::uint32_t), gpu::Storage::privateGpu)
              : nullptr;
    if (!input || !output) return failedOutcome("Metal could not allocate RAW buffers.");
    if (input->fill([samples](void* bytes) {
            gpu::fillSyntheticRawFrame({static_cast<std::uint16_t*>(bytes), samples});
        }) != VK_SUCCESS)
        return failedOutcome("Metal could not allocate RAW buffers.");

    const auto source = parameters.kernelSource.value_or(gpu::shaderSource(gpu::EmbeddedShader::rawDecode));
    gpu::CalibratedKernel calibrated = gpu::calibrateGroupSize(
        *device, source, gpu::shaderFileName(gpu::EmbeddedShader::rawDecode), 2, sizeof(gpu::RawFrameSize),
        gpu::groupSizesToTry(*device, parameters.dispatch.groupSize),
        [&](gpu::ComputePipeline& pipeline, std::uint32_t width) {
            pipeline.bindBuffers({&input->buffer(), output.get()});
            return gpu::timeOneDispatch(
                *device, pipeline, &size,
                gpu::dispatchGridFor(samples, width, device->maxGroupsPerDimension()));
        });
    gpu::ComputeKernel& kernel = calibrated.kernel;
    switch (kernel.failure) {
    case gpu::ComputeKernel::Failure::none: break;
    case gpu::ComputeKernel::Failure::entryPointMissing:
        return failedOutcome("RAW Metal kernel was not found.");
    case gpu::ComputeKernel::Failure::compile:
    case gpu::ComputeKernel::Failure::pipeline: return failedOutcome("RAW Metal failed: " + kernel.message);
    }
    kernel.pipeline->bindBuffers({&input->buffer(), output.get()});

    const std::uint32_t width = calibrated.groupSize;
    const gpu::DispatchGrid grid = gpu::dispatchGridFor(samples, width, device->maxGroupsPerDimension());
    const gpu::TimedDispatches run = gpu::dispatchUntilBudget(
        *device, *kernel.pipeline, &size, grid, context.budget(kBudgetSeconds), context,
        ProgressUnit{"frames", "FPS"}, {.maxDispatches = parameters.dispatch.maxDispatchesPerSubmission});
    if (run.deviceLost) return failedOutcome("RAW Metal failed: the GPU stopped answering.");
    const double elapsed = run.elapsed;
    // The parts of a frame decoded before a stop count; a run without any rates 0.
    const double fps = run.dispatches / elapsed;

    BenchmarkOutcome outcome;
    outcome.status = OutcomeStatus::ok;
    outcome.score = fps * kScoreFactor;
    outcome.primary = {"Decode", format(fps, 2), "FPS"};
    outcome.secondary = MeasurementLine{"Frame", "8K", "RAW"};
    outcome.duration = elapsed;
    outcome.detail = "Synthetic RAW Metal decode: 8K 16-bit Bayer, demosaic, and GPU color transform.";
    outcome.gpu = GpuExecution{input->placement(), input->bytesCopied(), width, run.mostPerSubmission,
                               run.busyFraction()};
    return outcome;
}

} // namespace

BenchmarkOutcome runRawMetalDecode(const WorkloadContext& context) { return runRawMetalDecode(context, {}); }

BenchmarkOutcome runRawMetalDecode(const WorkloadContext& context,
                                   const RawMetalDecodeParameters& parameters) {
    try {
        return measure(context, parameters);
    } catch (const std::exception& error) {
        return failedOutcome(std::string("RAW Metal failed: ") + error.what());
    }
}

} // namespace quarbel
