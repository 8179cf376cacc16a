// SPDX-License-Identifier: Apache-2.0
// Frames in flight: a ring of command buffers, each with the fence of its last submission.
// The host records the next frame while the device still renders the one before, and waits
// only when it comes back round to a slot whose frame the device has not finished yet.
#pragma once

#include "workloads/gpu/gpu_context.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quarbel::gpu {

class FrameRing {
  public:
    // Two frames: one recorded while one renders, which is all a single queue can overlap.
    static constexpr std::uint32_t kDefaultSlots = 2;

    // nullptr with the VkResult in `error` when the pool, its buffers or fences cannot be made.
    static std::unique_ptr<FrameRing> create(const Context& context, std::uint32_t slots, VkResult& error);
    // Waits for what is still in flight (bounded), then frees the ring.
    ~FrameRing();
    FrameRing(const FrameRing&) = delete;
    FrameRing& operator=(const FrameRing&) = delete;

    std::uint32_t slotCount() const noexcept { return static_cast<std::uint32_t>(slots_.size()); }
    // The slot that begin() prepares and submit() sends.
    std::uint32_t slot() const noexcept { return current_; }

    // Waits up to `timeoutNanoseconds` for the current slot's previous frame, then begins
    // recording its command buffer. VK_TIMEOUT when the device did not finish that frame.
    VkResult begin(std::uint64_t timeoutNanoseconds);
    VkCommandBuffer commands() const noexcept { return slots_[current_].commands; }

    // Ends the current slot's recording and submits it with the waits and signals in `submit`
    // (its command buffers are filled in here), then moves on to the next slot. Does not wait.
    VkResult submit(VkQueue queue, VkSubmitInfo submit);

    // Blocks until every submitted frame has finished; VK_TIMEOUT when one has not within
    // `timeoutNanoseconds`.
    VkResult drain(std::uint64_t timeoutNanoseconds);

  private:
    struct Slot {
        VkCommandBuffer commands = VK_NULL_HANDLE;
        VkFence fence = VK_NULL_HANDLE; // signalled whenever the slot holds no unfinished frame
    };

    FrameRing() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    std::vector<Slot> slots_;
    std::uint32_t current_ = 0;
    bool abandoned_ = false; // a frame never finished: the device may still hold the ring
};

} // namespace quarbel::gpu
