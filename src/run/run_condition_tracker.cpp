// SPDX-License-Identifier: Apache-2.0
#include "run/run_condition_tracker.h"

namespace quarbel {

void RunConditionTracker::setAtStart(std::optional<MachineCondition> condition) {
    condition_.atStart = std::move(condition);
    updateBadges();
}

std::vector<std::string> RunConditionTracker::observe(const ThrottleSample& sample) {
    const std::size_t before = watch_.signs().size();
    watch_.observe(sample);
    std::vector<std::string> added(watch_.signs().begin() + static_cast<std::ptrdiff_t>(before),
                                   watch_.signs().end());
    if (!added.empty()) {
        condition_.throttleSigns = watch_.signs();
        updateBadges();
    }
    return added;
}

void RunConditionTracker::markUnstable() {
    unstable_ = true;
    updateBadges();
}

void RunConditionTracker::updateBadges() {
    const bool throttling = unstable_ || !condition_.throttleSigns.empty();
    condition_.badges = conditionBadges(condition_.atStart.value_or(MachineCondition{}), throttling);
}

} // namespace quarbel
