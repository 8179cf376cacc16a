// SPDX-License-Identifier: Apache-2.0
#include "model/catalogue.h"
#include "model/ui_text.h"

#include <cmath>
#include <vector>

namespace quarbel {
namespace {

struct CategoryEntry {
    std::string_view title;
    CategoryColor color;
    std::string_view icon;
};

constexpr std::array<CategoryEntry, 6> kCategories = {{
    {QUARBEL_UI_TEXT("CPU"), {0.99, 0.64, 0.18}, "cpu"},
    {QUARBEL_UI_TEXT("Render"), {0.54, 0.88, 0.68}, "cube.transparent"},
    {QUARBEL_UI_TEXT("GPU"), {0.13, 0.79, 0.88}, "display"},
    {QUARBEL_UI_TEXT("SSD"), {0.84, 0.83, 0.72}, "internaldrive"},
    {QUARBEL_UI_TEXT("RAW"), {0.8, 0.48, 0.94}, "film.stack"},
    {QUARBEL_UI_TEXT("System"), {0.92, 0.32, 0.36}, "gauge.with.dots.needle.bottom.50percent"},
}};

struct BenchmarkEntry {
    std::string_view raw;
    BenchmarkCategory category;
    std::string_view title;
    std::string_view subtitle;
    std::string_view icon;
    int targetSeconds;
    std::string_view explanation;
    std::array<std::string_view, 3> stages; // empty strings when the benchmark has none
};

constexpr std::array<BenchmarkEntry, kBenchmarkCount> kBenchmarks = {{
    {"cpuInteger",
     BenchmarkCategory::cpu,
     QUARBEL_UI_TEXT("CPU Single-Core"),
     QUARBEL_UI_TEXT("professional mixed workload on 1 core"),
     "1.circle",
     15,
     QUARBEL_UI_TEXT(
         "Running a timed single-thread production mix: text/binary transforms, compression-like hashing, "
         "image math, simulation, and vector math."),
     {QUARBEL_UI_TEXT("Pinning the workload to one logical core."),
      QUARBEL_UI_TEXT("Running text, binary, image, simulation, and SIMD kernels."),
      QUARBEL_UI_TEXT("Collecting single-core throughput and checksum validation.")}},
    {"cpuFloating",
     BenchmarkCategory::cpu,
     QUARBEL_UI_TEXT("CPU Multi-Core"),
     QUARBEL_UI_TEXT("professional mixed workload multicore"),
     "cpu",
     15,
     QUARBEL_UI_TEXT(
         "Running the same production mix across all logical cores to measure sustained multicore "
         "throughput and scaling."),
     {QUARBEL_UI_TEXT("Scheduling the production mix across available logical cores."),
      QUARBEL_UI_TEXT("Measuring sustained multicore throughput under load."),
      QUARBEL_UI_TEXT("Checking scaling, work units, and final validation markers.")}},
    {"cpuCrypto",
     BenchmarkCategory::cpu,
     QUARBEL_UI_TEXT("CPU Workflow"),
     QUARBEL_UI_TEXT("text, compression, and crypto"),
     "hammer",
     15,
     QUARBEL_UI_TEXT(
         "Processing mutable 256 KB data blocks with text/binary changes and SHA-256 hashing to measure "
         "developer-style throughput."),
     {QUARBEL_UI_TEXT("Mutating 256 KB data blocks for developer-style work."),
      QUARBEL_UI_TEXT("Hashing and validating sustained processing throughput."),
      QUARBEL_UI_TEXT("Aggregating workflow bandwidth across active threads.")}},
    {"memoryStream",
     BenchmarkCategory::system,
     QUARBEL_UI_TEXT("Memory Stream"),
     QUARBEL_UI_TEXT("copy, scale, and add bandwidth"),
     "memorychip",
     12,
     QUARBEL_UI_TEXT(
         "Streaming through large arrays with copy, scale, and add operations to measure sustained memory "
         "bandwidth."),
     {QUARBEL_UI_TEXT("Streaming through large arrays with copy, scale, and add operations."),
      QUARBEL_UI_TEXT("Measuring sustained memory bandwidth from the active working set."),
      QUARBEL_UI_TEXT("Tracking completed passes and total bytes moved.")}},
    {"cineTile",
     BenchmarkCategory::render,
     QUARBEL_UI_TEXT("CPU Tile Render"),
     QUARBEL_UI_TEXT("sustained tile renderer"),
     "cube.transparent",
     20,
     QUARBEL_UI_TEXT(
         "Rendering procedural tiles on the CPU with ray-style lighting, samples, and checksums to measure "
         "sustained render throughput."),
     {}},
    {"metalVisual",
     BenchmarkCategory::gpu,
     QUARBEL_UI_TEXT("GPU Visual Tour"),
     QUARBEL_UI_TEXT("timed Metal fly-through"),
     "sparkles",
     20,
     QUARBEL_UI_TEXT(
         "Rendering a timed Metal fly-through with animated camera motion, sky, terrain, arches, lighting, "
         "and extra per-frame workload."),
     {}},
    {"metalCompute",
     BenchmarkCategory::gpu,
     QUARBEL_UI_TEXT("Metal Compute"),
     QUARBEL_UI_TEXT("Metal compute kernel"),
     "bolt.horizontal",
     15,
     QUARBEL_UI_TEXT(
         "Dispatching a sustained Metal compute kernel over large float4 buffers to measure GPU compute "
         "throughput."),
     {}},
    {"openCLCompute",
     BenchmarkCategory::gpu,
     QUARBEL_UI_TEXT("OpenCL Compute"),
     QUARBEL_UI_TEXT("OpenCL compute kernel"),
     "circle.hexagongrid",
     15,
     QUARBEL_UI_TEXT(
         "Dispatching a sustained OpenCL compute kernel for legacy compute coverage when an OpenCL device "
         "is available."),
     {}},
    {"rawCPUDecode",
     BenchmarkCategory::raw,
     QUARBEL_UI_TEXT("RAW CPU Decode"),
     QUARBEL_UI_TEXT("synthetic 4K RAW decode on CPU"),
     "film",
     18,
     QUARBEL_UI_TEXT(
         "Decoding synthetic Bayer RAW frames on the CPU with demosaic, color transform, gamma, and "
         "checksum validation."),
     {}},
    {"rawMetalDecode",
     BenchmarkCategory::raw,
     QUARBEL_UI_TEXT("RAW Metal Decode"),
     QUARBEL_UI_TEXT("synthetic 8K RAW decode on Metal"),
     "film.stack",
     18,
     QUARBEL_UI_TEXT(
         "Decoding synthetic 8K Bayer RAW frames on Metal with a GPU demosaic and color transform "
         "pipeline."),
     {}},
    {"ssdSequential",
     BenchmarkCategory::storage,
     QUARBEL_UI_TEXT("SSD Sequential"),
     QUARBEL_UI_TEXT("large block file read/write"),
     "arrow.left.arrow.right",
     12,
     QUARBEL_UI_TEXT(
         "Writing and reading a temporary media-sized file in large blocks to measure sustained sequential "
         "file throughput."),
     {QUARBEL_UI_TEXT("Writing a temporary media-sized file in large blocks."),
      QUARBEL_UI_TEXT("Reading the same file back to measure sustained sequential speed."),
      QUARBEL_UI_TEXT("Preparing read and write throughput in MB/s or GB/s.")}},
    {"ssdRealSpeed",
     BenchmarkCategory::storage,
     QUARBEL_UI_TEXT("SSD Real Speed"),
     QUARBEL_UI_TEXT("uncached volume throughput"),
     "speedometer",
     10,
     QUARBEL_UI_TEXT(
         "Writing and reading a large temporary file with low-level uncached sequential I/O to measure real "
         "volume throughput in MB/s or GB/s."),
     {QUARBEL_UI_TEXT("Creating a large temporary file for uncached volume testing."),
      QUARBEL_UI_TEXT("Measuring low-level sequential write throughput."),
      QUARBEL_UI_TEXT("Reading back the file to estimate real volume speed.")}},
    {"ssdRandom",
     BenchmarkCategory::storage,
     QUARBEL_UI_TEXT("SSD Random"),
     QUARBEL_UI_TEXT("random 4K IO"),
     "shuffle",
     15,
     QUARBEL_UI_TEXT(
         "Running repeated random 4K reads and writes inside a temporary file to measure small-block "
         "storage responsiveness."),
     {QUARBEL_UI_TEXT("Preparing the temporary file used for 4K random access."),
      QUARBEL_UI_TEXT("Running repeated random reads and writes across the file."),
      QUARBEL_UI_TEXT("Calculating read and write IOPS from measured operation time.")}},
}};

const BenchmarkEntry& entry(BenchmarkID id) { return kBenchmarks[indexOf(id)]; }

const CategoryEntry& entry(BenchmarkCategory c) { return kCategories[static_cast<std::size_t>(c)]; }

} // namespace

std::string_view categoryTitle(BenchmarkCategory c) { return entry(c).title; }
std::string_view categoryIcon(BenchmarkCategory c) { return entry(c).icon; }
CategoryColor categoryColor(BenchmarkCategory c) { return entry(c).color; }

std::string_view rawValue(BenchmarkID id) { return entry(id).raw; }

std::optional<BenchmarkID> benchmarkFromRawValue(std::string_view raw) {
    for (BenchmarkID id : kAllBenchmarks) {
        if (entry(id).raw == raw) return id;
    }
    return std::nullopt;
}

BenchmarkCategory category(BenchmarkID id) { return entry(id).category; }
std::string_view title(BenchmarkID id) { return entry(id).title; }
std::string_view subtitle(BenchmarkID id) { return entry(id).subtitle; }
std::string_view icon(BenchmarkID id) { return entry(id).icon; }
std::string_view runningExplanation(BenchmarkID id) { return entry(id).explanation; }
int targetSeconds(BenchmarkID id) { return entry(id).targetSeconds; }

std::span<const std::string_view> runningStageLines(BenchmarkID id) {
    const auto& stages = entry(id).stages;
    if (stages[0].empty()) return {};
    return stages;
}

std::string_view liveStatusLine(BenchmarkID id, double elapsedSeconds) {
    const auto stages = runningStageLines(id);
    if (stages.empty()) return runningExplanation(id);
    const auto k = static_cast<long long>(std::trunc(elapsedSeconds * 0.5));
    const auto count = static_cast<long long>(stages.size());
    return stages[static_cast<std::size_t>(((k % count) + count) % count)];
}

std::span<const BenchmarkID> byCategory(BenchmarkCategory c) {
    // Built once, grouping the catalogue so every list keeps catalogue order.
    static const auto groups = [] {
        std::array<std::vector<BenchmarkID>, kAllCategories.size()> result;
        for (BenchmarkID id : kAllBenchmarks)
            result[static_cast<std::size_t>(category(id))].push_back(id);
        return result;
    }();
    return groups[static_cast<std::size_t>(c)];
}

} // namespace quarbel
