// SPDX-License-Identifier: Apache-2.0
// The CPU production mix behind "Single-Core" and "Multi-Core": a fixed synthetic kernel
// of integer mixing, four-lane trigonometry and clamped integration, run in rounds.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <string_view>

namespace quarbel::cpu {

inline constexpr std::int64_t kProductionWarmUpRounds = 3;
inline constexpr std::int64_t kProductionRoundsPerBatch = 26;
inline constexpr double kProductionBudgetSeconds = 15.0;
inline constexpr double kSingleWorkerScoreFactor = 980.0; // points per round per second
inline constexpr double kMultiWorkerScoreFactor = 720.0;

// The kernel of worker `worker` (>= 0) for `rounds` (>= 0) rounds; deterministic in both.
// Any thread; no allocation.
std::uint64_t runCPUKernel(std::int64_t worker, std::int64_t rounds) noexcept;

// One batch: the kernel for workers 0 ... workers - 1 in parallel in the current oneTBB
// arena, reduced by XOR on the calling thread (0 for no workers).
std::uint64_t runCPUMixedBatch(std::int64_t workers, std::int64_t roundsPerWorker);

} // namespace quarbel::cpu

namespace quarbel {

// The whole benchmark with `workers` (>= 0) kernels per batch, run in a oneTBB arena of
// that many threads. `name` labels the primary line; `id` does not change the result.
// Runs on the calling thread until the budget (15 s unless the context says otherwise)
// is spent or the run is cancelled; at least one batch is always measured. Never throws.
BenchmarkOutcome runCPUWorkloadProfile(std::int64_t workers, BenchmarkID id, std::string_view name,
                                       const WorkloadContext& context);

} // namespace quarbel
