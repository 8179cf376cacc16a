// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/vulkan_instance.h"

#include "workloads/gpu/device_selection.h"

#include <algorithm>
#include <string_view>

namespace quarbel::gpu::vulkan {

// The names in `wanted` that `available` lists, in the order of `wanted`.
std::vector<const char*> offered(const std::vector<VkExtensionProperties>& available,
                                 std::initializer_list<const char*> wanted) {
    std::vector<const char*> names;
    for (const char* name : wanted) {
        const bool found =
            std::any_of(available.begin(), available.end(), [&](const VkExtensionProperties& e) {
                return std::string_view(e.extensionName) == name;
            });
        if (found) names.push_back(name);
    }
    return names;
}

std::vector<VkExtensionProperties> instanceExtensions() {
    return listed<VkExtensionProperties>([](std::uint32_t* count, VkExtensionProperties* data) {
        return vkEnumerateInstanceExtensionProperties(nullptr, count, data);
    });
}

std::vector<VkExtensionProperties> deviceExtensions(VkPhysicalDevice device) {
    return listed<VkExtensionProperties>([device](std::uint32_t* count, VkExtensionProperties* data) {
        return vkEnumerateDeviceExtensionProperties(device, nullptr, count, data);
    });
}

// The surface extensions a window needs: the generic one plus whichever window systems the
// loader knows; empty when it offers no surfaces at all.
std::vector<const char*> surfaceExtensions() {
    std::vector<const char*> names =
        offered(instanceExtensions(),
                {"VK_KHR_surface", "VK_KHR_xcb_surface", "VK_KHR_xlib_surface", "VK_KHR_wayland_surface"});
    if (names.empty() || std::string_view(names.front()) != "VK_KHR_surface" || names.size() < 2) return {};
    return names;
}

VkInstance createInstance(const std::vector<const char*>& extensions) {
    VkApplicationInfo app{};
    app.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
    app.pApplicationName = "Quarbel";
    app.pEngineName = "Quarbel";
    app.apiVersion = VK_API_VERSION_1_1;
    VkInstanceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    info.pApplicationInfo = &app;
    info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
    info.ppEnabledExtensionNames = extensions.empty() ? nullptr : extensions.data();
    VkInstance instance = VK_NULL_HANDLE;
    if (vkCreateInstance(&info, nullptr, &instance) != VK_SUCCESS) return VK_NULL_HANDLE;
    return instance;
}

DeviceKind kindOf(VkPhysicalDeviceType type) {
    switch (type) {
    case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU: return DeviceKind::discrete;
    case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU: return DeviceKind::integrated;
    case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU: return DeviceKind::virtualGpu;
    case VK_PHYSICAL_DEVICE_TYPE_CPU: return DeviceKind::cpu;
    default: return DeviceKind::other;
    }
}

UsableDevices usableDevices(VkInstance instance) {
    UsableDevices usable;
    const auto all = listed<VkPhysicalDevice>([instance](std::uint32_t* count, VkPhysicalDevice* data) {
        return vkEnumeratePhysicalDevices(instance, count, data);
    });
    for (VkPhysicalDevice device : all) {
        VkPhysicalDeviceProperties properties{};
        vkGetPhysicalDeviceProperties(device, &properties);
        if (properties.apiVersion < VK_API_VERSION_1_1) continue;
        usable.handles.push_back(device);
        usable.candidates.push_back({properties.deviceName, kindOf(properties.deviceType)});
    }
    return usable;
}

VkPhysicalDevice chooseDefaultDevice(VkInstance instance, std::string& name) {
    const UsableDevices usable = usableDevices(instance);
    const auto chosen = chooseDevice(usable.candidates, deviceOverrideFromEnvironment()).index;
    if (!chosen) return VK_NULL_HANDLE;
    name = usable.candidates[*chosen].name;
    return usable.handles[*chosen];
}

} // namespace quarbel::gpu::vulkan
