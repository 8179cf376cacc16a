// SPDX-License-Identifier: Apache-2.0
#include "sensors/system_manifest.h"

#include "model/storage_root.h"
#include "sensors/effective_clock.h"
#include "sensors/sysfs_text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>
#include <sys/utsname.h>
#include <unistd.h>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace quarbel {
namespace {

std::mutex& providerMutex() {
    static std::mutex mutex;
    return mutex;
}

std::function<std::pair<std::string, std::string>()>& driverProvider() {
    static std::function<std::pair<std::string, std::string>()> provider;
    return provider;
}

std::string hypervisorFromCpuid() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & (1u << 31)) == 0) return {};
    __cpuid(0x40000000, eax, ebx, ecx, edx);
    char vendor[13] = {};
    std::memcpy(vendor, &ebx, 4);
    std::memcpy(vendor + 4, &ecx, 4);
    std::memcpy(vendor + 8, &edx, 4);
    const std::string text(sysfs::trimmed(vendor));
    return text.empty() ? "unnamed hypervisor" : text;
#else
    return {};
#endif
}

std::string runDetectVirt(const char* layer) {
    // Only the installed tool, by its usual paths: nothing is searched for or fetched.
    for (const char* tool : {"/usr/bin/systemd-detect-virt", "/bin/systemd-detect-virt"}) {
        if (::access(tool, X_OK) != 0) continue;
        const std::string command = std::string(tool) + " " + layer + " 2>/dev/null";
        FILE* pipe = ::popen(command.c_str(), "r");
        if (pipe == nullptr) return {};
        char line[128] = {};
        const bool read = std::fgets(line, sizeof line, pipe) != nullptr;
        ::pclose(pipe);
        return read ? std::string(sysfs::trimmed(line)) : std::string();
    }
    return {};
}

// The bracketed choice of a sysfs selector such as "always [madvise] never".
std::string selected(const std::string& text) {
    const auto open = text.find('['), close = text.find(']');
    if (open == std::string::npos || close == std::string::npos || close < open) return text;
    return text.substr(open + 1, close - open - 1);
}

// The distinct values of a per-CPU cpufreq file over every CPU, e.g. "performance" or
// "powersave, performance".
std::string perCpuValues(const std::string& root, const char* file) {
    std::set<std::string> values;
    for (const auto& entry : sysfs::directoryEntries(root + "/sys/devices/system/cpu")) {
        if (entry.rfind("cpu", 0) != 0 || entry.size() < 4 ||
            entry.find_first_not_of("0123456789", 3) != std::string::npos)
            continue;
        const std::string value =
            sysfs::readLine(root + "/sys/devices/system/cpu/" + entry + "/cpufreq/" + file);
        if (!value.empty()) values.insert(value);
    }
    std::string text;
    for (const auto& value : values)
        text += (text.empty() ? "" : ", ") + value;
    return text;
}

// "spectre_v2: Mitigation: Retpolines; ..." over every vulnerability the kernel lists, sorted.
std::string mitigations(const std::string& root) {
    const std::string folder = root + "/sys/devices/system/cpu/vulnerabilities";
    auto names = sysfs::directoryEntries(folder);
    std::sort(names.begin(), names.end());
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : "; ") + name + ": " + sysfs::readLine(folder + "/" + name);
    return text;
}

std::string cpuinfoField(const std::string& root, std::string_view field) {
    const auto text = sysfs::readText(root + "/proc/cpuinfo", 1 << 20);
    if (!text) return {};
    for (std::size_t start = 0; start < text->size();) {
        const std::size_t end = std::min(text->find('\n', start), text->size());
        const std::string_view line(text->data() + start, end - start);
        if (line.substr(0, field.size()) == field) {
            const auto colon = line.find(':');
            if (colon != std::string_view::npos) return std::string(sysfs::trimmed(line.substr(colon + 1)));
        }
        start = end + 1;
    }
    return {};
}

std::string scratchParent(const std::string& given) { return given.empty() ? storageRootDirectory() : given; }

// "ext4 on /, rw,relatime": the mount that holds `path` by the longest mount point that is a
// prefix of it in mountinfo (fields 5 and 6; the type and source follow " - ").
std::string mountOf(const std::string& root, const std::string& path) {
    const auto text = sysfs::readText(root + "/proc/self/mountinfo", 1 << 20);
    if (!text) return {};
    std::string best, bestPoint;
    for (std::size_t start = 0; start < text->size();) {
        const std::size_t end = std::min(text->find('\n', start), text->size());
        const std::string line = text->substr(start, end - start);
        start = end + 1;
        std::vector<std::string> fields;
        for (std::size_t at = 0; at < line.size();) {
            const std::size_t next = std::min(line.find(' ', at), line.size());
            fields.push_back(line.substr(at, next - at));
            at = next + 1;
        }
        const auto dash = std::find(fields.begin(), fields.end(), "-");
        if (fields.size() < 6 || dash == fields.end() || dash + 1 == fields.end()) continue;
        const std::string& point = fields[4];
        const bool holds =
            path == point || (path.rfind(point, 0) == 0 && (point == "/" || path[point.size()] == '/'));
        if (!holds || point.size() < bestPoint.size()) continue;
        bestPoint = point;
        best = *(dash + 1) + " on " + point + ", " + fields[5];
    }
    return best;
}

