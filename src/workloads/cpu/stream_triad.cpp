// SPDX-License-Identifier: Apache-2.0
// Built with -ffp-contract=off, so the triad is a multiply then a separately rounded add
// whatever the target's FMA support, and with the vectoriser's dynamic cost model so
// that it vectorises (with a scalar tail) at -O2 as well.
#include "workloads/cpu/memory_stream.h"

#include "workloads/cpu/fatal.h"

namespace quarbel::cpu {

float streamScalar(std::int64_t pass) noexcept {
    return static_cast<float>(1.01 + static_cast<double>(pass % 11) * 0.007);
}

void streamTriad(std::span<const float> a, std::span<const float> b, std::span<float> c,
                 float scalar) noexcept {
    require(a.size() == c.size() && b.size() == c.size(), "the triad arrays must have the same size");
    // Bounds are checked once above; the restrict pointers let the loop vectorise
    // without run-time alias checks.
    const float* __restrict source = a.data();
    const float* __restrict scaled = b.data();
    float* __restrict destination = c.data();
    const std::size_t count = c.size();
    for (std::size_t i = 0; i < count; ++i)
        destination[i] = source[i] + scalar * scaled[i];
}

} // namespace quarbel::cpu
