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
    std::int64_t completed = 0; // dispatches the device finished
    double elapsed = 0;         // seconds from the first submission, at least 1e-6
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

// Dispatches `pipeline` over `grid` with `arguments` until `budget` seconds have passed or the
// run is cancelled; at least one dispatch is made. The first submission carries one dispatch,
// each later one as many as `plan` allows by the time the previous one took. Progress is
// reported after each submission, counted in `unit`. A submission the device refuses ends
// the loop like a missing command buffer: what completed still counts.
TimedDispatches dispatchUntilBudget(Context& gpu, const ComputePipeline& pipeline, const void* arguments,
                                    DispatchGrid grid, double budget, const WorkloadContext& context,
                                    const ProgressUnit& unit, const SubmissionPlan& plan = {});

} // namespace quarbel::gpu
