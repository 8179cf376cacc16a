// One opened Vulkan device: a queue, a command pool with one reusable command buffer and the
// device limits the workloads size their dispatches by. Internal to the GPU workloads (and,
// later, the scene window).
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
class Context {
  public:
    // Opens the system default device (first discrete, integrated, virtual, then CPU device;
    // QUARBEL_GPU overrides). nullptr when there is no Vulkan driver, no device, or the device
    // offers no compute queue.
    static std::unique_ptr<Context> openDefault();

    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    VkDevice device() const noexcept { return device_; }
    const std::string& name() const noexcept { return name_; }
    // Whether the queue also runs render passes.
    bool supportsGraphics() const noexcept { return supportsGraphics_; }
    // Invocations that run in lockstep (the subgroup size), at least 1.
    std::uint32_t threadExecutionWidth() const noexcept { return threadExecutionWidth_; }
    // Most invocations in one workgroup along x.
    std::uint32_t maxThreadsPerGroup() const noexcept { return maxThreadsPerGroup_; }
    // Most workgroups in one dispatch along x (and y).
    std::uint32_t maxGroupsPerDimension() const noexcept { return maxGroupsPerDimension_; }

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
    VkCommandPool commandPool_ = VK_NULL_HANDLE;
    VkCommandBuffer commandBuffer_ = VK_NULL_HANDLE;
    VkFence fence_ = VK_NULL_HANDLE;
    VkPhysicalDeviceMemoryProperties memory_{};
    std::string name_;
    bool supportsGraphics_ = false;
    // A submission outlived its timeout: the device may still hold the command buffer, so
    // nothing waits for it or destroys it any more (it is left to the process's end).
    bool lost_ = false;
    std::uint32_t threadExecutionWidth_ = 1;
    std::uint32_t maxThreadsPerGroup_ = 1;
    std::uint32_t maxGroupsPerDimension_ = 1;
};

} // namespace quarbel::gpu
