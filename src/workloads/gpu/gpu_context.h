// SPDX-License-Identifier: Apache-2.0
// One opened Vulkan device: a queue, a command pool with one reusable command buffer and the
// device limits the workloads size their dispatches by. Internal to the GPU workloads and the
// scene window, which presents through the same instance and device.
#pragma once

#include <vulkan/vulkan.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quarbel::gpu {

// Not thread-safe: one thread at a time uses a context and everything created from it.
// Buffers and pipelines made from a context must be destroyed before it.
// What a context is opened for beyond compute and offscreen rendering.
struct ContextOptions {
    // Enables the window-system surface extensions the driver offers on the instance and the
    // swapchain extension on the device, so that a window can present what the device renders.
    bool presentation = false;
};

class Context {
  public:
    // Opens the system default device (first discrete, integrated, virtual, then CPU device;
    // QUARBEL_GPU overrides). nullptr when there is no Vulkan driver, no device, or the device
    // offers no compute queue.
    static std::unique_ptr<Context> openDefault(ContextOptions options = {});

    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    VkInstance instance() const noexcept { return instance_; }
    VkPhysicalDevice physicalDevice() const noexcept { return physicalDevice_; }
    VkDevice device() const noexcept { return device_; }
    VkQueue queue() const noexcept { return queue_; }
    std::uint32_t queueFamily() const noexcept { return queueFamily_; }
    // Whether the context was opened for presentation and the driver offered it.
    bool presentable() const noexcept { return presentable_; }
    const std::string& name() const noexcept { return name_; }
    // Whether the queue also runs render passes.
    bool supportsGraphics() const noexcept { return supportsGraphics_; }
    // Invocations that run in lockstep (the subgroup size), at least 1.
    std::uint32_t threadExecutionWidth() const noexcept { return threadExecutionWidth_; }
    // Most invocations in one workgroup along x.
    std::uint32_t maxThreadsPerGroup() const noexcept { return maxThreadsPerGroup_; }
    // Most workgroups in one dispatch along x (and y).
    std::uint32_t maxGroupsPerDimension() const noexcept { return maxGroupsPerDimension_; }
    // The CPU and the device share one memory (an integrated GPU or a CPU device): data the
    // kernels use can stay where the CPU wrote it. A discrete GPU reads its own memory.
    bool unifiedMemory() const noexcept { return unifiedMemory_; }
    // Nanoseconds per timestamp tick; 0 when the queue cannot write timestamps.
    double timestampPeriod() const noexcept { return timestampPeriod_; }

    // A memory type allowed by `typeBits` that has every flag of `required`.
    std::optional<std::uint32_t> findMemoryType(std::uint32_t typeBits,
                                                VkMemoryPropertyFlags required) const noexcept;

    // Records the commands through `record` into the context's one command buffer, submits it
    // and blocks until the device has finished it, so exactly one command buffer is ever in
    // flight. Returns the first failing VkResult, VK_SUCCESS when the work completed, and
    // VK_TIMEOUT when the device has not finished within kSubmissionTimeoutSeconds: the
    // context then counts as lost and refuses further work.
    VkResult submitAndWait(const std::function<void(VkCommandBuffer)>& record);

    // Far longer than any one submission of the workloads takes on a CPU device (about 6 s
    // for the largest); a device that needs more has stopped working.
    static constexpr double kSubmissionTimeoutSeconds = 60;

  private:
    Context() = default;

    VkInstance instance_ = VK_NULL_HANDLE;
    VkPhysicalDevice physicalDevice_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    VkQueue queue_ = VK_NULL_HANDLE;
    std::uint32_t queueFamily_ = 0;
    VkCommandPool commandPool_ = VK_NULL_HANDLE;
    VkCommandBuffer commandBuffer_ = VK_NULL_HANDLE;
    VkFence fence_ = VK_NULL_HANDLE;
    VkPhysicalDeviceMemoryProperties memory_{};
    std::string name_;
    bool supportsGraphics_ = false;
    bool presentable_ = false;
    // A submission outlived its timeout: the device may still hold the command buffer, so
    // nothing waits for it or destroys it any more (it is left to the process's end).
    bool lost_ = false;
    std::uint32_t threadExecutionWidth_ = 1;
    std::uint32_t maxThreadsPerGroup_ = 1;
    std::uint32_t maxGroupsPerDimension_ = 1;
    bool unifiedMemory_ = false;
    double timestampPeriod_ = 0;
};

} // namespace quarbel::gpu
