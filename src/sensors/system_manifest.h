// SPDX-License-Identifier: Apache-2.0
// What decides whether two runs are comparable beyond the hardware: the kernel and how it was
// started, CPU mitigations and microcode, SMT, transparent huge pages, the frequency governor,
// the GPU and OpenCL drivers, this build of Quarbel, the scratch file system and the
// virtualisation layer. Kept in every report, shown by `quarbel info`, compared by `compare`.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct ManifestField {
    std::string key;     // stable name in the report, e.g. "kernelCommandLine"
    std::string label;   // for people, e.g. "Kernel command line"
    std::string value;   // "" when unknown
    std::string affects; // which scores a difference can move, e.g. "all", "storage", "GPU"
    bool operator==(const ManifestField&) const = default;
};

using SystemManifest = std::vector<ManifestField>;

// Where the facts come from. Tests point `rootDirectory` at a fake tree holding proc/, sys/
// and etc/; the drivers come from the GPU layer, which the sensors do not link.
struct ManifestSources {
    std::string rootDirectory;    // prefix of every path; empty = "/"
    std::string scratchDirectory; // the storage benchmarks' parent; empty = storageRootDirectory()
    // The CPUID hypervisor vendor ("KVMKVMKVM", "Microsoft Hv"), "" on bare metal; none = ask
    // the processor.
    std::optional<std::string> hypervisorSignature;
    // What `systemd-detect-virt --vm` and `--container` print ("kvm", "docker", "none"); none =
    // run it where installed.
    std::optional<std::string> detectedMachine;
    std::optional<std::string> detectedContainer;
};

// The GPU and OpenCL driver descriptions, registered by the programs that link the GPU layer
// (called at most once per manifest, on the calling thread).
void setDriverDescriptionProvider(std::function<std::pair<std::string, std::string>()> provider);

SystemManifest readSystemManifest(const ManifestSources& sources = {});

// The virtualisation layers in one text: "kvm (CPUID: KVMKVMKVM; DMI: QEMU Standard PC), in a
// docker container", or "none (bare metal)" when nothing points at one.
std::string virtualizationText(const std::string& hypervisorSignature, const std::string& dmiVendor,
                               const std::string& dmiProduct, const std::string& detectedMachine,
                               const std::string& detectedContainer);

struct ManifestDifference {
    std::string label;
    std::string before;
    std::string after;
    std::string affects;
    bool operator==(const ManifestDifference&) const = default;
};

// The fields whose values differ, in the order of `before`; a field only one side knows is
// left out (reports from before the field existed).
std::vector<ManifestDifference> manifestDifferences(const SystemManifest& before,
                                                    const SystemManifest& after);

} // namespace quarbel
