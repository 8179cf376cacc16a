// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/device_inventory.h"

#include "workloads/gpu/device_selection.h"
#include "workloads/gpu/opencl_compute.h"
#include "workloads/gpu/opencl_detail.h"
#include "workloads/gpu/vulkan_instance.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

namespace quarbel::gpu {
namespace {

std::string typeText(DeviceKind kind) {
    switch (kind) {
    case DeviceKind::discrete: return "discrete GPU";
    case DeviceKind::integrated: return "integrated GPU";
    case DeviceKind::virtualGpu: return "virtual GPU";
    case DeviceKind::cpu: return "CPU";
    case DeviceKind::other: break;
    }
    return "other";
}

std::string vendorText(std::uint32_t id) {
    switch (id) {
    case 0x10DE: return "NVIDIA";
    case 0x1002: return "AMD";
    case 0x8086: return "Intel";
    case 0x13B5: return "Arm";
    case 0x5143: return "Qualcomm";
    case 0x106B: return "Apple";
    case 0x10005: return "Mesa";
    default: break;
    }
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", id);
    return text;
}

std::string versionText(std::uint32_t version) {
    return std::to_string(VK_API_VERSION_MAJOR(version)) + "." +
           std::to_string(VK_API_VERSION_MINOR(version)) + "." +
           std::to_string(VK_API_VERSION_PATCH(version));
}

// The driver's own version numbering where the driver gives no text: NVIDIA packs it its
// own way, everyone else as Vulkan versions.
std::string driverVersionText(std::uint32_t vendor, std::uint32_t version) {
    if (vendor == 0x10DE)
        return std::to_string((version >> 22) & 0x3FF) + "." + std::to_string((version >> 14) & 0xFF) + "." +
               std::to_string((version >> 6) & 0xFF);
    return versionText(version);
}

bool hasExtension(VkPhysicalDevice device, const char* name) {
    return !vulkan::offered(vulkan::deviceExtensions(device), {name}).empty();
}

VulkanDeviceInfo describe(VkPhysicalDevice device, std::size_t index) {
    VkPhysicalDeviceIDProperties ids{};
    ids.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ID_PROPERTIES;
    VkPhysicalDeviceDriverPropertiesKHR driver{};
    driver.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_DRIVER_PROPERTIES_KHR;
    VkPhysicalDevicePCIBusInfoPropertiesEXT pci{};
    pci.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PCI_BUS_INFO_PROPERTIES_EXT;
    const bool hasDriver = hasExtension(device, VK_KHR_DRIVER_PROPERTIES_EXTENSION_NAME);
    const bool hasPci = hasExtension(device, VK_EXT_PCI_BUS_INFO_EXTENSION_NAME);
    void** next = &ids.pNext;
    if (hasDriver) {
        *next = &driver;
        next = &driver.pNext;
    }
    if (hasPci) *next = &pci;
    VkPhysicalDeviceProperties2 properties{};
    properties.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2;
    properties.pNext = &ids;
    vkGetPhysicalDeviceProperties2(device, &properties);
    const VkPhysicalDeviceProperties& p = properties.properties;

    VulkanDeviceInfo info;
    info.index = index;
    info.name = p.deviceName;
    const DeviceKind kind = vulkan::kindOf(p.deviceType);
    info.type = typeText(kind);
    info.vendor = vendorText(p.vendorID);
    info.unifiedMemory = kind == DeviceKind::integrated || kind == DeviceKind::cpu;
    info.apiVersion = versionText(p.apiVersion);
    if (hasPci) {
        char text[32];
        std::snprintf(text, sizeof text, "PCI %04x:%02x:%02x.%x", pci.pciDomain, pci.pciBus, pci.pciDevice,
                      pci.pciFunction);
        info.location = text;
    } else {
        info.location = "UUID ";
        for (std::uint8_t byte : ids.deviceUUID) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02x", byte);
            info.location += hex;
        }
    }
    info.driver = hasDriver && driver.driverName[0] != '\0'
                      ? std::string(driver.driverName) + " " + driver.driverInfo
                      : driverVersionText(p.vendorID, p.driverVersion);
    VkPhysicalDeviceMemoryProperties memory{};
    vkGetPhysicalDeviceMemoryProperties(device, &memory);
    for (std::uint32_t i = 0; i < memory.memoryHeapCount; ++i)
        if ((memory.memoryHeaps[i].flags & VK_MEMORY_HEAP_DEVICE_LOCAL_BIT) != 0)
            info.deviceLocalBytes += memory.memoryHeaps[i].size;
    return info;
}

template <typename T> T deviceInfo(cl_device_id device, cl_device_info what) {
    T value{};
    clGetDeviceInfo(device, what, sizeof value, &value, nullptr);
    return value;
}

std::string deviceText(cl_device_id device, cl_device_info what) {
    char text[512] = {};
    clGetDeviceInfo(device, what, sizeof text - 1, text, nullptr);
    return text;
}

} // namespace

