// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "model/number_format.h"
#include "workloads/gpu/buffer.h"
#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/embedded_shaders.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/group_size_calibration.h"
#include "workloads/gpu/timed_dispatch.h"
#include "workloads/gpu/working_buffer.h"

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

namespace quarbel {
namespace {

constexpr double kBudgetSeconds = 15.0;
constexpr double kOperationsPerElementIteration = 42.0;
constexpr double kScoreFactor = 120.0;

struct Float4 {
    float x, y, z, w;
};

// Push-constant block of suite_compute.comp.
struct ComputeArguments {
    std::uint32_t iterations;
    std::uint32_t count;
};

void fillInitialValues(Float4* values, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        values[i] = {static_cast<float>(i % 251) * 0.001f, static_cast<float>(i % 193) * 0.002f,
                     static_cast<float>(i % 137) * 0.003f, 1.0f};
    }
}

BenchmarkOutcome measure(const WorkloadContext& context, const MetalComputeParameters& parameters) {
    auto gpu = gpu::Context::openDefault();
    if (!gpu) return skippedOutcome("Metal is not available on this machine.");

    const std::uint32_t count = std::max<std::uint32_t>(parameters.elementCount, 1);
    auto buffer = gpu::WorkingBuffer::create(*gpu, VkDeviceSize{count} * sizeof(Float4),
                                             gpu::placementFor(*gpu, parameters.dispatch.placement));
    if (!buffer) return failedOutcome("Metal could not allocate the buffer.");
    const auto fill = [&] {
        return buffer->fill([count](void* bytes) { fillInitialValues(static_cast<Float4*>(bytes), count); });
    };
    if (fill() != VK_SUCCESS) return failedOutcome("Metal could not allocate the buffer.");

    const ComputeArguments arguments{parameters.iterations, count};
    const auto candidates = gpu::groupSizesToTry(*gpu, parameters.dispatch.groupSize);
    const auto source =
        parameters.kernelSource.value_or(gpu::shaderSource(gpu::EmbeddedShader::suiteCompute));
    gpu::CalibratedKernel calibrated = gpu::calibrateGroupSize(
        *gpu, source, gpu::shaderFileName(gpu::EmbeddedShader::suiteCompute), 1, sizeof(ComputeArguments),
        candidates, [&](gpu::ComputePipeline& pipeline, std::uint32_t width) {
            pipeline.bindBuffers({&buffer->buffer()});
            return gpu::timeOneDispatch(*gpu, pipeline, &arguments,
                                        gpu::dispatchGridFor(count, width, gpu->maxGroupsPerDimension()));
        });
    gpu::ComputeKernel& kernel = calibrated.kernel;
    switch (kernel.failure) {
    case gpu::ComputeKernel::Failure::none: break;
    case gpu::ComputeKernel::Failure::entryPointMissing:
        return failedOutcome("Metal compute kernel was not found.");
    case gpu::ComputeKernel::Failure::compile:
    case gpu::ComputeKernel::Failure::pipeline:
        return failedOutcome("Metal compute failed: " + kernel.message);
    }
    // Calibration updated the values in place: every timed run starts from the same ones.
    if (!calibrated.timings.empty() && fill() != VK_SUCCESS)
        return failedOutcome("Metal compute failed: the GPU stopped answering.");
    kernel.pipeline->bindBuffers({&buffer->buffer()});

    const std::uint32_t width = calibrated.groupSize;
    const gpu::DispatchGrid grid = gpu::dispatchGridFor(count, width, gpu->maxGroupsPerDimension());
    const double workPerDispatch = static_cast<double>(count) * static_cast<double>(parameters.iterations);
    const ProgressUnit unit{"dispatches", "GFLOPS", workPerDispatch * kOperationsPerElementIteration / 1e9};
    const gpu::TimedDispatches run = gpu::dispatchUntilBudget(
        *gpu, *kernel.pipeline, &arguments, grid, context.budget(kBudgetSeconds), context, unit,
        {.maxDispatches = parameters.dispatch.maxDispatchesPerSubmission});
    if (run.deviceLost) return failedOutcome("Metal compute failed: the GPU stopped answering.");
    const std::int64_t dispatches = run.completed;
    const double elapsed = run.elapsed;

    // The three sampled values, read back after timing.
    Float4 first{}, third{}, last{};
    if (buffer->read(0, sizeof(Float4), &first) != VK_SUCCESS ||
        buffer->read(VkDeviceSize{count / 3} * sizeof(Float4), sizeof(Float4), &third) != VK_SUCCESS ||
        buffer->read(VkDeviceSize{count - 1} * sizeof(Float4), sizeof(Float4), &last) != VK_SUCCESS)
        return failedOutcome("Metal compute failed: the GPU stopped answering.");
    const float checksum = first.x + third.y + last.z;
    const double gflops = run.dispatches * workPerDispatch * kOperationsPerElementIteration / elapsed / 1e9;

    BenchmarkOutcome outcome;
    outcome.status = OutcomeStatus::ok;
    outcome.score = gflops * kScoreFactor;
    outcome.primary = {"Compute", format(gflops, 2), "GFLOPS"};
    outcome.secondary = MeasurementLine{"Dispatches", std::to_string(dispatches), ""};
    outcome.duration = elapsed;
    outcome.detail = "Sustained Metal kernel over " + std::to_string(count) + " float4 values, checksum " +
                     format(static_cast<double>(checksum), 3) + ".";
    outcome.gpu = GpuExecution{buffer->placement(), buffer->bytesCopied(), width, run.mostPerSubmission,
                               run.busyFraction()};
    return outcome;
}

} // namespace

BenchmarkOutcome runMetalCompute(const WorkloadContext& context) { return runMetalCompute(context, {}); }

BenchmarkOutcome runMetalCompute(const WorkloadContext& context, const MetalComputeParameters& parameters) {
    try {
        return measure(context, parameters);
    } catch (const std::exception& error) {
        return failedOutcome(std::string("Metal compute failed: ") + error.what());
    }
}

} // namespace quarbel
