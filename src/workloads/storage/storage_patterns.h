// SPDX-License-Identifier: Apache-2.0
// The deterministic data and offsets the storage tests write and visit, and the text of
// their transfer rates.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quarbel::storage {

inline constexpr std::uint64_t kPatternMultiplier = 0x27BB2EE687B0B0FD;
inline constexpr std::uint64_t kPatternIncrement = 0xB504F32D;
inline constexpr std::uint64_t kSequentialPatternSeed = 0x0DDC0FFEE15ED00D;
inline constexpr unsigned kSequentialPatternShift = 23;
inline constexpr std::uint64_t kRealSpeedPatternSeed = 0x51D55EEDCAFEF00D;
inline constexpr unsigned kRealSpeedPatternShift = 29;

// The phases of the write-then-read tests in their progress reports: their score averages
// the two phases' rates, so each phase's uncertainty is worked out on its own.
inline constexpr int kWritePhase = 0;
inline constexpr int kReadPhase = 1;

// Fills `bytes` from a 64-bit LCG started at `seed`: the state advances before each byte,
// and the byte is (state >> shift) & 0xFF. Incompressible enough that no layer below can
// shortcut the writes.
void fillPattern(std::span<std::byte> bytes, std::uint64_t seed, unsigned shift);

// Page-aligned offsets for the random test: one LCG state shared by reads and writes,
// advanced before each offset; the page index is the state's low bits.
class RandomOffsetGenerator {
  public:
    static constexpr std::uint64_t kSeed = 0x1234567890ABCDEF;
    static constexpr std::uint64_t kMultiplier = 0x5851F42D4C957F2D;
    static constexpr std::uint64_t kIncrement = 0x14057B7EF767814F;
    static constexpr std::int64_t kPageSize = 4096;

    // `pageCount` pages of the file are visited; a count that is not a power of two is
    // rounded down to one, so offsets always stay inside the file (512 MiB: mask 0x1FFFF).
    explicit RandomOffsetGenerator(std::int64_t pageCount);

    std::int64_t next() {
        state_ = state_ * kMultiplier + kIncrement;
        return static_cast<std::int64_t>(state_ & pageMask_) * kPageSize;
    }

  private:
    std::uint64_t state_ = kSeed;
    std::uint64_t pageMask_ = 0;
};

// A rate in MB/s (2^20 bytes) as the "value" and "unit" of a measurement: from 1024 MB/s
// up it is shown in GB/s with 2 decimals, below in MB/s without decimals. The threshold is
// tested on the unrounded rate.
MeasurementLine rateMeasurement(std::string label, double megabytesPerSecond);

// Progress of the storage tests, live rates in the units of their results.
inline constexpr ProgressUnit kByteProgress{"bytes", "MB/s", 1.0 / 1'048'576.0};
inline constexpr ProgressUnit kOperationProgress{"operations", "IOPS"};

// bytes / max(1 µs, seconds) / 2^20.
double megabytesPerSecond(std::int64_t bytes, double seconds);

// The lower clamp of every measured interval and divisor, seconds.
inline constexpr double kMinimumElapsed = 0.000001;

} // namespace quarbel::storage
