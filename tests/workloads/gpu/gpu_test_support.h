// SPDX-License-Identifier: Apache-2.0
// Shared pieces of the GPU workload tests.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace quarbel::testing {

// Records every progress report and cancels the run once `cancelAfter` units are done, which
// pins a budget-driven loop to an exact number of units.
class CancellingProgress : public ProgressSink {
  public:
    explicit CancellingProgress(std::int64_t cancelAfter) : cancelAfter_(cancelAfter) {}

    void report(const ProgressReport& progress) noexcept override {
        std::lock_guard lock(mutex_);
        units.push_back(progress.unitsDone);
        unitName = std::string(progress.unit.name);
        unit = progress.unit;
        if (progress.unitsDone >= cancelAfter_) token.cancel();
    }

    WorkloadContext context() {
        WorkloadContext context;
        context.cancellation = &token;
        context.progress = this;
        context.budgetSeconds = 60.0; // the cancellation, not the clock, ends these runs
        return context;
    }

    CancellationToken token;
    std::vector<std::int64_t> units;
    std::string unitName;
    ProgressUnit unit; // of the last report

  private:
    std::int64_t cancelAfter_;
    std::mutex mutex_;
};

// The first decimal number after `marker` in `text`.
inline std::optional<double> numberAfter(const std::string& text, const std::string& marker) {
    std::smatch match;
    const std::regex pattern(marker + R"(\s*(-?[0-9]+(\.[0-9]+)?))");
    if (!std::regex_search(text, match, pattern)) return std::nullopt;
    return std::stod(match[1].str());
}

} // namespace quarbel::testing
