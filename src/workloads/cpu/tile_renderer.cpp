// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/tile_renderer.h"

#include "model/number_format.h"
#include "workloads/cpu/checksum_text.h"
#include "workloads/cpu/fatal.h"
#include "workloads/cpu/parallel.h"
#include "workloads/cpu/timed_loop.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <string>
#include <vector>

namespace quarbel::cpu {
namespace {

struct Vec3 {
    double x, y, z;
};

inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator*(Vec3 a, double s) { return {a.x * s, a.y * s, a.z * s}; }
inline double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length(Vec3 a) { return std::sqrt(dot(a, a)); }

struct SceneSample {
    double distance;
    bool sphereBelowGround; // selects the sphere's material
};

inline SceneSample sampleScene(Vec3 p) {
    const double sphere = length(p) - 0.86;
    const double ground = p.y + 0.85 + std::sin(4.2 * p.x) * 0.025 + std::cos(3.7 * p.z) * 0.025;
    const double lattice =
        std::max(std::abs(std::sin(2.1 * p.x)) - 0.92, std::abs(std::sin(2.1 * p.z)) - 0.92) + 0.05;
    return {std::min(lattice, std::min(ground, sphere)), sphere < ground};
}

inline double distanceAt(Vec3 p) { return sampleScene(p).distance; }

constexpr Vec3 kLight{-0.45197036599998097, 0.7231525855999694, 0.5222768673777558};
constexpr Vec3 kSphereAlbedo{0.12, 0.72, 0.8};
constexpr Vec3 kGroundAlbedo{0.82, 0.55, 0.24};
constexpr int kBounces = 3;
constexpr int kMarchSteps = 42;
constexpr double kFarLimit = 8.5;
constexpr double kNormalOffset = 0.003;

// The colour of one sample before the square root.
Vec3 traceSample(Vec3 origin, Vec3 direction) {
    Vec3 colour{0.04, 0.06, 0.08};
    Vec3 throughput{1, 1, 1};
    for (int bounce = 0; bounce < kBounces; ++bounce) {
        double t = 0;
        bool sphereHit = false;
        for (int step = 0; step < kMarchSteps; ++step) {
            const SceneSample scene = sampleScene(origin + direction * t);
            sphereHit = scene.sphereBelowGround;
            t += std::max(0.72 * scene.distance, 0.006);
            if (scene.distance < 0.004 || t > kFarLimit) break;
        }
        if (t > kFarLimit) {
            const double f = 2 * std::max(direction.y, 0.0) + 1;
            colour = colour + Vec3{throughput.x * 0.02 * f, throughput.y * 0.05 * f, throughput.z * 0.08 * f};
            return colour;
        }
        // A hit, also when the steps ran out; t already includes the last step.
        const Vec3 p = origin + direction * t;
        const Vec3 ex{kNormalOffset, 0, 0}, ey{0, kNormalOffset, 0}, ez{0, 0, kNormalOffset};
        Vec3 n{distanceAt(p + ex) - distanceAt(p - ex), distanceAt(p + ey) - distanceAt(p - ey),
               distanceAt(p + ez) - distanceAt(p - ez)};
        n = n * (1.0 / length(n));

        const double diffuse = std::max(dot(n, kLight), 0.0);
        const double rimBase = std::max(1 - std::abs(dot(direction * -1.0, n)), 0.0);
        const double rim = rimBase * rimBase;
        const Vec3 albedo = sphereHit ? kSphereAlbedo : kGroundAlbedo;
        colour.x += throughput.x * (albedo.x * diffuse + 0.06 + 0.18 * rim);
        colour.y += throughput.y * (albedo.y * diffuse + 0.09 + 0.6 * rim);
        colour.z += throughput.z * (albedo.z * diffuse + 0.1 + 0.65 * rim);

        origin = p + n * 0.015;
        // Glossy reflection about a slightly tilted normal; d is deliberately not renormalised.
        const double g = bounce * 0.012;
        const Vec3 tilted = n + Vec3{g, g, g};
        direction = direction - tilted * (2 * dot(direction, tilted));
        throughput = throughput * 0.46;
    }
    return colour;
}

std::uint32_t channelByte(double sum) {
    const double c = sum / kTileSamplesPerPixel;
    if (!(c > 0)) return 0;
    return static_cast<std::uint32_t>(std::min(c, 1.0) * 255);
}

} // namespace

double sceneDistance(Point3 p) noexcept { return distanceAt({p.x, p.y, p.z}); }

void renderTileRow(const TileImage& image, int y) noexcept {
    const Vec3 camera{0, 0.35, 3.1};
    std::uint32_t* row =
        image.pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width);
    for (int x = 0; x < image.width; ++x) {
        Vec3 sum{0, 0, 0};
        for (int s = 0; s < kTileSamplesPerPixel; ++s) {
            const double u = (x + s * 0.31) / image.width;
            const double v = (y + s * 0.47) / image.height;
            const double px = (2 * u - 1) * 1.4;
            const double py = 2 * v - 1;
            const double k = 1 / std::sqrt(px * px + py * py + 3.61);
            const Vec3 colour = traceSample(camera, {px * k, py * k, -1.9 * k});
            sum = sum + Vec3{std::sqrt(std::max(colour.x, 0.0)), std::sqrt(std::max(colour.y, 0.0)),
                             std::sqrt(std::max(colour.z, 0.0))};
        }
        row[x] = 0xFF000000u | channelByte(sum.x) << 16 | channelByte(sum.y) << 8 | channelByte(sum.z);
    }
}

