#include "workloads/gpu/submission_plan.h"

#include <algorithm>
#include <cmath>

namespace quarbel::gpu {

std::uint32_t dispatchesForNextSubmission(const SubmissionPlan& plan, double secondsPerDispatch,
                                          double remainingSeconds) noexcept {
    const double most = std::max<double>(plan.maxDispatches, 1);
    if (!(secondsPerDispatch > 0)) return static_cast<std::uint32_t>(most);
    // Enough to reach the budget, so that the last submission overruns it by little.
    const double toFinish = std::ceil(std::max(remainingSeconds, 0.0) / secondsPerDispatch);
    const double count = std::min({std::floor(plan.targetSeconds / secondsPerDispatch), toFinish, most});
    return static_cast<std::uint32_t>(std::max(count, 1.0));
}

} // namespace quarbel::gpu
