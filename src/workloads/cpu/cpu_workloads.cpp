// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/cpu_workloads.h"

#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/parallel.h"
#include "workloads/cpu/raw_decode.h"
#include "workloads/cpu/tile_renderer.h"

namespace quarbel {

BenchmarkOutcome runSingleCoreProfile(const WorkloadContext& context) {
    return runCPUWorkloadProfile(1, BenchmarkID::cpuInteger, "Single-Core", context);
}

BenchmarkOutcome runMultiCoreProfile(const WorkloadContext& context) {
    return runCPUWorkloadProfile(cpu::multiCoreWorkerCount(), BenchmarkID::cpuFloating, "Multi-Core",
                                 context);
}

BenchmarkOutcome runCPUDeveloper(const WorkloadContext& context) {
    return cpu::runCPUDeveloper(cpu::multiCoreWorkerCount(), context);
}

BenchmarkOutcome runMemoryStream(const WorkloadContext& context) {
    return cpu::runMemoryStream(context, cpu::kStreamElements);
}

BenchmarkOutcome runCineTile(const WorkloadContext& context) {
    return cpu::runCineTile(context, cpu::kTileWidth, cpu::kTileHeight);
}

BenchmarkOutcome runRawCPUDecode(const WorkloadContext& context) {
    return cpu::runRawCPUDecode(context, cpu::kRawWidth, cpu::kRawHeight);
}

} // namespace quarbel
