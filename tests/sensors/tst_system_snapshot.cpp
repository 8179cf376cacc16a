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

TEST(SystemSnapshotCpuName, FromCpuinfoArmPartsTheHardwareModelOrUnknown) {
    const std::string x86 = "x86-64 (x86_64)", arm = "Arm (arm64)";
    const struct {
        std::string architecture;
        std::vector<std::pair<std::string, std::string>> files;
        std::string name;
    } cases[] = {
        {x86, {{"proc/cpuinfo", kIntelCpuinfo}}, "Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  "},
        {arm, {{"proc/cpuinfo", kArm64Cpuinfo}}, "ARM Cortex-A72"},
        {arm,
         {{"proc/cpuinfo", "CPU implementer\t: 0x41\nCPU part\t: 0xfff\nHardware\t: Some SoC\n"}},
         "Some SoC"},
        {arm,
         {{"proc/cpuinfo", "Processor\t: ARMv7 Processor rev 4 (v7l)\nprocessor\t: 0\n"}},
         "ARMv7 Processor rev 4 (v7l)"},
        // The processor number line of x86 is not a brand.
        {x86,
         {{"proc/cpuinfo", "processor\t: 0\nmodel name\t:   \n"},
          {"sys/devices/virtual/dmi/id/product_name", "Standard PC (Q35 + ICH9, 2009)\n"}},
         "Standard PC (Q35 + ICH9, 2009)"},
        {arm,
         {{"proc/device-tree/model", std::string("Raspberry Pi 4 Model B Rev 1.4\0", 31)}},
         "Raspberry Pi 4 Model B Rev 1.4"},
        {x86,
         {{"proc/cpuinfo", "processor\t: 0\n"}, {"sys/devices/virtual/dmi/id/product_name", " \n"}},
         "Unknown CPU"},
        {"Apple Silicon (arm64)",
         {{"sys/devices/virtual/dmi/id/product_name", "Mac14,2\n"}},
         "Apple Silicon SoC"},
        {x86, {{"sys/devices/virtual/dmi/id/product_name", "Mac14,2\n"}}, "Mac14,2"},
    };
    for (const auto& c : cases) {
        FakeTree tree;
        for (const auto& [path, text] : c.files)
            tree.write(path, text);
        EXPECT_EQ(SystemSnapshot::cpuName(sourcesIn(tree, c.architecture)), c.name);
    }
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
