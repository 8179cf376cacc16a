// SPDX-License-Identifier: Apache-2.0
#include "sensors/cpu_topology.h"

#include "sensors/sysfs_text.h"

#include <algorithm>
#include <climits>
#include <hwloc.h>
#include <memory>
#include <set>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace quarbel {
namespace {

struct TopologyDeleter {
    void operator()(hwloc_topology* topology) const { hwloc_topology_destroy(topology); }
};
using TopologyPointer = std::unique_ptr<hwloc_topology, TopologyDeleter>;

struct BitmapDeleter {
    void operator()(hwloc_bitmap_s* bitmap) const { hwloc_bitmap_free(bitmap); }
};
using BitmapPointer = std::unique_ptr<hwloc_bitmap_s, BitmapDeleter>;

// hwloc objects are only valid while their topology lives; everything is counted before
// it is destroyed.
TopologyPointer newTopology() {
    hwloc_topology_t topology = nullptr;
    if (hwloc_topology_init(&topology) != 0) return nullptr;
    return TopologyPointer(topology);
}

int objectCount(hwloc_topology_t topology, hwloc_obj_type_t type) {
    return std::max(0, hwloc_get_nbobjs_by_type(topology, type));
}

// The kinds of cores, fastest first. hwloc ranks kinds by the efficiency the system reports,
// else by core types and frequencies; when it cannot, the kinds keep hwloc's order and get
// neutral names.
std::vector<CoreKind> coreKindsOf(hwloc_topology_t topology) {
    const int kindCount = hwloc_cpukinds_get_nr(topology, 0);
    if (kindCount < 2) return {};
    struct Ranked {
        int efficiency; // higher is faster; -1 when unranked
        CoreKind kind;
    };
    std::vector<Ranked> kinds;
    const BitmapPointer cpus(hwloc_bitmap_alloc());
    if (!cpus) return {};
    for (int index = 0; index < kindCount; ++index) {
        int efficiency = -1;
        if (hwloc_cpukinds_get_info(topology, static_cast<unsigned>(index), cpus.get(), &efficiency, nullptr,
                                    nullptr, 0) != 0)
            return {};
        hwloc_bitmap_and(cpus.get(), cpus.get(), hwloc_topology_get_topology_cpuset(topology));
        CoreKind kind;
        kind.threads = std::max(0, hwloc_bitmap_weight(cpus.get()));
        for (hwloc_obj_t core = hwloc_get_next_obj_by_type(topology, HWLOC_OBJ_CORE, nullptr);
             core != nullptr; core = hwloc_get_next_obj_by_type(topology, HWLOC_OBJ_CORE, core))
            if (hwloc_bitmap_intersects(core->cpuset, cpus.get())) ++kind.cores;
        if (kind.threads > 0) kinds.push_back({efficiency, std::move(kind)});
    }
    if (kinds.size() < 2) return {};

    const bool ranked =
        std::all_of(kinds.begin(), kinds.end(), [](const Ranked& k) { return k.efficiency >= 0; });
    if (ranked)
        std::stable_sort(kinds.begin(), kinds.end(),
                         [](const Ranked& a, const Ranked& b) { return a.efficiency > b.efficiency; });
    std::vector<CoreKind> result;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        CoreKind kind = std::move(kinds[i].kind);
        kind.name = ranked && kinds.size() == 2 ? (i == 0 ? "P" : "E") : "type " + std::to_string(i + 1);
        result.push_back(std::move(kind));
    }
    return result;
}

std::optional<CpuTopology> describe(hwloc_topology_t topology) {
    CpuTopology result;
    result.threads = objectCount(topology, HWLOC_OBJ_PU);
    if (result.threads == 0) return std::nullopt;
    // Some virtual machines and architectures expose no cores or packages: each thread
    // is then taken for a core, the whole for one package.
    result.cores = objectCount(topology, HWLOC_OBJ_CORE);
    if (result.cores == 0) result.cores = result.threads;
    result.packages = std::max(1, objectCount(topology, HWLOC_OBJ_PACKAGE));
    result.numaNodes = objectCount(topology, HWLOC_OBJ_NUMANODE);
    result.coreKinds = coreKindsOf(topology);
    return result;
}

