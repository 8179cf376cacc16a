// The timed loop of the compute workloads: one dispatch in flight, the clock and the stop
// request checked after each one.
#pragma once

#include "model/workload_context.h"
#include "workloads/gpu/compute_pipeline.h"

#include <cstdint>
#include <string_view>

namespace quarbel::gpu {

struct TimedDispatches {
    std::int64_t completed = 0; // dispatches the device finished
    double elapsed = 0;         // seconds from the first submission, at least 1e-6
    // The device stopped answering (a submission timed out or the device was lost): the
    // counts above cannot be trusted, and the benchmark fails.
    bool deviceLost = false;
};

// Dispatches `pipeline` over `grid` with `arguments`, waiting for each dispatch, until
// `budget` seconds have passed or the run is cancelled; at least one dispatch is tried.
// Progress is reported after each completed dispatch, counted in `unit`. A submission the
// device refuses ends the loop like a missing command buffer: what completed still counts.
TimedDispatches dispatchUntilBudget(Context& gpu, const ComputePipeline& pipeline, const void* arguments,
                                    DispatchGrid grid, double budget, const WorkloadContext& context,
                                    const ProgressUnit& unit);

} // namespace quarbel::gpu