std::vector<VulkanDeviceInfo> listVulkanDevices() {
    vulkan::InstanceGuard guard{vulkan::createInstance()};
    if (guard.instance == VK_NULL_HANDLE) return {};
    const vulkan::UsableDevices usable = vulkan::usableDevices(guard.instance);
    const auto chosen = chooseDevice(usable.candidates, deviceOverrideFromEnvironment()).index;
    std::vector<VulkanDeviceInfo> devices;
    for (std::size_t i = 0; i < usable.handles.size(); ++i) {
        devices.push_back(describe(usable.handles[i], i));
        devices.back().chosen = chosen == i;
    }
    return devices;
}

std::vector<OpenCLDeviceInfo> listOpenCLDevices() {
    cl_device_id chosenDevice = nullptr;
    cl_platform_id chosenPlatform = nullptr;
    QLFindOpenCLDevice(&chosenDevice, &chosenPlatform);
    std::vector<OpenCLDeviceInfo> devices;
    for (const auto& found : opencl::allDevices()) {
        OpenCLDeviceInfo info;
        info.index = devices.size();
        info.platform = found.platformText;
        info.name = found.deviceName;
        const auto type = deviceInfo<cl_device_type>(found.device, CL_DEVICE_TYPE);
        info.type = (type & CL_DEVICE_TYPE_GPU) != 0           ? "GPU"
                    : (type & CL_DEVICE_TYPE_CPU) != 0         ? "CPU"
                    : (type & CL_DEVICE_TYPE_ACCELERATOR) != 0 ? "accelerator"
                                                               : "other";
        info.driver = deviceText(found.device, CL_DRIVER_VERSION);
        info.version = deviceText(found.device, CL_DEVICE_VERSION);
        info.computeUnits = deviceInfo<cl_uint>(found.device, CL_DEVICE_MAX_COMPUTE_UNITS);
        info.globalMemoryBytes = deviceInfo<cl_ulong>(found.device, CL_DEVICE_GLOBAL_MEM_SIZE);
        info.chosen = found.device == chosenDevice;
        devices.push_back(std::move(info));
    }
    return devices;
}

std::optional<OpenCLDeviceInfo> openCLDeviceOverride(const std::vector<OpenCLDeviceInfo>& devices,
                                                     std::string_view override) {
    if (override.empty()) return std::nullopt;
    std::vector<DeviceCandidate> candidates;
    for (const auto& device : devices)
        candidates.push_back({device.platform + " " + device.name, DeviceKind::other});
    const auto index = matchDeviceOverride(candidates, override);
    if (!index) return std::nullopt;
    return devices[*index];
}

std::pair<std::string, std::string> chosenDriverDescriptions() {
    // Listing loads both drivers (a tenth of a second and more): once per choice of devices.
    static std::mutex mutex;
    static std::map<std::pair<std::string, std::string>, std::pair<std::string, std::string>> known;
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string(value != nullptr ? value : "");
    };
    const auto choice = std::pair{variable("QUARBEL_GPU"), variable("QUARBEL_OPENCL_DEVICE")};
    std::lock_guard lock(mutex);
    if (const auto found = known.find(choice); found != known.end()) return found->second;
    std::pair<std::string, std::string>& drivers = known[choice];
    for (const auto& device : listVulkanDevices())
        if (device.chosen)
            drivers.first = device.name + ": " + device.driver + ", Vulkan " + device.apiVersion;
    for (const auto& device : listOpenCLDevices())
        if (device.chosen)
            drivers.second = device.name + ": " + device.platform + ", driver " + device.driver;
    return drivers;
}

} // namespace quarbel::gpu
