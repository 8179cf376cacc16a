// SPDX-License-Identifier: Apache-2.0
// The fixed list of benchmarks and categories: everything a user reads about a
// benchmark before and while it runs. Plain data; safe to use from any thread.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace quarbel {

enum class BenchmarkCategory { cpu, render, gpu, storage, raw, system };

// Catalogue order is the order of the full suite and of every list.
enum class BenchmarkID {
    cpuInteger,
    cpuFloating,
    cpuCrypto,
    memoryStream,
    cineTile,
    metalVisual,
    metalCompute,
    openCLCompute,
    rawCPUDecode,
    rawMetalDecode,
    ssdSequential,
    ssdRealSpeed,
    ssdRandom,
};

inline constexpr std::size_t kBenchmarkCount = 13;

inline constexpr std::array<BenchmarkID, kBenchmarkCount> kAllBenchmarks = {
    BenchmarkID::cpuInteger,     BenchmarkID::cpuFloating,   BenchmarkID::cpuCrypto,
    BenchmarkID::memoryStream,   BenchmarkID::cineTile,      BenchmarkID::metalVisual,
    BenchmarkID::metalCompute,   BenchmarkID::openCLCompute, BenchmarkID::rawCPUDecode,
    BenchmarkID::rawMetalDecode, BenchmarkID::ssdSequential, BenchmarkID::ssdRealSpeed,
    BenchmarkID::ssdRandom,
};

inline constexpr std::array<BenchmarkCategory, 6> kAllCategories = {
    BenchmarkCategory::cpu,     BenchmarkCategory::render, BenchmarkCategory::gpu,
    BenchmarkCategory::storage, BenchmarkCategory::raw,    BenchmarkCategory::system,
};

constexpr std::size_t indexOf(BenchmarkID id) { return static_cast<std::size_t>(id); }

// sRGB components in [0, 1]; opacity is always 1.
struct CategoryColor {
    double red;
    double green;
    double blue;
    bool operator==(const CategoryColor&) const = default;
};

// The raw value of a category is also its display title ("CPU", "SSD", ...).
std::string_view categoryTitle(BenchmarkCategory category);
std::string_view categoryIcon(BenchmarkCategory category);
CategoryColor categoryColor(BenchmarkCategory category);

// The raw value of a benchmark is its case name ("cpuInteger").
std::string_view rawValue(BenchmarkID id);
// Accepts exactly the thirteen case names, case-sensitively.
std::optional<BenchmarkID> benchmarkFromRawValue(std::string_view raw);

BenchmarkCategory category(BenchmarkID id);
std::string_view title(BenchmarkID id);
std::string_view subtitle(BenchmarkID id);
std::string_view icon(BenchmarkID id);
std::string_view runningExplanation(BenchmarkID id);
// Nominal seconds of one pass; a display target only.
int targetSeconds(BenchmarkID id);
// The three stage lines, or an empty span for benchmarks without them.
std::span<const std::string_view> runningStageLines(BenchmarkID id);
// The status line to show after `elapsedSeconds` (finite, >= 0): advances every two seconds.
std::string_view liveStatusLine(BenchmarkID id, double elapsedSeconds);
// The identifiers of one category, in catalogue order.
std::span<const BenchmarkID> byCategory(BenchmarkCategory category);

} // namespace quarbel
