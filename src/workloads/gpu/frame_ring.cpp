// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/frame_ring.h"

#include <algorithm>

namespace quarbel::gpu {
namespace {

constexpr std::uint64_t kTeardownTimeoutNanoseconds = 10'000'000'000;

} // namespace

std::unique_ptr<FrameRing> FrameRing::create(const Context& context, std::uint32_t slots, VkResult& error) {
    std::unique_ptr<FrameRing> ring(new FrameRing());
    ring->device_ = context.device();
    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    poolInfo.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    poolInfo.queueFamilyIndex = context.queueFamily();
    error = vkCreateCommandPool(ring->device_, &poolInfo, nullptr, &ring->pool_);
    if (error != VK_SUCCESS) return nullptr;

    ring->slots_.resize(std::max<std::uint32_t>(slots, 1));
    std::vector<VkCommandBuffer> buffers(ring->slots_.size());
    VkCommandBufferAllocateInfo allocateInfo{};
    allocateInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocateInfo.commandPool = ring->pool_;
    allocateInfo.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocateInfo.commandBufferCount = static_cast<std::uint32_t>(buffers.size());
    error = vkAllocateCommandBuffers(ring->device_, &allocateInfo, buffers.data());
    if (error != VK_SUCCESS) return nullptr;
    VkFenceCreateInfo fenceInfo{};
    fenceInfo.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
    fenceInfo.flags = VK_FENCE_CREATE_SIGNALED_BIT; // no frame yet, so nothing to wait for
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        ring->slots_[i].commands = buffers[i];
        error = vkCreateFence(ring->device_, &fenceInfo, nullptr, &ring->slots_[i].fence);
        if (error != VK_SUCCESS) return nullptr;
    }
    return ring;
}

FrameRing::~FrameRing() {
    if (device_ == VK_NULL_HANDLE) return;
    // A device that stopped answering may still hold a frame: leave the ring to the process's
    // end rather than free what it may still use.
    if (abandoned_ || drain(kTeardownTimeoutNanoseconds) != VK_SUCCESS) return;
    for (const Slot& slot : slots_)
        if (slot.fence != VK_NULL_HANDLE) vkDestroyFence(device_, slot.fence, nullptr);
    if (pool_ != VK_NULL_HANDLE) vkDestroyCommandPool(device_, pool_, nullptr);
}

VkResult FrameRing::begin(std::uint64_t timeoutNanoseconds) {
    Slot& slot = slots_[current_];
    VkResult result = vkWaitForFences(device_, 1, &slot.fence, VK_TRUE, timeoutNanoseconds);
    if (result == VK_TIMEOUT) abandoned_ = true;
    if (result != VK_SUCCESS) return result;
    result = vkResetCommandBuffer(slot.commands, 0);
    if (result != VK_SUCCESS) return result;
    VkCommandBufferBeginInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    return vkBeginCommandBuffer(slot.commands, &info);
}

VkResult FrameRing::submit(VkQueue queue, VkSubmitInfo submit) {
    Slot& slot = slots_[current_];
    VkResult result = vkEndCommandBuffer(slot.commands);
    if (result != VK_SUCCESS) return result;
    // Unsignalled only from here on, so that a frame that never reaches the queue cannot leave
    // a fence that nothing will signal.
    result = vkResetFences(device_, 1, &slot.fence);
    if (result != VK_SUCCESS) return result;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &slot.commands;
    result = vkQueueSubmit(queue, 1, &submit, slot.fence);
    if (result != VK_SUCCESS) {
        // Nothing was queued: an empty submission signals the fence again for the next round.
        VkSubmitInfo empty{};
        empty.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
        if (vkQueueSubmit(queue, 1, &empty, slot.fence) != VK_SUCCESS) abandoned_ = true;
        return result;
    }
    current_ = (current_ + 1) % slotCount();
    return VK_SUCCESS;
}

VkResult FrameRing::drain(std::uint64_t timeoutNanoseconds) {
    std::vector<VkFence> fences;
    for (const Slot& slot : slots_)
        fences.push_back(slot.fence);
    const VkResult result = vkWaitForFences(device_, static_cast<std::uint32_t>(fences.size()), fences.data(),
                                            VK_TRUE, timeoutNanoseconds);
    if (result == VK_TIMEOUT) abandoned_ = true;
    return result;
}

} // namespace quarbel::gpu
