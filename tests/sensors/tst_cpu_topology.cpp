// SPDX-License-Identifier: Apache-2.0
#include "sensors/cpu_topology.h"

#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <tuple>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

std::string mask(unsigned bits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", bits);
    return text;
}

std::string object(const std::string& type, int index, unsigned cpus, unsigned nodes,
                   const std::string& inside = {}) {
    const std::string sets = "cpuset=\"" + mask(cpus) + "\" complete_cpuset=\"" + mask(cpus) +
                             "\" nodeset=\"" + mask(nodes) + "\" complete_nodeset=\"" + mask(nodes) + "\"";
    return "<object type=\"" + type + "\" os_index=\"" + std::to_string(index) + "\" " + sets +
           (inside.empty() ? "/>" : ">" + inside + "</object>");
}

using Kind = std::tuple<unsigned, int, const char*>; // CPUs, forced efficiency, core type

// An hwloc XML export of `packages` alike packages, each with `numaPerPackage` NUMA nodes
// and one core per entry of `coreThreads` (its thread count), plus the CPU kinds.
std::string xmlTopology(int packages, int numaPerPackage, const std::vector<int>& coreThreads,
                        const std::vector<Kind>& kinds = {}) {
    std::string machine;
    int pu = 0, core = 0, node = 0;
    unsigned allCpus = 0, allNodes = 0;
    for (int p = 0; p < packages; ++p) {
        const unsigned nodes = ((1u << numaPerPackage) - 1) << node;
        std::string cores;
        unsigned cpus = 0;
        for (const int threads : coreThreads) {
            std::string pus;
            unsigned coreCpus = 0;
            for (int t = 0; t < threads; ++t, ++pu) {
                pus += object("PU", pu, 1u << pu, nodes);
                coreCpus |= 1u << pu;
            }
            cores += object("Core", core++, coreCpus, nodes, pus);
            cpus |= coreCpus;
        }
        std::string memory;
        for (int n = 0; n < numaPerPackage; ++n, ++node)
            memory += object("NUMANode", node, cpus, 1u << node);
        machine += object("Package", p, cpus, nodes, memory + cores);
        allCpus |= cpus;
        allNodes |= nodes;
    }
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE topology SYSTEM \"hwloc2.dtd\">\n"
        "<topology version=\"2.0\">" +
        object("Machine", 0, allCpus, allNodes, machine);
    for (const auto& [cpus, efficiency, coreType] : kinds)
        xml += "<cpukind cpuset=\"" + mask(cpus) + "\" forced_efficiency=\"" + std::to_string(efficiency) +
               "\"><info name=\"CoreType\" value=\"" + coreType + "\"/></cpukind>";
    return xml + "</topology>";
}

} // namespace

TEST(CpuTopology, FromHwlocXml) {
    // Cores 0-3 have two threads each (PUs 0-7), cores 4-7 one (PUs 8-11).
    const std::vector<int> hybridCores = {2, 2, 2, 2, 1, 1, 1, 1};
    const struct {
        const char* name;
        std::string xml;
        CpuTopology expected;
        const char* text;
    } cases[] = {// clang-format off
        {"single package", xmlTopology(1, 1, {2, 2, 2, 2}), {1, 4, 8, 1, {}},
         "4 cores, 8 threads, 1 package, 1 NUMA node"},
        {"two packages with NUMA", xmlTopology(2, 2, {1, 1, 1}), {2, 6, 6, 4, {}},
         "6 cores, 6 threads, 2 packages, 4 NUMA nodes"},
        {"hybrid", xmlTopology(1, 1, hybridCores, {{0xf00, 0, "IntelAtom"}, {0x0ff, 1, "IntelCore"}}),
         {1, 8, 12, 1, {{"P", 4, 8}, {"E", 4, 4}}}, "8 cores (4 P + 4 E), 12 threads, 1 package, 1 NUMA node"},
        {"three kinds", xmlTopology(1, 1, {1, 1, 1, 1, 1, 1}, {{0x01, 0, "a"}, {0x38, 2, "b"}, {0x06, 1, "c"}}),
         {1, 6, 6, 1, {{"type 1", 3, 3}, {"type 2", 2, 2}, {"type 3", 1, 1}}},
         "6 cores (3 type 1 + 2 type 2 + 1 type 3), 6 threads, 1 package, 1 NUMA node"}};
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(cpuTopologyFromXml(c.xml), c.expected) << c.name;
        EXPECT_EQ(topologyText(cpuTopologyFromXml(c.xml).value_or(CpuTopology{})), c.text) << c.name;
    }
    EXPECT_FALSE(cpuTopologyFromXml("<topology").has_value());
}

TEST(CpuTopology, SysfsFallbackCountsDistinctCoresAndPackages) {
    // cpu1 is the sibling thread of cpu0, cpu2 has its core number on another package, cpu3 is offline.
    const FakeTree tree(
        "cpu/cpu0/topology/physical_package_id=0 cpu/cpu0/topology/core_id=0 "
        "cpu/cpu1/topology/physical_package_id=0 "
        "cpu/cpu1/topology/core_id=0 cpu/cpu1/online=1 cpu/cpu2/topology/physical_package_id=1 "
        "cpu/cpu2/topology/core_id=0 cpu/cpu3/topology/physical_package_id=1 cpu/cpu3/topology/core_id=1 "
        "cpu/cpu3/online=0 cpu/cpufreq/boost=1 node/node0/cpulist=0-1 node/node1/cpulist=2-3 "
        "node/possible=0-1",
        "devices/system/");
    EXPECT_EQ(cpuTopologyFromSysfs(tree.root(), 99), (CpuTopology{2, 2, 3, 2, {}}));

    FakeTree empty; // no topology files: every online processor is a core of one package
    EXPECT_EQ(topologyText(cpuTopologyFromSysfs(empty.root(), 1)), "1 core, 1 thread, 1 package");
}

TEST(CpuTopology, SystemTopologyIsConsistent) {
    const CpuTopology& t = systemCpuTopology();
    int kindCores = 0;
    for (const auto& kind : t.coreKinds)
        kindCores += kind.cores;
    EXPECT_TRUE(t.packages >= 1 && t.cores >= t.packages && t.threads >= t.cores &&
                (t.coreKinds.empty() || kindCores == t.cores))
        << topologyText(t);
}
