// SPDX-License-Identifier: Apache-2.0
// A context for driving a workload to an exact number of units: it records every
// progress report and cancels the run once the wanted number of units has been reported.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <vector>

namespace quarbel::testing {

class StopAfterReports final : public ProgressSink {
  public:
    // `afterEachReport`, when set, runs on the workload's thread after each report.
    explicit StopAfterReports(std::size_t stopAfter, double budgetSeconds = 60.0,
                              void (*afterEachReport)() = nullptr)
        : stopAfter_(stopAfter), budgetSeconds_(budgetSeconds), afterEachReport_(afterEachReport) {}

    void report(const ProgressReport& progress) noexcept override {
        reports.push_back({progress.unitsDone, progress.elapsedSeconds, progress.unit});
        if (afterEachReport_) afterEachReport_();
        if (reports.size() >= stopAfter_) token_.cancel();
    }

    WorkloadContext context() { return {&token_, this, budgetSeconds_, 1.0}; }

    struct Report {
        std::int64_t unitsDone;
        double elapsedSeconds;
        ProgressUnit unit;
    };
    std::vector<Report> reports;

  private:
    CancellationToken token_;
    std::size_t stopAfter_;
    double budgetSeconds_;
    void (*afterEachReport_)();
};

} // namespace quarbel::testing