void renderTileFrame(const TileImage& image) {
    require(image.width > 0 && image.height > 0 &&
                image.pixels.size() ==
                    static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height),
            "the tile image must hold width x height pixels");
    parallelFor(image.height, [&image](std::int64_t y) { renderTileRow(image, static_cast<int>(y)); });
}

std::uint32_t tileFrameChecksum(std::span<const std::uint32_t> pixels) noexcept {
    std::uint32_t h = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 997)
        h = pixels[i] + h * 1664525u + 1013904223u;
    return h;
}

BenchmarkOutcome runCineTile(const WorkloadContext& context, int width, int height) {
    require(width > 0 && height > 0, "the tile renderer needs a positive image size");
    try {
        std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                          0);
        const TileImage image{width, height, pixels};

        const std::int64_t samplesPerFrame = std::int64_t{width} * height * kTileSamplesPerPixel;
        std::int64_t frames = 0;
        std::uint32_t checksum = 0;
        const ProgressUnit unit{"frames", "MPix/s", static_cast<double>(samplesPerFrame) / 1e6};
        const TimedLoopResult timing =
            repeatUntilBudget(context, context.budget(kTileBudgetSeconds), unit, [&] {
                renderTileFrame(image);
                checksum ^= tileFrameChecksum(pixels);
                frames = checkedAdd(frames, 1);
                return frames;
            });

        const std::int64_t samples = checkedMultiply(std::max<std::int64_t>(frames, 1), samplesPerFrame);
        // Counts samples (four per pixel) although the unit reads MPix/s.
        const double rate = static_cast<double>(samples) / timing.elapsedSeconds / 1e6;
        return completedOutcome(rate * kTileScoreFactor,
                                MeasurementLine{"Renderer", format(rate, 2), "MPix/s"},
                                MeasurementLine{"Frames", std::to_string(frames), ""}, timing.elapsedSeconds,
                                "Sustained CPU tile render at " + std::to_string(width) + "x" +
                                    std::to_string(height) + ", checksum " + checksumPrefix(checksum) + ".");
    } catch (const std::exception& error) {
        return failedOutcome("The CPU tile renderer could not run: " + std::string(error.what()) + ".");
    }
}

} // namespace quarbel::cpu
