// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/huge_page_allocator.h"
#include "workloads/cpu/memory_stream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

using namespace quarbel;
using namespace quarbel::cpu;

TEST(StreamScalar, CyclesThroughElevenValues) {
    EXPECT_EQ(streamScalar(0), 1.01f);
    EXPECT_EQ(streamScalar(1), static_cast<float>(1.01 + 0.007));
    EXPECT_EQ(streamScalar(10), static_cast<float>(1.01 + 10 * 0.007));
    EXPECT_EQ(streamScalar(11), 1.01f);
    EXPECT_EQ(streamScalar(25), streamScalar(3));
}

// scalar * b = 1 + 2^-11 + 2^-24 exactly, which rounds to 1 + 2^-11 as a float; a fused
// multiply-add would keep the 2^-24 and give a different c.
TEST(StreamTriad, WritesEveryElementFromItsOwnInputsRoundingTheProductBeforeTheAdd) {
    const float scalar = 1.0f + 0x1p-12f;
    // Odd sizes exercise both the vector body and the scalar tail.
    for (const std::size_t size : {std::size_t{1}, std::size_t{7}, std::size_t{37}}) {
        const std::vector<float> a(size, -1.0f);
        const std::vector<float> b(size, 1.0f + 0x1p-12f);
        std::vector<float> c(size, 0.5f);
        streamTriad(a, b, c, scalar);
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ(c[i], 0x1p-11f) << "element " << i << " of " << size;
            ASSERT_NE(c[i], std::fma(scalar, b[i], a[i]));
        }
    }
    std::vector<float> a(19), b(19), c(19, 0.0f);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = static_cast<float>(i);
        b[i] = static_cast<float>(2 * i);
    }
    streamTriad(a, b, c, 0.5f);
    for (std::size_t i = 0; i < c.size(); ++i)
        EXPECT_EQ(c[i], static_cast<float>(2 * i));
}

TEST(HugePageAllocator, LargeArraysStartOnAHugePageBoundary) {
    const HugePageVector<float> large(std::size_t{3} << 20, 2.5f);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large.data()) % (std::uintptr_t{2} << 20), 0u);
    EXPECT_EQ(large.back(), 2.5f);
    const HugePageVector<float> small(5, 1.5f);
    EXPECT_EQ(small[4], 1.5f);
}
