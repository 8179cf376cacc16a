// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/submission_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

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

std::uint32_t partsForNextSubmission(const SubmissionPlan& plan, double secondsPerPart,
                                     double remainingSeconds, std::uint32_t partsPerDispatch,
                                     std::uint32_t position) noexcept {
    partsPerDispatch = std::max<std::uint32_t>(partsPerDispatch, 1);
    const std::uint32_t toBoundary = partsPerDispatch - position % partsPerDispatch;
    const bool overBudget = !(remainingSeconds > 0);
    if (overBudget && toBoundary == partsPerDispatch) return 0;
    const std::uint64_t mostParts =
        std::uint64_t{std::max<std::uint32_t>(plan.maxDispatches, 1)} * partsPerDispatch;
    const SubmissionPlan inParts{plan.targetSeconds,
                                 static_cast<std::uint32_t>(std::min<std::uint64_t>(mostParts, UINT32_MAX))};
    // Past the budget the current dispatch is finished at the plan's pace.
    const std::uint32_t wanted = dispatchesForNextSubmission(
        inParts, secondsPerPart, overBudget ? toBoundary * secondsPerPart : remainingSeconds);
    if (overBudget || wanted <= toBoundary) return std::min(wanted, toBoundary);
    return toBoundary + (wanted - toBoundary) / partsPerDispatch * partsPerDispatch;
}

} // namespace quarbel::gpu
