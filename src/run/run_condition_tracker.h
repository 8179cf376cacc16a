// SPDX-License-Identifier: Apache-2.0
// What made the current run less trustworthy, gathered as it goes: the machine as the run
// started, throttling seen by the thermal monitor, a benchmark that slowed down as it ran;
// and the badges the window shows for them.
#pragma once

#include "sensors/machine_condition.h"

#include <optional>
#include <string>
#include <vector>

namespace quarbel {

// What the machine was doing around the current (or last) run.
struct RunCondition {
    std::optional<MachineCondition> atStart; // read as the run started; absent until then
    std::vector<std::string> throttleSigns;  // seen by the thermal monitor while it ran
    std::vector<std::string> badges;         // "on battery", "powersave governor", "throttling seen", ...
    bool operator==(const RunCondition&) const = default;
};

class RunConditionTracker {
  public:
    // A new run: nothing seen yet.
    void reset() { *this = {}; }
    // Frequencies are compared within one benchmark only.
    void beginBenchmark() { watch_.beginBenchmark(); }

    void setAtStart(std::optional<MachineCondition> condition);
    // Returns the signs this sample added (each kind is noted once), to be logged.
    std::vector<std::string> observe(const ThrottleSample& sample);
    // A benchmark kept under its own pace: throttling, whatever the sensors say.
    void markUnstable();

    std::optional<double> frequencyDropPercent() const { return watch_.frequencyDropPercent(); }
    const RunCondition& condition() const { return condition_; }

  private:
    void updateBadges();

    RunCondition condition_;
    ThrottleWatch watch_;
    bool unstable_ = false;
};

} // namespace quarbel
