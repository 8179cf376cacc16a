// SPDX-License-Identifier: Apache-2.0
// The Vulkan instance and device discovery that the context, the device name and the device
// inventory share. Internal to the GPU workloads.
#pragma once

#include "workloads/gpu/device_selection.h"

#include <vulkan/vulkan.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace quarbel::gpu::vulkan {

// What a Vulkan "count, then fill" call lists: `list(&count, nullptr)`, then
// `list(&count, data)`; empty when either call fails (VK_INCOMPLETE keeps what it gave).
template <typename T, typename List> std::vector<T> listed(List list) {
    std::uint32_t count = 0;
    if (list(&count, nullptr) != VK_SUCCESS) return {};
    std::vector<T> all(count);
    if (list(&count, all.data()) < 0) return {};
    all.resize(count);
    return all;
}

// The names in `wanted` that `available` lists, in the order of `wanted`.
std::vector<const char*> offered(const std::vector<VkExtensionProperties>& available,
                                 std::initializer_list<const char*> wanted);
std::vector<VkExtensionProperties> instanceExtensions();
std::vector<VkExtensionProperties> deviceExtensions(VkPhysicalDevice device);

// The surface extensions a window needs: the generic one plus whichever window systems the
// loader knows; empty when it offers no surfaces at all.
std::vector<const char*> surfaceExtensions();

// A Vulkan 1.1 instance with `extensions`; VK_NULL_HANDLE without a driver.
VkInstance createInstance(const std::vector<const char*>& extensions = {});

// Destroys the instance unless ownership was handed on.
struct InstanceGuard {
    VkInstance instance = VK_NULL_HANDLE;
    ~InstanceGuard() {
        if (instance != VK_NULL_HANDLE) vkDestroyInstance(instance, nullptr);
    }
    VkInstance release() { return std::exchange(instance, VK_NULL_HANDLE); }
};

DeviceKind kindOf(VkPhysicalDeviceType type);

// The devices that speak Vulkan 1.1 (subgroup queries need it), as the selection rule sees them.
struct UsableDevices {
    std::vector<VkPhysicalDevice> handles;
    std::vector<DeviceCandidate> candidates; // same order as handles
};
UsableDevices usableDevices(VkInstance instance);

// The device the benchmarks use (QUARBEL_GPU, else the preference order), with its name.
VkPhysicalDevice chooseDefaultDevice(VkInstance instance, std::string& name);

} // namespace quarbel::gpu::vulkan
