// SPDX-License-Identifier: Apache-2.0
// Times the commands of one submission on the device itself, with a timestamp before the
// first and after the last, so that a benchmark can tell how busy it kept the GPU.
#pragma once

#include "workloads/gpu/gpu_context.h"

#include <memory>
#include <optional>

namespace quarbel::gpu {

// Destroy it before its context; same thread rules as the context.
class GpuTimer {
  public:
    // nullptr when the context's queue cannot write timestamps.
    static std::unique_ptr<GpuTimer> create(const Context& context);
    ~GpuTimer();
    GpuTimer(const GpuTimer&) = delete;
    GpuTimer& operator=(const GpuTimer&) = delete;

    // Record these around the commands to time, in one command buffer.
    void recordStart(VkCommandBuffer commands) const;
    void recordEnd(VkCommandBuffer commands) const;
    // Seconds between the two, once the submission has completed; none if the device gave
    // no result.
    std::optional<double> seconds() const;

  private:
    GpuTimer() = default;
    VkDevice device_ = VK_NULL_HANDLE;
    VkQueryPool pool_ = VK_NULL_HANDLE;
    double period_ = 0; // nanoseconds per tick
};

} // namespace quarbel::gpu
