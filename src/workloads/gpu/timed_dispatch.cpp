// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/timed_dispatch.h"

#include "workloads/gpu/gpu_timer.h"

#include <algorithm>
#include <cmath>

namespace quarbel::gpu {

namespace {
constexpr double kMinimumElapsed = 1e-6;
// A dispatch is cut into at most this many parts when it is too long for one submission.
constexpr std::uint32_t kPartsPerDispatch = 64;
} // namespace

std::optional<double> TimedDispatches::busyFraction() const noexcept {
    if (!busySeconds) return std::nullopt;
    return std::min(*busySeconds / std::max(elapsed, kMinimumElapsed), 1.0);
}

TimedDispatches dispatchUntilBudget(Context& gpu, const ComputePipeline& pipeline, const void* arguments,
                                    DispatchGrid grid, double budget, const WorkloadContext& context,
                                    const ProgressUnit& unit, const SubmissionPlan& plan) {
    TimedDispatches run;
    const auto timer = GpuTimer::create(gpu);
    if (timer) run.busySeconds = 0.0;
    const std::uint32_t parts = partsAvailable(grid, kPartsPerDispatch);
    const std::uint64_t groupsPerDispatch = groupCount(grid);
    const ProgressUnit groupUnit{"workgroups", unit.rateUnit,
                                 unit.ratePerUnitPerSecond / static_cast<double>(groupsPerDispatch)};
    std::uint64_t partsDone = 0;
    // The first submission is one part: it shows how long the device takes without holding up
    // the first progress on a slow one.
    std::uint32_t batch = 1;
    const double start = monotonicSeconds();
    for (;;) {
        const double submitted = monotonicSeconds();
        const VkResult result = gpu.submitAndWait([&](VkCommandBuffer commands) {
            if (timer) timer->recordStart(commands);
            std::uint32_t position = static_cast<std::uint32_t>(partsDone % parts);
            for (std::uint32_t left = batch; left > 0;) {
                const std::uint32_t take = std::min(left, parts - position);
                if (take == parts)
                    pipeline.recordDispatch(commands, arguments, grid);
                else
                    pipeline.recordDispatch(commands, arguments,
                                            gridPart(grid, parts, position, position + take));
                left -= take;
                position = (position + take) % parts;
            }
            if (timer) timer->recordEnd(commands);
        });
        if (result != VK_SUCCESS) {
            run.deviceLost = result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST;
            break;
        }
        const double finished = monotonicSeconds();
        partsDone += batch;
        run.completed = static_cast<std::int64_t>(partsDone / parts);
        run.groupsDone =
            run.completed * groupsPerDispatch +
            groupCount(gridPart(grid, parts, 0, static_cast<std::uint32_t>(partsDone % parts)).groups);
        run.mostPerSubmission = std::max(run.mostPerSubmission, std::max<std::uint32_t>(batch / parts, 1));
        if (run.busySeconds) {
            const auto busy = timer->seconds();
            run.busySeconds = busy ? std::optional(*run.busySeconds + *busy) : std::nullopt;
        }
        const double elapsed = finished - start;
        context.reportProgress(static_cast<std::int64_t>(run.groupsDone), elapsed, groupUnit);
        if (context.cancelled()) break;
        batch = partsForNextSubmission(plan, (finished - submitted) / batch, budget - elapsed, parts,
                                       static_cast<std::uint32_t>(partsDone % parts));
        if (batch == 0) break;
    }
    run.dispatches = static_cast<double>(run.groupsDone) / static_cast<double>(groupsPerDispatch);
    run.elapsed = std::max(kMinimumElapsed, monotonicSeconds() - start);
    return run;
}

} // namespace quarbel::gpu
