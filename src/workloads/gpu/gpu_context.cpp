// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_context.h"

#include "workloads/gpu/device_selection.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/gpu/vulkan_instance.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace quarbel::gpu {
namespace {

using namespace vulkan;

// A family with compute, preferring one that also renders.
std::optional<std::uint32_t> chooseQueueFamily(VkPhysicalDevice device, bool& graphics) {
    std::uint32_t count = 0;
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, nullptr);
    std::vector<VkQueueFamilyProperties> families(count);
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, families.data());
    std::optional<std::uint32_t> computeOnly;
    for (std::uint32_t i = 0; i < count; ++i) {
        const VkQueueFlags flags = families[i].queueFlags;
        if (families[i].queueCount == 0 || (flags & VK_QUEUE_COMPUTE_BIT) == 0) continue;
        if ((flags & VK_QUEUE_GRAPHICS_BIT) != 0) {
            graphics = true;
            return i;
        }
        if (!computeOnly) computeOnly = i;
    }
    graphics = false;
    return computeOnly;
}

} // namespace

std::optional<std::string> defaultDeviceName() {
    InstanceGuard guard{createInstance()};
    if (guard.instance == VK_NULL_HANDLE) return std::nullopt;
    std::string name;
    if (chooseDefaultDevice(guard.instance, name) == VK_NULL_HANDLE) return std::nullopt;
    return name;
}

std::optional<std::string> deviceSelectionWarning() {
    static const std::optional<std::string> warning = []() -> std::optional<std::string> {
        const std::string override = deviceOverrideFromEnvironment();
        if (override.empty()) return std::nullopt; // nothing to check, no need to load a driver
        InstanceGuard guard{createInstance()};
        const UsableDevices usable =
            guard.instance != VK_NULL_HANDLE ? usableDevices(guard.instance) : UsableDevices{};
        return chooseDevice(usable.candidates, override).warning;
    }();
    return warning;
}

std::unique_ptr<Context> Context::openDefault(ContextOptions options) {
    const std::vector<const char*> surfaces =
        options.presentation ? surfaceExtensions() : std::vector<const char*>{};
    InstanceGuard guard{createInstance(surfaces)};
    if (guard.instance == VK_NULL_HANDLE) return nullptr;
    std::string name;
    VkPhysicalDevice physical = chooseDefaultDevice(guard.instance, name);
    if (physical == VK_NULL_HANDLE) return nullptr;
    bool graphics = false;
    auto family = chooseQueueFamily(physical, graphics);
    if (!family) return nullptr;

    std::unique_ptr<Context> context(new Context());
    context->instance_ = guard.release();
    context->physicalDevice_ = physical;
    context->name_ = std::move(name);
    context->supportsGraphics_ = graphics;
    context->queueFamily_ = *family;
    const std::vector<const char*> swapchain =
        surfaces.empty() ? std::vector<const char*>{}
                         : offered(deviceExtensions(physical), {"VK_KHR_swapchain"});
    context->presentable_ = graphics && !swapchain.empty();

    VkPhysicalDeviceSubgroupProperties subgroup{};
    subgroup.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SUBGROUP_PROPERTIES;
    VkPhysicalDeviceProperties2 properties{};
    properties.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2;
    properties.pNext = &subgroup;
    vkGetPhysicalDeviceProperties2(physical, &properties);
    const VkPhysicalDeviceLimits& limits = properties.properties.limits;
    context->threadExecutionWidth_ = std::max<std::uint32_t>(subgroup.subgroupSize, 1);
    context->maxThreadsPerGroup_ = std::max<std::uint32_t>(
        std::min(limits.maxComputeWorkGroupInvocations, limits.maxComputeWorkGroupSize[0]), 1);
    context->maxGroupsPerDimension_ = std::max<std::uint32_t>(
        std::min(limits.maxComputeWorkGroupCount[0], limits.maxComputeWorkGroupCount[1]), 1);
    vkGetPhysicalDeviceMemoryProperties(physical, &context->memory_);
    const DeviceKind kind = kindOf(properties.properties.deviceType);
    context->unifiedMemory_ = kind == DeviceKind::integrated || kind == DeviceKind::cpu;
    std::uint32_t familyCount = 0;
    vkGetPhysicalDeviceQueueFamilyProperties(physical, &familyCount, nullptr);
    std::vector<VkQueueFamilyProperties> families(familyCount);
    vkGetPhysicalDeviceQueueFamilyProperties(physical, &familyCount, families.data());
    if (*family < familyCount && families[*family].timestampValidBits > 0 && limits.timestampPeriod > 0)
        context->timestampPeriod_ = limits.timestampPeriod;

    const float priority = 1.0f;
    VkDeviceQueueCreateInfo queueInfo{};
    queueInfo.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queueInfo.queueFamilyIndex = *family;
    queueInfo.queueCount = 1;
    queueInfo.pQueuePriorities = &priority;
    VkDeviceCreateInfo deviceInfo{};
    deviceInfo.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    deviceInfo.queueCreateInfoCount = 1;
    deviceInfo.pQueueCreateInfos = &queueInfo;
    deviceInfo.enabledExtensionCount = static_cast<std::uint32_t>(swapchain.size());
    deviceInfo.ppEnabledExtensionNames = swapchain.empty() ? nullptr : swapchain.data();
    if (vkCreateDevice(physical, &deviceInfo, nullptr, &context->device_) != VK_SUCCESS) return nullptr;
    vkGetDeviceQueue(context->device_, *family, 0, &context->queue_);

    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    poolInfo.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    poolInfo.queueFamilyIndex = *family;
    if (vkCreateCommandPool(context->device_, &poolInfo, nullptr, &context->commandPool_) != VK_SUCCESS)
        return nullptr;
    VkCommandBufferAllocateInfo allocateInfo{};
    allocateInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocateInfo.commandPool = context->commandPool_;
    allocateInfo.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocateInfo.commandBufferCount = 1;
    if (vkAllocateCommandBuffers(context->device_, &allocateInfo, &context->commandBuffer_) != VK_SUCCESS)
        return nullptr;
    VkFenceCreateInfo fenceInfo{};
    fenceInfo.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
    if (vkCreateFence(context->device_, &fenceInfo, nullptr, &context->fence_) != VK_SUCCESS) return nullptr;
    return context;
}

