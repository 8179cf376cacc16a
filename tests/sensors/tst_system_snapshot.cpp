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

const char* const kIntelCpuinfo =
    "processor\t: 0\nvendor_id\t: GenuineIntel\nmodel name\t: Intel(R) Xeon(R) Gold "
    "6338 CPU @ 2.00GHz  \n\nprocessor\t: 1\nmodel name\t: Some Other CPU\n";
const char* const kIntelName = "Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz  ";

} // namespace

TEST(SystemSnapshotCpuName, FromCpuinfoArmPartsTheHardwareModelOrUnknown) {
    const std::string x86 = "x86-64 (x86_64)", arm = "Arm (arm64)",
                      dmi = "sys/devices/virtual/dmi/id/product_name";
    const struct {
        std::string architecture;
        std::vector<std::pair<std::string, std::string>> files;
        std::string name;
    } cases[] = {
        // clang-format off
        {x86, {{"proc/cpuinfo", kIntelCpuinfo}}, kIntelName},
        {arm, {{"proc/cpuinfo", "processor\t: 0\nCPU implementer\t: 0x41\nCPU part\t: 0xd08\n\nHardware\t: BCM2835\n"}},
         "ARM Cortex-A72"},
        {arm, {{"proc/cpuinfo", "CPU implementer\t: 0x41\nCPU part\t: 0xfff\nHardware\t: Some SoC\n"}}, "Some SoC"},
        {arm, {{"proc/cpuinfo", "Processor\t: ARMv7 Processor rev 4 (v7l)\nprocessor\t: 0\n"}},
         "ARMv7 Processor rev 4 (v7l)"},
        // The processor number line of x86 is not a brand.
        {x86, {{"proc/cpuinfo", "processor\t: 0\nmodel name\t:   \n"}, {dmi, "Standard PC (Q35 + ICH9, 2009)\n"}},
         "Standard PC (Q35 + ICH9, 2009)"},
        {arm, {{"proc/device-tree/model", std::string("Raspberry Pi 4 Model B Rev 1.4\0", 31)}},
         "Raspberry Pi 4 Model B Rev 1.4"},
        {x86, {{"proc/cpuinfo", "processor\t: 0\n"}, {dmi, " \n"}}, "Unknown CPU"},
        {"Apple Silicon (arm64)", {{dmi, "Mac14,2\n"}}, "Apple Silicon SoC"},
        {x86, {{dmi, "Mac14,2\n"}}, "Mac14,2"}};
    // clang-format on
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
    EXPECT_EQ(SystemSnapshot::sysctlString("machdep.cpu.brand_string", sourcesIn(tree)), kIntelName);
    EXPECT_EQ(SystemSnapshot::sysctlString("hw.model", sourcesIn(tree)), "");
    EXPECT_EQ(SystemSnapshot::sysctlString("kern.ostype", sourcesIn(tree)), "");
}

TEST(SystemSnapshotTexts, MemoryAndOperatingSystem) {
    EXPECT_EQ(SystemSnapshot::memoryText(17'179'869'184) + SystemSnapshot::memoryText(8'000'000'000) +
                  SystemSnapshot::memoryText(0),
              "16.0 GB7.5 GB0.0 GB");

    FakeTree tree;
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(tree)), "Linux, kernel 6.1.0-test");
    tree.write("usr/lib/os-release", "PRETTY_NAME=Arch\\ Linux\n"); // the fallback, unquoted and escaped
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(tree)), "Arch Linux, kernel 6.1.0-test");
    tree.write("etc/os-release",
               "NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n");
    EXPECT_EQ(SystemSnapshot::operatingSystemText(sourcesIn(tree)),
              "Debian GNU/Linux 12 (bookworm), kernel 6.1.0-test");
}

TEST(SystemSnapshotRows, SixLabelledRowsWithTheGpuFromItsProvider) {
    FakeTree tree;
    tree.write("proc/cpuinfo", kIntelCpuinfo);
    tree.write("etc/os-release", "PRETTY_NAME=\"Test OS 1\"\n");

    SystemSnapshot::setGpuNameProvider({});
    auto rows = SystemSnapshot::makeRows(sourcesIn(tree));
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_TRUE(rows[3].value.ends_with(" GB")) << rows[3].value;
    rows[3].value = "memory";
    EXPECT_EQ(rows, (std::vector<SystemRow>{{"Architecture", "x86-64 (x86_64)"},
                                            {"CPU", kIntelName},
                                            {"Cores", SystemSnapshot::coreCountText()},
                                            {"Memory", "memory"},
                                            {"GPU (Vulkan)", "Unavailable"},
                                            {"Operating system", "Test OS 1, kernel 6.1.0-test"}}));

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
    EXPECT_EQ(seen, decltype(seen)(4, seen[0]));
    ASSERT_EQ(seen[0]->size(), 6u);
    EXPECT_EQ((*seen[0])[0].value, buildArchitectureText());
#if defined(__x86_64__)
    EXPECT_EQ(buildArchitectureText(), "x86-64 (x86_64)");
#elif defined(__aarch64__)
    EXPECT_EQ(buildArchitectureText(), "Arm (arm64)");
#endif
}
