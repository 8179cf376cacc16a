// SPDX-License-Identifier: Apache-2.0
#include "sensors/system_snapshot.h"

#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

SystemSources sourcesIn(const FakeTree& tree, std::string architecture = "x86-64 (x86_64)") {
    return {tree.root(), std::move(architecture), "6.1.0-test"};
}

const char* const kIntelCpuinfo = "processor\t: 0\n"
                                  "vendor_id\t: GenuineIntel\n"
                                  "model name\t: Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  \n"
                                  "\n"
                                  "processor\t: 1\n"
                                  "model name\t: Some Other CPU\n";

const char* const kArm64Cpuinfo = "processor\t: 0\n"
                                  "BogoMIPS\t: 108.00\n"
                                  "CPU implementer\t: 0x41\n"
                                  "CPU architecture: 8\n"
                                  "CPU part\t: 0xd08\n"
                                  "\n"
                                  "Hardware\t: BCM2835\n";

} // namespace

TEST(SystemSnapshotCpuName, FirstModelNameKeepsItsTrailingBlanks) {
    FakeTree tree;
    tree.write("proc/cpuinfo", kIntelCpuinfo);
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(tree)), "Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  ");
}

TEST(SystemSnapshotCpuName, ArmCoresAreNamedFromTheirPartNumbers) {
    FakeTree arm64;
    arm64.write("proc/cpuinfo", kArm64Cpuinfo);
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(arm64, "Arm (arm64)")), "ARM Cortex-A72");

    FakeTree unknownPart;
    unknownPart.write("proc/cpuinfo", "CPU implementer\t: 0x41\nCPU part\t: 0xfff\nHardware\t: Some SoC\n");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(unknownPart, "Arm (arm64)")), "Some SoC");

    FakeTree arm32;
    arm32.write("proc/cpuinfo", "Processor\t: ARMv7 Processor rev 4 (v7l)\nprocessor\t: 0\n");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(arm32, "Arm (arm64)")), "ARMv7 Processor rev 4 (v7l)");
}

TEST(SystemSnapshotCpuName, FallsBackToTheHardwareModelThenUnknown) {
    FakeTree blankBrand; // the processor number line of x86 is not a brand
    blankBrand.write("proc/cpuinfo", "processor\t: 0\nmodel name\t:   \n");
    blankBrand.write("sys/devices/virtual/dmi/id/product_name", "Standard PC (Q35 + ICH9, 2009)\n");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(blankBrand)), "Standard PC (Q35 + ICH9, 2009)");

    FakeTree deviceTree;
    deviceTree.write("proc/device-tree/model", std::string("Raspberry Pi 4 Model B Rev 1.4\0", 31));
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(deviceTree, "Arm (arm64)")),
              "Raspberry Pi 4 Model B Rev 1.4");

    FakeTree nothing;
    nothing.write("proc/cpuinfo", "processor\t: 0\n");
    nothing.write("sys/devices/virtual/dmi/id/product_name", " \n");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(nothing)), "Unknown CPU");
}

TEST(SystemSnapshotCpuName, AppleSiliconBuildWithoutBrandNamesTheSoC) {
    FakeTree tree;
    tree.write("sys/devices/virtual/dmi/id/product_name", "Mac14,2\n");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(tree, "Apple Silicon (arm64)")), "Apple Silicon SoC");
    EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(tree, "x86-64 (x86_64)")), "Mac14,2");
}

TEST(SystemSnapshotSysctl, KnownNamesOnlyAndEmptyWhenMissing) {
    FakeTree tree;
    tree.write("proc/cpuinfo", kIntelCpuinfo);
    EXPECT_EQ(SystemSnapshot::sysctlString("machdep.cpu.brand_string", sourcesIn(tree)),
              "Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  ");
    EXPECT_EQ(SystemSnapshot::sysctlString("hw.model", sourcesIn(tree)), "");
    EXPECT_EQ(SystemSnapshot::sysctlString("kern.ostype", sourcesIn(tree)), "");
}

TEST(SystemSnapshotTexts, MemoryAndOperatingSystem) {
    EXPECT_EQ(SystemSnapshot::memoryText(17'179'869'184), "16.0 GB");
    EXPECT_EQ(SystemSnapshot::memoryText(8'000'000'000), "7.5 GB");
    EXPECT_EQ(SystemSnapshot::memoryText(0), "0.0 GB");

    FakeTree debian;
    debian.write("etc/os-release",
                 "NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n");
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(debian)),
              "Debian GNU/Linux 12 (bookworm), kernel 6.1.0-test");

    FakeTree usrLib; // the fallback location, unquoted and escaped values
    usrLib.write("usr/lib/os-release", "PRETTY_NAME=Arch\\ Linux\n");
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(usrLib)), "Arch Linux, kernel 6.1.0-test");

    FakeTree none;
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(none)), "Linux, kernel 6.1.0-test");
}

TEST(SystemSnapshotRows, SixLabelledRowsWithTheGpuFromItsProvider) {
    FakeTree tree;
    tree.write("proc/cpuinfo", kIntelCpuinfo);
    tree.write("etc/os-release", "PRETTY_NAME=\"Test OS 1\"\n");

    SystemSnapshot::setGpuNameProvider({});
    auto rows = SystemSnapshot::makeRows(sourcesIn(tree));
    ASSERT_EQ(rows.size(), 6u);
    const std::vector<std::string> labels = {"Architecture", "CPU",          "Cores",
                                             "Memory",       "GPU (Vulkan)", "Operating system"};
    for (size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i].label, labels[i]);
    EXPECT_EQ(rows[0].value, "x86-64 (x86_64)");
    EXPECT_EQ(rows[1].value, "Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  ");
    EXPECT_EQ(rows[2].value, SystemSnapshot::coreCountText());
    EXPECT_TRUE(rows[3].value.ends_with(" GB")) << rows[3].value;
    EXPECT_EQ(rows[4].value, "Unavailable");
    EXPECT_EQ(rows[5].value, "Test OS 1, kernel 6.1.0-test");

    SystemSnapshot::setGpuNameProvider([] { return std::string("llvmpipe (LLVM 15.0.6, 256 bits)"); });
    EXPECT_EQ(SystemSnapshot::makeRows(sourcesIn(tree))[4].value, "llvmpipe (LLVM 15.0.6, 256 bits)");
    SystemSnapshot::setGpuNameProvider([] { return std::string(" "); });
    EXPECT_EQ(SystemSnapshot::gpuName(), "Unavailable");
    SystemSnapshot::setGpuNameProvider({});
}

TEST(SystemSnapshotRows, BuiltOnceForAllThreads) {
    std::vector<const std::vector<SystemRow>*> seen(4, nullptr);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&seen, i] { seen[i] = &SystemSnapshot::rows(); });
    for (auto& thread : threads)
        thread.join();
    for (const auto* rows : seen)
        EXPECT_EQ(rows, seen[0]);
    ASSERT_EQ(seen[0]->size(), 6u);
    EXPECT_EQ((*seen[0])[0].value, buildArchitectureText());
#if defined(__x86_64__)
    EXPECT_EQ(buildArchitectureText(), "x86-64 (x86_64)");
#elif defined(__aarch64__)
    EXPECT_EQ(buildArchitectureText(), "Arm (arm64)");
#endif
}
