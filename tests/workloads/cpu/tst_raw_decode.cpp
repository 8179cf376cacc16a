// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/raw_decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

using namespace quarbel;
using namespace quarbel::cpu;

namespace {

// A frame wide enough for two decoded columns (64 and 128) and a few rows.
constexpr int kSmallWidth = 131;
constexpr int kSmallHeight = 5;

// The decode of one interior row, visiting only the decoded columns.
std::uint64_t referenceRow(std::span<const std::uint16_t> raw, int width, int y, std::uint64_t frame) {
    std::uint64_t hash = frame + static_cast<std::uint64_t>(y);
    for (int x = 64; x <= width - 2; x += 64) {
        const std::size_t c = static_cast<std::size_t>(y * width + x);
        const float h = static_cast<float>(raw[c - 1] + raw[c + 1]) / 131070.0f;
        const float m = static_cast<float>(raw[c]) / 65535.0f;
        const float v = static_cast<float>(raw[c - width] + raw[c + width]) / 131070.0f;
        const float colour[3] = {std::min(1.38f * m - 0.18f * v, 1.0f), std::min(0.54f * (h + v), 1.0f),
                                 std::min(0.82f * m + 0.22f * h, 1.0f)};
        float sum = 0;
        for (const float value : colour)
            sum += std::pow(std::max(value, 0.0f), 0.4545f);
        hash = hash * 1664525u + static_cast<std::uint32_t>(sum * 65535.0f);
    }
    return hash;
}

} // namespace

TEST(RawFrame, FirstSamplesFollowTheGenerator) {
    const auto raw = makeRawFrame(kRawWidth, kRawHeight);
    ASSERT_EQ(raw.size(), 8'847'360u);
    EXPECT_EQ(raw[0], 0x2D31);
    EXPECT_EQ(raw[1], 0x2C30);
    EXPECT_EQ(raw[32], 0x0D10);
    const std::size_t last = raw.size() - 1;
    EXPECT_EQ(raw[last], static_cast<std::uint16_t>((last * 257) ^ (last >> 5) ^ 0x2D31));
}

TEST(RawDecode, RowsMatchAReferenceDecodeAndDependOnTheFrameWhichLeavesItsBorderRowsZero) {
    const auto raw = makeRawFrame(kSmallWidth, kSmallHeight);
    std::vector<std::uint64_t> rows(kSmallHeight, 0xDEADu);
    decodeRawCPUFrame(raw, kSmallWidth, kSmallHeight, 3, rows);
    EXPECT_EQ(rows.front(), 0u);
    EXPECT_EQ(rows.back(), 0u);
    for (int y = 1; y <= kSmallHeight - 2; ++y) {
        EXPECT_EQ(rows[static_cast<std::size_t>(y)], referenceRow(raw, kSmallWidth, y, 3)) << y;
        for (const std::uint64_t frame : {0u, 9u})
            EXPECT_EQ(decodeRawRow(raw, kSmallWidth, kSmallHeight, y, frame),
                      referenceRow(raw, kSmallWidth, y, frame));
    }
    EXPECT_NE(decodeRawRow(raw, kSmallWidth, kSmallHeight, 1, 0),
              decodeRawRow(raw, kSmallWidth, kSmallHeight, 1, 1));
    // A frame narrower than 66 columns decodes nothing: the hash is f + y.
    const auto narrow = makeRawFrame(65, 3);
    EXPECT_EQ(decodeRawRow(narrow, 65, 3, 1, 40), 41u);
}
