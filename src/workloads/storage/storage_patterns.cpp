// SPDX-License-Identifier: Apache-2.0
#include "workloads/storage/storage_patterns.h"

#include "model/number_format.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quarbel::storage {

void fillPattern(std::span<std::byte> bytes, std::uint64_t seed, unsigned shift) {
    std::uint64_t state = seed;
    for (std::byte& byte : bytes) {
        state = state * kPatternMultiplier + kPatternIncrement;
        byte = static_cast<std::byte>((state >> shift) & 0xFF);
    }
}

RandomOffsetGenerator::RandomOffsetGenerator(std::int64_t pageCount) {
    const auto pages = static_cast<std::uint64_t>(std::max<std::int64_t>(pageCount, 1));
    pageMask_ = std::bit_floor(pages) - 1;
}

MeasurementLine rateMeasurement(std::string label, double megabytesPerSecond) {
    if (megabytesPerSecond >= 1024.0)
        return {std::move(label), format(megabytesPerSecond / 1024.0, 2), "GB/s"};
    return {std::move(label), format(megabytesPerSecond, 0), "MB/s"};
}

double megabytesPerSecond(std::int64_t bytes, double seconds) {
    return static_cast<double>(bytes) / std::max(kMinimumElapsed, seconds) / 1'048'576.0;
}

} // namespace quarbel::storage
