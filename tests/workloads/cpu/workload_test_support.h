// SPDX-License-Identifier: Apache-2.0
// A context for driving a workload to an exact number of units: it records every
// progress report and cancels the run once the wanted number of units has been reported.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quarbel::testing {

class StopAfterReports final : public ProgressSink {
  public:
    explicit StopAfterReports(std::size_t stopAfter, double budgetSeconds = 60.0)
        : stopAfter_(stopAfter), budgetSeconds_(budgetSeconds) {}

    void report(const ProgressReport& progress) noexcept override {
        reports.push_back({progress.unitsDone, progress.elapsedSeconds, progress.unit});
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
};

// The measured rate an ok outcome's score was computed from, given its score factor.
inline double rateBehind(const BenchmarkOutcome& outcome, double scoreFactor) {
    return outcome.score / scoreFactor;
}

// The live rate of the units a report counted, over the outcome's measured time, is the
// outcome's primary value in the same unit: the window shows what the result will say.
inline void expectLiveRateReadsAsPrimary(const StopAfterReports::Report& report,
                                         const BenchmarkOutcome& outcome) {
    const auto rate = liveRate(report.unitsDone, outcome.duration, report.unit);
    ASSERT_TRUE(rate.has_value());
    EXPECT_EQ(rate->unit, outcome.primary.unit);
    EXPECT_NEAR(rate->value, std::stod(outcome.primary.value), 0.051 + rate->value * 1e-6);
}

} // namespace quarbel::testing
