// SPDX-License-Identifier: Apache-2.0
// The GPU benchmarks as the run controller calls them. Each runs synchronously on the calling
// (background) thread, creates and releases everything it uses, reads the context's budget,
// cancellation and progress sink, and never throws: failures are failed or skipped outcomes.
#pragma once

#include "model/gpu_execution.h"
#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quarbel {

// metalCompute: a transcendental-heavy kernel over a buffer of float4 values, dispatched
// again and again until the budget (15 s) is spent.
// How the compute benchmarks use the device; the defaults suit every device, and tests set
// them to reach each path on the one device they have.
struct GpuDispatchOptions {
    // Where the data lives; default: QUARBEL_GPU_MEMORY, else unified memory on a unified
    // device and the GPU's own memory on a discrete one.
    std::optional<GpuMemoryPlacement> placement;
    // Workgroup size; default: the fastest of a short calibration.
    std::optional<std::uint32_t> groupSize;
    // Most dispatches in one submission (1: one at a time).
    std::uint32_t maxDispatchesPerSubmission = 256;
};

struct MetalComputeParameters {
    std::uint32_t elementCount = 2'097'152; // float4 values in the buffer; also the grid size
    std::uint32_t iterations = 320;         // loop count inside the kernel
    // GLSL text replacing the built-in kernel (tests use it to feed a broken one).
    std::optional<std::string_view> kernelSource;
    GpuDispatchOptions dispatch{};
};
BenchmarkOutcome runMetalCompute(const WorkloadContext& context);
BenchmarkOutcome runMetalCompute(const WorkloadContext& context, const MetalComputeParameters& parameters);

// rawMetalDecode: demosaic and colour transform of one synthetic 16-bit frame, one dispatch
// per frame, until the budget (18 s) is spent.
struct RawMetalDecodeParameters {
    std::uint32_t width = 7680;                   // samples per row
    std::uint32_t height = 4320;                  // rows
    std::optional<std::string_view> kernelSource; // GLSL replacing the built-in kernel
    GpuDispatchOptions dispatch{};
};
BenchmarkOutcome runRawMetalDecode(const WorkloadContext& context);
BenchmarkOutcome runRawMetalDecode(const WorkloadContext& context,
                                   const RawMetalDecodeParameters& parameters);

// metalVisual without a window: the fly-through scene rendered once per frame into an
// offscreen target until the budget (20 s) is spent.
struct MetalVisualParameters {
    std::uint32_t width = 1600; // render target, pixels
    std::uint32_t height = 900;
    std::optional<std::string_view> vertexSource; // GLSL replacing the built-in stages
    std::optional<std::string_view> fragmentSource;
};
BenchmarkOutcome runMetalVisual(const WorkloadContext& context);
BenchmarkOutcome runMetalVisual(const WorkloadContext& context, const MetalVisualParameters& parameters);

// openCLCompute: QuarbelRunOpenCL (opencl_compute.h) with 2,097,152 elements, 256 iterations
// and the budget (15 s), turned into an outcome. Reports progress and checks for a stop after
// each batch of dispatches.
struct OpenCLComputeParameters {
    std::int32_t elementCount = 2'097'152;
    std::int32_t iterations = 256;
    std::uint32_t maxDispatchesPerSubmission = 256; // kernels enqueued before one wait
};
BenchmarkOutcome runOpenCLCompute(const WorkloadContext& context);
BenchmarkOutcome runOpenCLCompute(const WorkloadContext& context, const OpenCLComputeParameters& parameters);

} // namespace quarbel
