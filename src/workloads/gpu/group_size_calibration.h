// SPDX-License-Identifier: Apache-2.0
// The workgroup size a kernel runs fastest with on this device, found by trying a few before
// timing. The execution width alone (32 on many GPUs) leaves a discrete GPU's schedulers
// short of work; the best size differs by device and kernel, so it is measured.
#pragma once

#include "workloads/gpu/compute_pipeline.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quarbel::gpu {

// 256, 128, 64, 512 and 1024 (the usual best first), those the device allows; the device's
// limit alone when it allows none of them.
std::vector<std::uint32_t> groupSizeCandidates(std::uint32_t maxThreadsPerGroup);
// `chosen` alone when set, else the candidates.
std::vector<std::uint32_t> groupSizesToTry(const Context& context, std::optional<std::uint32_t> chosen);

// Seconds one dispatch of `pipeline` (built for `groupSize`) takes, or none when it failed.
using DispatchTiming =
    std::function<std::optional<double>(ComputePipeline& pipeline, std::uint32_t groupSize)>;

struct CalibratedKernel {
    ComputeKernel kernel;        // the pipeline of the fastest size, or why none was built
    std::uint32_t groupSize = 0; // its workgroup size
    std::vector<std::pair<std::uint32_t, double>> timings; // size and seconds, in the order tried
};

// Compiles `source` once and builds a pipeline for each of `candidates`, timing it through
// `time`, until all were tried or `maxSeconds` of calibration have passed; keeps the fastest.
// A single candidate is built without timing. Fails as buildComputeKernel does.
CalibratedKernel calibrateGroupSize(const Context& context, std::string_view source,
                                    std::string_view sourceName, std::uint32_t bufferCount,
                                    std::uint32_t argumentBytes, std::span<const std::uint32_t> candidates,
                                    const DispatchTiming& time, double maxSeconds = 1.0);

// The seconds of one dispatch, on the device's clock where it has one. The first 64th, 16th and
// quarter of the grid are timed in turn, and the first that takes 20 ms or more is scaled to the
// whole; when none does, the second of two whole dispatches, or the first alone when it took
// 50 ms or more.
std::optional<double> timeOneDispatch(Context& context, const ComputePipeline& pipeline,
                                      const void* arguments, DispatchGrid grid);

} // namespace quarbel::gpu
