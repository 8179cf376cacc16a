// SPDX-License-Identifier: Apache-2.0
// The memory stream behind memoryStream: a single-threaded triad c = a + scalar * b over
// three large single-precision arrays.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <span>

namespace quarbel::cpu {

inline constexpr std::int64_t kStreamElements = 16'000'000; // per array: 64,000,000 bytes
inline constexpr double kStreamBudgetSeconds = 12.0;
inline constexpr double kStreamScoreFactor = 470.0; // points per GB/s (decimal)

// 1.01 + (pass mod 11) * 0.007 in double precision, rounded to single.
float streamScalar(std::int64_t pass) noexcept;

// c[i] = a[i] + scalar * b[i] for every i, the product rounded before the add (never
// fused). All three spans have the same size and must not overlap.
void streamTriad(std::span<const float> a, std::span<const float> b, std::span<float> c,
                 float scalar) noexcept;

// The whole benchmark over arrays of `elements` floats each (the default working set
// unless a test asks for less). Runs on the calling thread only. Never throws; a working
// set that cannot be allocated ends failed.
BenchmarkOutcome runMemoryStream(const WorkloadContext& context, std::int64_t elements);

} // namespace quarbel::cpu