std::optional<CpuTopology> loadedTopology(const TopologyPointer& topology) {
    if (!topology || hwloc_topology_load(topology.get()) != 0) return std::nullopt;
    return describe(topology.get());
}

std::string counted(int count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

// "cpu12" for prefix "cpu", not "cpufreq"; "node1" for prefix "node".
bool isNumbered(std::string_view name, std::string_view prefix) {
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::string topologyText(const CpuTopology& topology) {
    std::string text = counted(topology.cores, "core", "cores");
    if (!topology.coreKinds.empty()) {
        text += " (";
        for (std::size_t i = 0; i < topology.coreKinds.size(); ++i) {
            if (i > 0) text += " + ";
            text += std::to_string(topology.coreKinds[i].cores) + " " + topology.coreKinds[i].name;
        }
        text += ")";
    }
    text += ", " + counted(topology.threads, "thread", "threads");
    text += ", " + counted(topology.packages, "package", "packages");
    if (topology.numaNodes > 0) text += ", " + counted(topology.numaNodes, "NUMA node", "NUMA nodes");
    return text;
}

std::optional<CpuTopology> cpuTopologyFromXml(std::string_view xml) {
    if (xml.size() >= static_cast<std::size_t>(INT_MAX)) return std::nullopt;
    const std::string buffer(xml); // hwloc wants the length with the closing zero byte
    const TopologyPointer topology = newTopology();
    if (!topology || hwloc_topology_set_xmlbuffer(topology.get(), buffer.c_str(),
                                                  static_cast<int>(buffer.size() + 1)) != 0)
        return std::nullopt;
    return loadedTopology(topology);
}

CpuTopology cpuTopologyFromSysfs(const std::string& sysRoot, long onlineProcessors) {
    const std::string root = sysRoot + "/devices/system/cpu";
    std::set<long long> packages;
    std::set<std::tuple<long long, long long, long long>> cores; // package, die, core
    int threads = 0;
    for (const auto& name : sysfs::directoryEntries(root)) {
        if (!isNumbered(name, "cpu") || sysfs::readLine(root + "/" + name + "/online") == "0") continue;
        const std::string folder = root + "/" + name + "/topology/";
        const auto package = sysfs::parseInteger(sysfs::readLine(folder + "physical_package_id"));
        const auto core = sysfs::parseInteger(sysfs::readLine(folder + "core_id"));
        if (!package || !core) continue;
        const auto die = sysfs::parseInteger(sysfs::readLine(folder + "die_id")).value_or(0);
        ++threads;
        packages.insert(*package);
        cores.insert({*package, die, *core});
    }
    CpuTopology topology;
    if (threads == 0) {
        topology.threads = static_cast<int>(std::clamp(onlineProcessors, 1L, static_cast<long>(INT_MAX)));
        topology.cores = topology.threads;
        topology.packages = 1;
    } else {
        topology.threads = threads;
        topology.cores = static_cast<int>(cores.size());
        topology.packages = static_cast<int>(packages.size());
    }
    const auto nodes = sysfs::directoryEntries(sysRoot + "/devices/system/node");
    topology.numaNodes = static_cast<int>(std::count_if(
        nodes.begin(), nodes.end(), [](const std::string& name) { return isNumbered(name, "node"); }));
    return topology;
}

const CpuTopology& systemCpuTopology() {
    static const CpuTopology topology = [] {
        if (auto fromHwloc = loadedTopology(newTopology())) return *std::move(fromHwloc);
        long online = ::sysconf(_SC_NPROCESSORS_ONLN);
        if (online < 1) online = static_cast<long>(std::thread::hardware_concurrency());
        return cpuTopologyFromSysfs("/sys", online);
    }();
    return topology;
}

} // namespace quarbel
