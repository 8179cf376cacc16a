// SPDX-License-Identifier: Apache-2.0
#include "sensors/system_snapshot.h"

#include "model/number_format.h"
#include "sensors/cpu_topology.h"
#include "sensors/cpuinfo_brand.h"
#include "sensors/sysfs_text.h"

#include <algorithm>
#include <cctype>
#include <mutex>
#include <sys/utsname.h>
#include <unistd.h>

namespace quarbel {
namespace {

std::string pathUnder(const SystemSources& sources, const char* absolutePath) {
    return sources.rootDirectory + absolutePath;
}

// A file's text up to its first zero byte and first line break (the device-tree model
// ends in a zero byte, the DMI files in a line break).
std::string firstLineOf(const std::string& path) {
    const auto text = sysfs::readText(path, 4096);
    if (!text) return {};
    std::string_view view = *text;
    view = view.substr(0, view.find('\0'));
    view = view.substr(0, view.find('\n'));
    return std::string(view);
}

std::string hardwareModel(const SystemSources& sources) {
    for (const char* path : {"/sys/devices/virtual/dmi/id/product_name", "/proc/device-tree/model",
                             "/sys/firmware/devicetree/base/model"}) {
        std::string model = firstLineOf(pathUnder(sources, path));
        if (!sysfs::trimmed(model).empty()) return model;
    }
    return {};
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [&](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

// os-release values may be quoted and use shell escapes.
std::string unquoted(std::string_view value) {
    value = sysfs::trimmed(value);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size()) ++i;
        result += value[i];
    }
    return result;
}

std::string prettyName(const SystemSources& sources) {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        const auto text = sysfs::readText(pathUnder(sources, path));
        if (!text) continue;
        std::string_view rest = *text;
        while (!rest.empty()) {
            const auto end = rest.find('\n');
            const std::string_view line = rest.substr(0, end);
            rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
            if (line.starts_with("PRETTY_NAME=")) {
                std::string name = unquoted(line.substr(std::string_view("PRETTY_NAME=").size()));
                if (!name.empty()) return name;
            }
        }
    }
    return "Linux"; // what os-release itself prescribes when PRETTY_NAME is missing
}

std::string runningKernelRelease() {
    utsname names{};
    if (::uname(&names) != 0) return {};
    return names.release;
}

std::uint64_t physicalMemoryBytes() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

std::mutex& providerMutex() {
    static std::mutex mutex;
    return mutex;
}

std::function<std::string()>& gpuNameProvider() {
    static std::function<std::string()> provider; // guarded by providerMutex()
    return provider;
}

} // namespace

std::string buildArchitectureText() {
#if defined(__x86_64__)
    return "x86-64 (x86_64)";
#elif defined(__aarch64__)
    return "Arm (arm64)";
#else
    return "Unknown architecture";
#endif
}

std::string SystemSnapshot::sysctlString(const std::string& name, const SystemSources& sources) {
    if (name == "machdep.cpu.brand_string") {
        const auto cpuinfo = sysfs::readText(pathUnder(sources, "/proc/cpuinfo"), 1 << 20);
        return cpuinfo ? brandFromCpuinfo(*cpuinfo) : std::string{};
    }
    if (name == "hw.model") return hardwareModel(sources);
    return {};
}

std::string SystemSnapshot::cpuName(const SystemSources& sources) {
    std::string brand = sysctlString("machdep.cpu.brand_string", sources);
    if (!sysfs::trimmed(brand).empty()) return brand;
    if (containsIgnoringCase(sources.architectureText, "Apple Silicon")) return "Apple Silicon SoC";
    std::string model = sysctlString("hw.model", sources);
    if (!sysfs::trimmed(model).empty()) return model;
    return "Unknown CPU";
}

std::string SystemSnapshot::coreCountText() { return topologyText(systemCpuTopology()); }

std::string SystemSnapshot::memoryText(std::uint64_t bytes) {
    return format(static_cast<double>(bytes) * 9.313225746154785e-10, 1) + " GB";
}

std::string SystemSnapshot::operatingSystemText(const SystemSources& sources) {
    const std::string release =
        sources.kernelRelease.empty() ? runningKernelRelease() : sources.kernelRelease;
    std::string text = prettyName(sources);
    if (!release.empty()) text += ", kernel " + release;
    return text;
}

std::string SystemSnapshot::gpuName() {
    std::function<std::string()> provider;
    {
        std::lock_guard lock(providerMutex());
        provider = gpuNameProvider();
    }
    // Called outside the lock: naming a GPU may take a while (opening the driver).
    std::string name = provider ? provider() : std::string{};
    if (sysfs::trimmed(name).empty()) return "Unavailable";
    return name;
}

void SystemSnapshot::setGpuNameProvider(std::function<std::string()> provider) {
    std::lock_guard lock(providerMutex());
    gpuNameProvider() = std::move(provider);
}

std::vector<SystemRow> SystemSnapshot::makeRows(const SystemSources& sources) {
    return {
        {"Architecture", sources.architectureText},
        {"CPU", cpuName(sources)},
        {"Cores", coreCountText()},
        {"Memory", memoryText(physicalMemoryBytes())},
        {kGpuRowLabel, gpuName()},
        {kOperatingSystemRowLabel, operatingSystemText(sources)},
    };
}

const std::vector<SystemRow>& SystemSnapshot::rows() {
    static const std::vector<SystemRow> rows = makeRows(SystemSources{});
    return rows;
}

} // namespace quarbel
