// How many dispatches one submission to a GPU queue carries, shared by the Vulkan and the
// OpenCL loops.
#pragma once

#include <cstdint>

namespace quarbel::gpu {

// How many dispatches one submission carries. A submission of one short dispatch leaves the
// device idle while the host waits, submits and records; a long one delays progress and Stop.
struct SubmissionPlan {
    double targetSeconds = 0.025;      // the wall time one submission should take
    std::uint32_t maxDispatches = 256; // at most this many in one submission (1: one at a time)
};

// The dispatches that make `targetSeconds`, judged by the seconds one dispatch took, never
// more than `maxDispatches` nor more than the `remainingSeconds` of the budget need; at least 1.
std::uint32_t dispatchesForNextSubmission(const SubmissionPlan& plan, double secondsPerDispatch,
                                          double remainingSeconds) noexcept;

} // namespace quarbel::gpu
