// SPDX-License-Identifier: Apache-2.0
// The CPU and memory benchmarks, in the shape the dispatch table calls them. Each runs
// one whole benchmark on the calling thread (the run controller's background thread),
// fans out over oneTBB's worker threads where the benchmark is multi-core, checks the
// context's cancellation after every unit of work, reports progress after every unit,
// and never throws: it always returns an outcome.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <string_view>

namespace quarbel {

// The production mix with `workers` (>= 0) kernels per batch; `name` labels the primary
// line, `id` does not change the result.
BenchmarkOutcome runCPUWorkloadProfile(std::int64_t workers, BenchmarkID id, std::string_view name,
                                       const WorkloadContext& context);

// cpuInteger: the production mix on one worker, "Single-Core".
BenchmarkOutcome runSingleCoreProfile(const WorkloadContext& context);
// cpuFloating: the production mix on every CPU of the affinity mask (one if only one),
// "Multi-Core".
BenchmarkOutcome runMultiCoreProfile(const WorkloadContext& context);
// cpuCrypto: 256 KiB block mutation and SHA-256 on every CPU of the affinity mask.
BenchmarkOutcome runCPUDeveloper(const WorkloadContext& context);
// memoryStream: a single-threaded triad over about 183 MiB.
BenchmarkOutcome runMemoryStream(const WorkloadContext& context);
// cineTile: the ray-marched 960 x 540 tile renderer.
BenchmarkOutcome runCineTile(const WorkloadContext& context);
// rawCPUDecode: the synthetic 4K DCI RAW frame decode.
BenchmarkOutcome runRawCPUDecode(const WorkloadContext& context);

} // namespace quarbel
