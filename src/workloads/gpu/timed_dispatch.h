// SPDX-License-Identifier: Apache-2.0
// The timed loop of the compute workloads: dispatches recorded in batches, one submission in
// flight, the clock and the stop request checked after each submission.
#pragma once

#include "model/workload_context.h"
#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/submission_plan.h"

#include <cstdint>
#include <optional>

namespace quarbel::gpu {

struct TimedDispatches {
    std::int64_t completed = 0;   // whole dispatches the device finished
    std::uint64_t groupsDone = 0; // workgroups finished, parts of a dispatch included
    double dispatches = 0;        // groupsDone in dispatches: the work the rate is made of
    double elapsed = 0;           // seconds from the first submission, at least 1e-6
    // Seconds the device spent on the submissions by its own timestamps; none when it
    // cannot write them.
    std::optional<double> busySeconds;
    std::uint32_t mostPerSubmission = 0;
    // The device stopped answering (a submission timed out or the device was lost): the
    // counts above cannot be trusted, and the benchmark fails.
    bool deviceLost = false;

    // Busy seconds over elapsed, at most 1.
    std::optional<double> busyFraction() const noexcept;
};

// Dispatches `pipeline` over `grid` with `arguments` until `budget` seconds have passed and the
// last dispatch is whole, or until the run is cancelled; at least one dispatch is made unless
// it is. The first submission carries a 64th of a dispatch (or one row or group when the grid
// has fewer), each later one as much as `plan` allows by the time the previous one took, in
// parts of a dispatch on a device too slow for a whole one per submission. Progress is
// reported after each submission in workgroups, rated in `unit` per dispatch. A submission the
// device refuses ends the loop like a missing command buffer: what completed still counts.
TimedDispatches dispatchUntilBudget(Context& gpu, const ComputePipeline& pipeline, const void* arguments,
                                    DispatchGrid grid, double budget, const WorkloadContext& context,
                                    const ProgressUnit& unit, const SubmissionPlan& plan = {});

} // namespace quarbel::gpu
