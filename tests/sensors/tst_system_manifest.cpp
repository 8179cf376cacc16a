// SPDX-License-Identifier: Apache-2.0
#include "sensors/machine_identity.h"
#include "sensors/system_manifest.h"

#include "fake_tree.h"

#include <gtest/gtest.h>

#include <map>

using namespace quarbel;
using quarbel::testing::FakeTree;

TEST(SystemManifest, ReadsTheSetUpThatCanMoveScoresFromProcAndSys) {
    FakeTree tree;
    tree.writeRows("proc/sys/kernel/osrelease=6.1.0-18-amd64 sys/devices/system/cpu/smt/control=on "
                   "sys/devices/virtual/dmi/id/sys_vendor=QEMU");
    tree.write("proc/cmdline", "BOOT_IMAGE=/vmlinuz mitigations=off quiet\n");
    tree.write("proc/cpuinfo", "processor\t: 0\nmicrocode\t: 0xb4\n\nprocessor\t: 1\nmicrocode\t: 0xb4\n");
    tree.write("sys/devices/system/cpu/vulnerabilities/spectre_v2", "Mitigation: Retpolines\n");
    tree.write("sys/devices/system/cpu/vulnerabilities/meltdown", "Not affected\n");
    tree.write("sys/kernel/mm/transparent_hugepage/enabled", "always [madvise] never\n");
    // policy0 is not a CPU folder.
    tree.writeRows(
        "cpu0/cpufreq/scaling_governor=performance cpu1/cpufreq/scaling_governor=powersave "
        "cpu1/cpufreq/energy_performance_preference=balance_power cpufreq/policy0/scaling_governor=ignored",
        "sys/devices/system/cpu/");
    tree.write("proc/self/mountinfo", "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                                      "30 22 0:40 / /scratch rw,noatime shared:2 - xfs /dev/nvme0n1 rw\n"
                                      "31 22 0:41 / /scratchy rw shared:3 - tmpfs tmpfs rw\n");
    tree.write("sys/devices/virtual/dmi/id/product_name", "Standard PC (Q35 + ICH9, 2009)\n");

    ManifestSources sources{tree.root(), "/scratch/runs", "KVMKVMKVM", "kvm", "none"};
    setDriverDescriptionProvider([] {
        return std::pair<std::string, std::string>{"NVIDIA 580.65", "CUDA 13"};
    });
    std::map<std::string, std::string> values;
    for (const auto& field : readSystemManifest(sources))
        values[field.key] = field.value;
    setDriverDescriptionProvider({});
    const std::map<std::string, std::string> expected = {
        {"kernel", "6.1.0-18-amd64"},
        {"kernelCommandLine", "BOOT_IMAGE=/vmlinuz mitigations=off quiet"},
        {"cpuMitigations", "meltdown: Not affected; spectre_v2: Mitigation: Retpolines"},
        {"microcode", "0xb4"},
        {"smt", "on"},
        {"transparentHugePages", "madvise"},
        {"cpuGovernor", "performance, powersave"},
        {"energyPreference", "balance_power"},
        {"gpuDriver", "NVIDIA 580.65"},
        {"openclDriver", "CUDA 13"},
        {"scratchFilesystem", "xfs on /scratch, rw,noatime"},
        {"virtualization", "kvm (CPUID: KVMKVMKVM; DMI: QEMU Standard PC (Q35 + ICH9, 2009))"}};
    for (const auto& [key, value] : expected)
        EXPECT_EQ(values.at(key), value) << key;
    EXPECT_FALSE(values.at("quarbelVersion").empty() || values.at("compiler").empty());
}

TEST(SystemManifest, NamesTheVirtualisationLayerFromAnyEvidenceAndBareMetalOtherwise) {
    const struct {
        const char *cpuid, *vendor, *product, *machine, *container, *expected;
    } cases[] = {
        {"", "Dell Inc.", "PowerEdge R750", "none", "none", "none (bare metal)"},
        {"", "Dell Inc.", "PowerEdge R750", "none", "docker", "none (bare metal), in a docker container"},
        {"KVMKVMKVM", "", "", "", "", "virtual machine (CPUID: KVMKVMKVM)"},
        {"", "Microsoft Corporation", "Virtual Machine", "", "",
         "likely virtual (DMI: Microsoft Corporation Virtual Machine)"},
        {"", "Microsoft Corporation", "Surface Laptop 5", "", "", "none (bare metal)"},
        {"Microsoft Hv", "Amazon EC2", "m6i.large", "microsoft", "",
         "microsoft (CPUID: Microsoft Hv; DMI: Amazon EC2 m6i.large)"}};
    for (const auto& c : cases)
        EXPECT_EQ(virtualizationText(c.cpuid, c.vendor, c.product, c.machine, c.container), c.expected);
}

TEST(SystemManifest, DifferencesListWhatChangedAndWhatItCanMove) {
    const SystemManifest a = {{"kernel", "Kernel", "6.1", "all"},
                              {"smt", "SMT", "on", "CPU"},
                              {"gpuDriver", "GPU driver (Vulkan)", "550", "GPU"}};
    const SystemManifest b = {{"smt", "SMT", "off", "CPU"}, {"kernel", "Kernel", "6.1", "all"}};
    EXPECT_EQ(manifestDifferences(a, b), (std::vector<ManifestDifference>{{"SMT", "on", "off", "CPU"}}))
        << "a field one report lacks is not a difference";
    EXPECT_TRUE(manifestDifferences(a, a).empty());
}

TEST(SystemManifest, TheMachineIsNamedByASaltedHashThatStaysTheSameAcrossVersions) {
    // Learned noise floors and comparisons match runs by this value: it must never drift.
    EXPECT_EQ(hashedMachineId("0123456789abcdef\n"), "4118f9125423037d");
    EXPECT_EQ(hashedMachineId("  \n"), "");
}
