#include "workloads/gpu/timed_dispatch.h"

#include "workloads/gpu/gpu_timer.h"

#include <algorithm>
#include <cmath>

namespace quarbel::gpu {

namespace {
constexpr double kMinimumElapsed = 1e-6;
}

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
    std::uint32_t batch = 1;
    const double start = monotonicSeconds();
    for (;;) {
        const double submitted = monotonicSeconds();
        const VkResult result = gpu.submitAndWait([&](VkCommandBuffer commands) {
            if (timer) timer->recordStart(commands);
            for (std::uint32_t i = 0; i < batch; ++i)
                pipeline.recordDispatch(commands, arguments, grid);
            if (timer) timer->recordEnd(commands);
        });
        if (result != VK_SUCCESS) {
            run.deviceLost = result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST;
            break;
        }
        const double finished = monotonicSeconds();
        run.completed += batch;
        run.mostPerSubmission = std::max(run.mostPerSubmission, batch);
        if (run.busySeconds) {
            const auto busy = timer->seconds();
            run.busySeconds = busy ? std::optional(*run.busySeconds + *busy) : std::nullopt;
        }
        const double elapsed = finished - start;
        context.reportProgress(run.completed, elapsed, unit);
        if (elapsed >= budget) break;
        if (context.cancelled()) break;
        batch = dispatchesForNextSubmission(plan, (finished - submitted) / batch, budget - elapsed);
    }
    run.elapsed = std::max(kMinimumElapsed, monotonicSeconds() - start);
    return run;
}

} // namespace quarbel::gpu