Context::~Context() {
    // A lost device may never finish: waiting for it, or destroying what it still uses,
    // could block this thread for good.
    if (lost_) return;
    if (device_ != VK_NULL_HANDLE) {
        vkDeviceWaitIdle(device_);
        if (fence_ != VK_NULL_HANDLE) vkDestroyFence(device_, fence_, nullptr);
        if (commandPool_ != VK_NULL_HANDLE) vkDestroyCommandPool(device_, commandPool_, nullptr);
        vkDestroyDevice(device_, nullptr);
    }
    if (instance_ != VK_NULL_HANDLE) vkDestroyInstance(instance_, nullptr);
}

std::optional<std::uint32_t> Context::findMemoryType(std::uint32_t typeBits,
                                                     VkMemoryPropertyFlags required) const noexcept {
    for (std::uint32_t i = 0; i < memory_.memoryTypeCount; ++i) {
        if ((typeBits & (1u << i)) != 0 && (memory_.memoryTypes[i].propertyFlags & required) == required)
            return i;
    }
    return std::nullopt;
}

VkResult Context::submitAndWait(const std::function<void(VkCommandBuffer)>& record) {
    if (lost_) return VK_ERROR_DEVICE_LOST;
    VkResult result = vkResetCommandBuffer(commandBuffer_, 0);
    if (result != VK_SUCCESS) return result;
    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    begin.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    result = vkBeginCommandBuffer(commandBuffer_, &begin);
    if (result != VK_SUCCESS) return result;
    record(commandBuffer_);
    result = vkEndCommandBuffer(commandBuffer_);
    if (result != VK_SUCCESS) return result;

    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commandBuffer_;
    result = vkQueueSubmit(queue_, 1, &submit, fence_);
    if (result != VK_SUCCESS) return result;
    // A driver that could not start its own threads (a tight address-space limit, say)
    // never signals the fence: wait a bounded time rather than hang the run.
    result = vkWaitForFences(device_, 1, &fence_, VK_TRUE,
                             static_cast<std::uint64_t>(kSubmissionTimeoutSeconds * 1e9));
    if (result == VK_TIMEOUT) {
        lost_ = true;
        return result;
    }
    const VkResult reset = vkResetFences(device_, 1, &fence_);
    return result != VK_SUCCESS ? result : reset;
}

} // namespace quarbel::gpu