std::string kernelText(const std::string& root) {
    if (!root.empty()) return sysfs::readLine(root + "/proc/sys/kernel/osrelease");
    utsname names{};
    if (::uname(&names) != 0) return {};
    return std::string(names.release) + " " + names.version;
}

} // namespace

void setDriverDescriptionProvider(std::function<std::pair<std::string, std::string>()> provider) {
    std::lock_guard lock(providerMutex());
    driverProvider() = std::move(provider);
}

std::string virtualizationText(const std::string& hypervisor, const std::string& dmiVendor,
                               const std::string& dmiProduct, const std::string& detectedMachine,
                               const std::string& detectedContainer) {
    static const char* const kVirtualVendors[] = {"QEMU",      "KVM",     "VMware",      "innotek",   "Xen",
                                                  "Microsoft", "Amazon",  "Google",      "Parallels", "Bochs",
                                                  "OpenStack", "Hetzner", "DigitalOcean"};
    const std::string joined = dmiVendor + " " + dmiProduct;
    const std::string dmi(sysfs::trimmed(joined));
    const bool dmiVirtual =
        std::any_of(std::begin(kVirtualVendors), std::end(kVirtualVendors),
                    [&](const char* vendor) { return dmi.find(vendor) != std::string::npos; }) &&
        (dmi.find("Microsoft") == std::string::npos || dmi.find("Virtual") != std::string::npos);
    const bool detected = !detectedMachine.empty() && detectedMachine != "none";
    const bool contained = !detectedContainer.empty() && detectedContainer != "none";
    const std::string container = contained ? ", in a " + detectedContainer + " container" : "";
    if (hypervisor.empty() && !dmiVirtual && !detected) return "none (bare metal)" + container;
    std::string name = detected              ? detectedMachine
                       : !hypervisor.empty() ? "virtual machine"
                                             : "likely virtual";
    std::vector<std::string> evidence;
    if (!hypervisor.empty()) evidence.push_back("CPUID: " + hypervisor);
    if (!dmi.empty() && dmiVirtual) evidence.push_back("DMI: " + dmi);
    std::string text = name;
    for (std::size_t i = 0; i < evidence.size(); ++i)
        text += (i > 0 ? "; " : " (") + evidence[i];
    return text + (evidence.empty() ? "" : ")") + container;
}

SystemManifest readSystemManifest(const ManifestSources& sources) {
    const std::string& root = sources.rootDirectory;
    std::pair<std::string, std::string> drivers;
    {
        std::lock_guard lock(providerMutex());
        if (driverProvider()) drivers = driverProvider()();
    }
    const std::string hypervisor =
        sources.hypervisorSignature.value_or(root.empty() ? hypervisorFromCpuid() : "");
    const bool live = root.empty();
    const std::string machine = sources.detectedMachine.value_or(live ? runDetectVirt("--vm") : "");
    const std::string container =
        sources.detectedContainer.value_or(live ? runDetectVirt("--container") : "");
    const std::string dmi = root + "/sys/devices/virtual/dmi/id/";
    return {
        {"kernel", "Kernel", kernelText(root), "all"},
        {"kernelCommandLine", "Kernel command line", sysfs::readLine(root + "/proc/cmdline"), "all"},
        {"cpuMitigations", "CPU mitigations", mitigations(root), "CPU, memory, storage"},
        {"microcode", "Microcode", cpuinfoField(root, "microcode"), "CPU, memory"},
        {"smt", "SMT", sysfs::readLine(root + "/sys/devices/system/cpu/smt/control"), "CPU"},
        {"transparentHugePages", "Transparent huge pages",
         selected(sysfs::readLine(root + "/sys/kernel/mm/transparent_hugepage/enabled")), "memory, RAW CPU"},
        {"cpuGovernor", "CPU frequency governor", perCpuValues(root, "scaling_governor"), "CPU, memory"},
        {"energyPreference", "Energy preference", perCpuValues(root, "energy_performance_preference"),
         "CPU, memory"},
        {"gpuDriver", "GPU driver (Vulkan)", drivers.first, "GPU"},
        {"openclDriver", "OpenCL driver", drivers.second, "OpenCL"},
        {"coreClockSource", "Core clock source (sensor trace)",
         coreClockSourceText(ConditionLocations{root + "/sys", root + "/proc"}), "sensor trace"},
        {"quarbelVersion", "Quarbel", QUARBEL_VERSION, "all"},
        {"compiler", "Compiler and flags", QUARBEL_COMPILER " " QUARBEL_BUILD_FLAGS, "CPU, memory"},
        {"storageDirectory", "Storage folder", scratchParent(sources.scratchDirectory), "storage"},
        {"scratchFilesystem", "Scratch file system", mountOf(root, scratchParent(sources.scratchDirectory)),
         "storage"},
        {"virtualization", "Virtualisation",
         virtualizationText(hypervisor, sysfs::readLine(dmi + "sys_vendor"),
                            sysfs::readLine(dmi + "product_name"), machine, container),
         "all"},
    };
}

std::vector<ManifestDifference> manifestDifferences(const SystemManifest& before,
                                                    const SystemManifest& after) {
    std::vector<ManifestDifference> differences;
    for (const auto& field : before) {
        const auto other = std::find_if(after.begin(), after.end(),
                                        [&](const ManifestField& f) { return f.key == field.key; });
        if (other == after.end() || field.value == other->value) continue;
        differences.push_back({field.label, field.value, other->value, field.affects});
    }
    return differences;
}

} // namespace quarbel
