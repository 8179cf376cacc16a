// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/tile_renderer.h"

#include <gtest/gtest.h>

#include <vector>

using namespace quarbel;
using namespace quarbel::cpu;

namespace {

// Small images keep the tests fast; the camera maps them onto the same view.
constexpr int kSmallWidth = 48;
constexpr int kSmallHeight = 27;

std::vector<std::uint32_t> renderSerially(int width, int height) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width * height), 0);
    const TileImage image{width, height, pixels};
    for (int y = 0; y < height; ++y)
        renderTileRow(image, y);
    return pixels;
}

} // namespace

TEST(SceneDistance, TakesTheNearestOfSphereGroundAndLattice) {
    // The camera sits inside the lattice term, so every first march stops after one step.
    EXPECT_NEAR(sceneDistance({0, 0.35, 3.1}), -0.64512505432846545, 1e-12);
    EXPECT_NEAR(sceneDistance({0, 0, 0}), -0.87, 1e-12);                          // lattice
    EXPECT_NEAR(sceneDistance({0.748, 0.3, 0}), -0.05408189001611341, 1e-12);     // sphere
    EXPECT_NEAR(sceneDistance({0.3, -0.9, 0.748}), -0.049469644286549014, 1e-12); // rippled ground
    EXPECT_NEAR(sceneDistance({0.748, 3, 0.748}), 0.12999999999325368, 1e-12);    // lattice peak
}

TEST(TileRenderer, RowsTouchOnlyTheirOwnPixelsAndAreOpaque) {
    std::vector<std::uint32_t> pixels(kSmallWidth * kSmallHeight, 0x12345678u);
    const TileImage image{kSmallWidth, kSmallHeight, pixels};
    renderTileRow(image, 1);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i / kSmallWidth == 1) {
            ASSERT_EQ(pixels[i] >> 24, 0xFFu) << "pixel " << i;
        } else {
            ASSERT_EQ(pixels[i], 0x12345678u) << "pixel " << i;
        }
    }
}

TEST(TileRenderer, ParallelFrameEqualsRowByRowAndRepeats) {
    const std::vector<std::uint32_t> serial = renderSerially(kSmallWidth, kSmallHeight);
    std::vector<std::uint32_t> pixels(serial.size(), 0);
    const TileImage image{kSmallWidth, kSmallHeight, pixels};
    renderTileFrame(image);
    EXPECT_EQ(pixels, serial);
    const std::uint32_t first = tileFrameChecksum(pixels);
    renderTileFrame(image);
    EXPECT_EQ(tileFrameChecksum(pixels), first);
    // The image is not flat: the bottom rows (rays pointing down) differ from the top.
    EXPECT_NE(std::vector(serial.begin(), serial.begin() + kSmallWidth),
              std::vector(serial.end() - kSmallWidth, serial.end()));
}

TEST(TileRenderer, FrameChecksumSamplesEvery997thPixel) {
    std::vector<std::uint32_t> pixels(2000, 0);
    pixels[0] = 5;
    pixels[997] = 7;
    pixels[1994] = 11;
    pixels[1] = 0xFFFFFFFFu; // not sampled
    std::uint32_t h = 0;
    for (const std::uint32_t sampled : {5u, 7u, 11u})
        h = sampled + h * 1664525u + 1013904223u;
    EXPECT_EQ(tileFrameChecksum(pixels), h);
    EXPECT_EQ(tileFrameChecksum({}), 0u);
}
