// SPDX-License-Identifier: Apache-2.0
// The measuring loop shared by the CPU workloads: repeat a unit of work until the time
// budget is spent or the run is cancelled, reporting progress after each unit.
#pragma once

#include "model/workload_context.h"
#include "workloads/cpu/unit_of_work.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace quarbel::cpu {

struct TimedLoopResult {
    double startSeconds = 0;   // monotonic clock when timing began
    double elapsedSeconds = 0; // measured time of the whole loop, at least 0.000001 s
};

// Calls unit() at least once. unit() does one unit of work and returns the progress
// count to report (units of `progressUnit` done so far); each call starts with
// beginUnitOfWork(). The time limit is checked after
// each unit and only then the cancellation flag, so the last unit always completes.
template <class Unit>
TimedLoopResult repeatUntilBudget(const WorkloadContext& context, double budgetSeconds,
                                  const ProgressUnit& progressUnit, Unit&& unit) {
    const double start = monotonicSeconds();
    for (;;) {
        beginUnitOfWork();
        const std::int64_t done = unit();
        const double sinceStart = monotonicSeconds() - start;
        context.reportProgress(done, sinceStart, progressUnit);
        if (sinceStart >= budgetSeconds) break;
        if (context.cancelled()) break;
    }
    return {start, std::max(monotonicSeconds() - start, 0.000001)};
}

} // namespace quarbel::cpu
