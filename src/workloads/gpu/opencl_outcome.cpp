// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"
#include "workloads/gpu/opencl_compute.h"
#include "workloads/gpu/opencl_detail.h"

#include "model/number_format.h"

#include <algorithm>
#include <exception>

namespace quarbel {
namespace {

constexpr double kBudgetSeconds = 15.0;

} // namespace

BenchmarkOutcome openCLOutcome(const QLResult& result) {
    if (result.status != 0) return skippedOutcome("OpenCL is unavailable or no compatible device was found.");
    BenchmarkOutcome outcome;
    outcome.status = OutcomeStatus::ok;
    outcome.score = result.score;
    outcome.primary = {"Compute", format(result.gflops, 2), "GFLOPS"};
    outcome.secondary = MeasurementLine{"Device", result.gpu > 0 ? "GPU" : "CPU", ""};
    outcome.duration = result.seconds;
    outcome.detail = "Sustained OpenCL kernel with fast math for optional legacy compute coverage.";
    GpuExecution execution;
    execution.dispatchesPerSubmission = static_cast<std::uint32_t>(std::max(result.mostPerSubmission, 1));
    execution.groupSize = static_cast<std::uint32_t>(opencl::kLocalWorkSize);
    if (result.busyFraction >= 0) execution.busyFraction = result.busyFraction;
    outcome.gpu = execution;
    return outcome;
}

BenchmarkOutcome runOpenCLCompute(const WorkloadContext& context) { return runOpenCLCompute(context, {}); }

BenchmarkOutcome runOpenCLCompute(const WorkloadContext& context, const OpenCLComputeParameters& parameters) {
    // The entry point counts at least one element, as the unit does here.
    const double workPerDispatch = static_cast<double>(std::max<std::int32_t>(parameters.elementCount, 1)) *
                                   static_cast<double>(parameters.iterations);
    const double groupsPerDispatch =
        static_cast<double>(opencl::globalWorkSize(parameters.elementCount) / opencl::kLocalWorkSize);
    const ProgressUnit unit{"workgroups", "GFLOPS",
                            workPerDispatch * opencl::kOperationsPerElementIteration / 1e9 /
                                groupsPerDispatch};
    try {
        const QLResult result = opencl::runOpenCL(
            parameters.elementCount, parameters.iterations, context.budget(kBudgetSeconds),
            [&](std::int64_t workgroups, double elapsed) {
                context.reportProgress(workgroups, elapsed, unit);
                return !context.cancelled();
            },
            parameters.maxDispatchesPerSubmission, [&] { return context.cancelled(); });
        return openCLOutcome(result);
    } catch (const std::exception&) {
        // Only host allocations can throw here; the entry reports those as status -2.
        return openCLOutcome(QLResult(-2, 0, 0, 0, 0));
    }
}

} // namespace quarbel
