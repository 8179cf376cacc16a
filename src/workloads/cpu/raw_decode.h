// SPDX-License-Identifier: Apache-2.0
// The RAW CPU decode behind rawCPUDecode: a synthetic 16-bit Bayer-style frame decoded
// row-parallel (sparse demosaic, colour transform, gamma), frame after frame.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"
#include "workloads/cpu/huge_page_allocator.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quarbel::cpu {

inline constexpr int kRawWidth = 4096; // 4K DCI
inline constexpr int kRawHeight = 2160;
inline constexpr int kRawDecodeStride = 64; // only every 64th interior column is decoded
inline constexpr double kRawBudgetSeconds = 18.0;
inline constexpr double kRawScoreFactor = 1050.0; // points per frame per second

// width * height samples; sample i is the low 16 bits of (i * 257) XOR (i >> 5) XOR 0x2D31.
HugePageVector<std::uint16_t> makeRawFrame(int width, int height);

// The hash of row y (1 ... height - 2) of frame number `frame`. Pure; any thread.
std::uint64_t decodeRawRow(std::span<const std::uint16_t> raw, int width, int height, int y,
                           std::uint64_t frame) noexcept;

// Fills rowResults (height slots) for frame `frame`: rows 1 ... height - 2 in parallel
// (current oneTBB arena); the border slots 0 and height - 1 are set to 0.
void decodeRawCPUFrame(std::span<const std::uint16_t> raw, int width, int height, std::uint64_t frame,
                       std::span<std::uint64_t> rowResults);

// The whole benchmark on a width x height frame (the defaults unless a test asks for
// less; at least 3 x 3). Never throws.
BenchmarkOutcome runRawCPUDecode(const WorkloadContext& context, int width, int height);

} // namespace quarbel::cpu
