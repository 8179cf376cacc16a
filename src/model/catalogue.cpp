#include "model/catalogue.h"

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
    {"CPU", {0.99, 0.64, 0.18}, "cpu"},
    {"Render", {0.54, 0.88, 0.68}, "cube.transparent"},
    {"GPU", {0.13, 0.79, 0.88}, "display"},
    {"SSD", {0.84, 0.83, 0.72}, "internaldrive"},
    {"RAW", {0.8, 0.48, 0.94}, "film.stack"},
    {"System", {0.92, 0.32, 0.36}, "gauge.with.dots.needle.bottom.50percent"},
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
     "CPU Single-Core",
     "professional mixed workload on 1 core",
     "1.circle",
     15,
     "Running a timed single-thread production mix: text/binary transforms, compression-like hashing, "
     "image math, simulation, and vector math.",
     {"Pinning the workload to one logical core.",
      "Running text, binary, image, simulation, and SIMD kernels.",
      "Collecting single-core throughput and checksum validation."}},
    {"cpuFloating",
     BenchmarkCategory::cpu,
     "CPU Multi-Core",
     "professional mixed workload multicore",
     "cpu",
     15,
     "Running the same production mix across all logical cores to measure sustained multicore "
     "throughput and scaling.",
     {"Scheduling the production mix across available logical cores.",
      "Measuring sustained multicore throughput under load.",
      "Checking scaling, work units, and final validation markers."}},
    {"cpuCrypto",
     BenchmarkCategory::cpu,
     "CPU Workflow",
     "text, compression, and crypto",
     "hammer",
     15,
     "Processing mutable 256 KB data blocks with text/binary changes and SHA-256 hashing to measure "
     "developer-style throughput.",
     {"Mutating 256 KB data blocks for developer-style work.",
      "Hashing and validating sustained processing throughput.",
      "Aggregating workflow bandwidth across active threads."}},
    {"memoryStream",
     BenchmarkCategory::system,
     "Memory Stream",
     "copy, scale, and add bandwidth",
     "memorychip",
     12,
     "Streaming through large arrays with copy, scale, and add operations to measure sustained memory "
     "bandwidth.",
     {"Streaming through large arrays with copy, scale, and add operations.",
      "Measuring sustained memory bandwidth from the active working set.",
      "Tracking completed passes and total bytes moved."}},
    {"cineTile",
     BenchmarkCategory::render,
     "CPU Tile Render",
     "sustained tile renderer",
     "cube.transparent",
     20,
     "Rendering procedural tiles on the CPU with ray-style lighting, samples, and checksums to measure "
     "sustained render throughput.",
     {}},
    {"metalVisual",
     BenchmarkCategory::gpu,
     "GPU Visual Tour",
     "timed Metal fly-through",
     "sparkles",
     20,
     "Rendering a timed Metal fly-through with animated camera motion, sky, terrain, arches, lighting, "
     "and extra per-frame workload.",
     {}},
    {"metalCompute",
     BenchmarkCategory::gpu,
     "Metal Compute",
     "Metal compute kernel",
     "bolt.horizontal",
     15,
     "Dispatching a sustained Metal compute kernel over large float4 buffers to measure GPU compute "
     "throughput.",
     {}},
    {"openCLCompute",
     BenchmarkCategory::gpu,
     "OpenCL Compute",
     "OpenCL compute kernel",
     "circle.hexagongrid",
     15,
     "Dispatching a sustained OpenCL compute kernel for legacy compute coverage when an OpenCL device "
     "is available.",
     {}},
    {"rawCPUDecode",
     BenchmarkCategory::raw,
     "RAW CPU Decode",
     "synthetic 4K RAW decode on CPU",
     "film",
     18,
     "Decoding synthetic Bayer RAW frames on the CPU with demosaic, color transform, gamma, and "
     "checksum validation.",
     {}},
    {"rawMetalDecode",
     BenchmarkCategory::raw,
     "RAW Metal Decode",
     "synthetic 8K RAW decode on Metal",
     "film.stack",
     18,
     "Decoding synthetic 8K Bayer RAW frames on Metal with a GPU demosaic and color transform "
     "pipeline.",
     {}},
    {"ssdSequential",
     BenchmarkCategory::storage,
     "SSD Sequential",
     "large block file read/write",
     "arrow.left.arrow.right",
     12,
     "Writing and reading a temporary media-sized file in large blocks to measure sustained sequential "
     "file throughput.",
     {"Writing a temporary media-sized file in large blocks.",
      "Reading the same file back to measure sustained sequential speed.",
      "Preparing read and write throughput in MB/s or GB/s."}},
    {"ssdRealSpeed",
     BenchmarkCategory::storage,
     "SSD Real Speed",
     "uncached volume throughput",
     "speedometer",
     10,
     "Writing and reading a large temporary file with low-level uncached sequential I/O to measure real "
     "volume throughput in MB/s or GB/s.",
     {"Creating a large temporary file for uncached volume testing.",
      "Measuring low-level sequential write throughput.",
      "Reading back the file to estimate real volume speed."}},
    {"ssdRandom",
     BenchmarkCategory::storage,
     "SSD Random",
     "random 4K IO",
     "shuffle",
     15,
     "Running repeated random 4K reads and writes inside a temporary file to measure small-block "
     "storage responsiveness.",
     {"Preparing the temporary file used for 4K random access.",
      "Running repeated random reads and writes across the file.",
      "Calculating read and write IOPS from measured operation time."}},
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
