// SPDX-License-Identifier: Apache-2.0
// The CPU tile renderer behind cineTile: a ray-marched procedural scene (sphere, rippled
// ground, periodic lattice) rendered row-parallel, four samples per pixel.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <span>

namespace quarbel::cpu {

inline constexpr int kTileWidth = 960;
inline constexpr int kTileHeight = 540;
inline constexpr int kTileSamplesPerPixel = 4;
inline constexpr double kTileBudgetSeconds = 20.0;
inline constexpr double kTileScoreFactor = 2650.0; // points per million samples per second

struct Point3 {
    double x = 0;
    double y = 0;
    double z = 0;
};

// The scene's signed distance at p: min(lattice, min(ground, sphere)).
double sceneDistance(Point3 p) noexcept;

// The image a frame is rendered into: width * height pixels, row-major, 0xFFRRGGBB.
struct TileImage {
    int width = kTileWidth;
    int height = kTileHeight;
    std::span<std::uint32_t> pixels; // width * height entries
};

// Renders row y (0 ... height - 1) of the frame into image.pixels; touches only that
// row, so different rows may be rendered concurrently.
void renderTileRow(const TileImage& image, int y) noexcept;

// Every row in parallel (current oneTBB arena), one row per task.
void renderTileFrame(const TileImage& image);

// h = pixel + h * 1664525 + 1013904223 over every 997th pixel, wrapping at 32 bits.
std::uint32_t tileFrameChecksum(std::span<const std::uint32_t> pixels) noexcept;

// The whole benchmark at width x height (the defaults unless a test asks for less).
// Never throws.
BenchmarkOutcome runCineTile(const WorkloadContext& context, int width, int height);

} // namespace quarbel::cpu
