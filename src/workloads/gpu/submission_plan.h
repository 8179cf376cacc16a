// SPDX-License-Identifier: Apache-2.0
// How many dispatches one submission to a GPU queue carries, shared by the Vulkan and the
// OpenCL loops.
#pragma once

#include <cstdint>

namespace quarbel::gpu {

// How many dispatches one submission carries. A submission of one short dispatch leaves the
// device idle while the host waits, submits and records; a long one delays progress and Stop.
struct SubmissionPlan {
    // The wall time one submission should take: the host's turn between two costs a device
    // about 0.2 ms, under 0.3 % of it, and progress and Stop still come ten times a second.
    double targetSeconds = 0.1;
    std::uint32_t maxDispatches = 256; // at most this many in one submission (1: one at a time)
};

// The dispatches that make `targetSeconds`, judged by the seconds one dispatch took, never
// more than `maxDispatches` nor more than the `remainingSeconds` of the budget need; at least 1.
std::uint32_t dispatchesForNextSubmission(const SubmissionPlan& plan, double secondsPerDispatch,
                                          double remainingSeconds) noexcept;

// The same counted in parts of a dispatch cut into `partsPerDispatch`, `position` parts into the
// current one: a device that takes longer than the target for a whole dispatch gets it in parts
// (progress and Stop keep their pace), and a submission of more than what is left of the current
// dispatch ends on a dispatch boundary, so batches line up with whole dispatches. Past the budget
// (`remainingSeconds` <= 0) only what finishes the current dispatch is given, 0 at a boundary.
std::uint32_t partsForNextSubmission(const SubmissionPlan& plan, double secondsPerPart,
                                     double remainingSeconds, std::uint32_t partsPerDispatch,
                                     std::uint32_t position) noexcept;

} // namespace quarbel::gpu
