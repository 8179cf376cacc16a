// SPDX-License-Identifier: Apache-2.0
// Facts about the machine for the system panel, the result cards and the command line:
// the processor's name, its topology and six labelled rows.
//
// Every member is safe from any thread. Nothing here reports an error: a fact that
// cannot be found has a fallback text ("Unknown CPU", "Unavailable", empty text).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quarbel {

// The labels of the rows that name the GPU the benchmarks use and the operating system.
inline constexpr const char* kGpuRowLabel = "GPU (Vulkan)";
inline constexpr const char* kOperatingSystemRowLabel = "Operating system";

struct SystemRow {
    std::string label;
    std::string value;
    bool operator==(const SystemRow&) const = default;
};

// The architecture of this build, fixed at compile time: "x86-64 (x86_64)" or "Arm (arm64)".
std::string buildArchitectureText();

// Where the facts are read from. The defaults describe the running system; tests point
// `rootDirectory` at a fake tree holding proc/, sys/ and etc/ files.
struct SystemSources {
    std::string rootDirectory;                              // prefix of every path; empty = "/"
    std::string architectureText = buildArchitectureText(); // the Architecture row
    std::string kernelRelease;                              // empty = ask uname
};

class SystemSnapshot {
  public:
    // The processor's brand text: the brand string as found (untrimmed) when it is not
    // blank, else "Apple Silicon SoC" on an Apple Silicon build, else the hardware
    // model, else "Unknown CPU".
    static std::string cpuName(const SystemSources& sources = {});

    // The Cores row: the processor's topology, e.g. "8 cores (4 P + 4 E), 12 threads,
    // 1 package, 1 NUMA node".
    static std::string coreCountText();

    // The value of a system-control name, or empty text. Known names:
    // "machdep.cpu.brand_string" (the processor's model line of /proc/cpuinfo, on Arm
    // its implementer and part, else the hardware line) and "hw.model" (the DMI product
    // name, else the device-tree model).
    static std::string sysctlString(const std::string& name, const SystemSources& sources = {});

    // Physical memory as "%.1f GB" of bytes × 2^-30, e.g. "16.0 GB".
    static std::string memoryText(std::uint64_t bytes);

    // PRETTY_NAME of os-release, ", kernel " and the kernel release.
    static std::string operatingSystemText(const SystemSources& sources = {});

    // The GPU row's value: the registered provider's name, or "Unavailable" when no
    // provider is registered or it names none.
    static std::string gpuName();

    // Registers the function that names the GPU the GPU workloads use. It is called at
    // most once per row list, on the thread that first reads `rows()`, so register it
    // before that; it must be safe to call from any thread. An empty function removes it.
    static void setGpuNameProvider(std::function<std::string()> provider);

    // Architecture, CPU, Cores, Memory, GPU (Vulkan), Operating system: computed on first use (a
    // thread-safe one-time initialisation) and kept for the life of the process.
    static const std::vector<SystemRow>& rows();

    // The same six rows computed now from `sources`.
    static std::vector<SystemRow> makeRows(const SystemSources& sources);
};

} // namespace quarbel
