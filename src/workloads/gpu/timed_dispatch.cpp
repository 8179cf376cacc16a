#include "workloads/gpu/timed_dispatch.h"

#include <algorithm>

namespace quarbel::gpu {

namespace {
constexpr double kMinimumElapsed = 1e-6;
}

TimedDispatches dispatchUntilBudget(Context& gpu, const ComputePipeline& pipeline, const void* arguments,
                                    DispatchGrid grid, double budget, const WorkloadContext& context,
                                    const ProgressUnit& unit) {
    TimedDispatches run;
    const double start = monotonicSeconds();
    for (;;) {
        const VkResult result = gpu.submitAndWait(
            [&](VkCommandBuffer commands) { pipeline.recordDispatch(commands, arguments, grid); });
        if (result != VK_SUCCESS) {
            run.deviceLost = result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST;
            break;
        }
        ++run.completed;
        const double elapsed = monotonicSeconds() - start;
        context.reportProgress(run.completed, elapsed, unit);
        if (elapsed >= budget) break;
        if (context.cancelled()) break;
    }
    run.elapsed = std::max(kMinimumElapsed, monotonicSeconds() - start);
    return run;
}

} // namespace quarbel::gpu
