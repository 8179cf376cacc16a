// SPDX-License-Identifier: Apache-2.0
// The processor's layout: packages, physical cores, hardware threads, NUMA nodes and, on
// hybrid processors, the kinds of cores. Read through hwloc, limited to the CPUs this
// process may run on; when hwloc fails, counted from sysconf and /sys/devices/system/cpu.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel {

// The cores of one kind on a hybrid processor.
struct CoreKind {
    std::string name; // "P" and "E" for two ranked kinds, else "type 1", "type 2", ...
    int cores = 0;
    int threads = 0;
    bool operator==(const CoreKind&) const = default;
};

struct CpuTopology {
    int packages = 0;
    int cores = 0;
    int threads = 0;
    int numaNodes = 0;               // 0 when unknown
    std::vector<CoreKind> coreKinds; // fastest first; empty unless the cores differ
    bool operator==(const CpuTopology&) const = default;
};

// "8 cores (4 P + 4 E), 12 threads, 1 package, 1 NUMA node".
std::string topologyText(const CpuTopology& topology);

// The running system's topology, read once and kept for the life of the process.
const CpuTopology& systemCpuTopology();

// The topology of an hwloc XML export, or nothing when hwloc cannot load it.
std::optional<CpuTopology> cpuTopologyFromXml(std::string_view xml);

// Counted from <sysRoot>/devices/system/cpu and <sysRoot>/devices/system/node, for when
// hwloc is of no help; `onlineProcessors` stands in for CPUs without topology files.
CpuTopology cpuTopologyFromSysfs(const std::string& sysRoot, long onlineProcessors);

} // namespace quarbel
