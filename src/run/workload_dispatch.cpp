// SPDX-License-Identifier: Apache-2.0
#include "run/workload_dispatch.h"

#include "workloads/cpu/cpu_workloads.h"
#include "workloads/gpu/gpu_workloads.h"
#include "workloads/storage/storage_workloads.h"

#include <array>
#include <string>

namespace quarbel {
namespace {

struct DispatchEntry {
    BenchmarkID id;
    WorkloadFunction run;
};

// Adding a workload means filling in its line here.
constexpr std::array<DispatchEntry, kBenchmarkCount> kDispatchTable = {{
    {BenchmarkID::cpuInteger, &runSingleCoreProfile},
    {BenchmarkID::cpuFloating, &runMultiCoreProfile},
    {BenchmarkID::cpuCrypto, &runCPUDeveloper},
    {BenchmarkID::memoryStream, &runMemoryStream},
    {BenchmarkID::cineTile, &runCineTile},
    {BenchmarkID::metalVisual, &runMetalVisual},
    {BenchmarkID::metalCompute, &runMetalCompute},
    {BenchmarkID::openCLCompute, &runOpenCLCompute},
    {BenchmarkID::rawCPUDecode, &runRawCPUDecode},
    {BenchmarkID::rawMetalDecode, &runRawMetalDecode},
    {BenchmarkID::ssdSequential, &runSSDSequential},
    {BenchmarkID::ssdRealSpeed, &runSSDRealSpeed},
    {BenchmarkID::ssdRandom, &runSSDRandom},
}};

constexpr bool tableFollowsCatalogue() {
    for (std::size_t i = 0; i < kDispatchTable.size(); ++i) {
        if (kDispatchTable[i].id != kAllBenchmarks[i]) return false;
    }
    return true;
}
static_assert(tableFollowsCatalogue(), "the dispatch table must list every benchmark in catalogue order");

} // namespace

WorkloadFunction workloadFunction(BenchmarkID id) { return kDispatchTable[indexOf(id)].run; }

BenchmarkOutcome runWorkload(BenchmarkID id, const WorkloadContext& context) {
    if (WorkloadFunction run = workloadFunction(id)) return run(context);
    return skippedOutcome(std::string(title(id)) + " is not available in this build.");
}

} // namespace quarbel
