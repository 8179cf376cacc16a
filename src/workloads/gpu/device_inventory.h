// SPDX-License-Identifier: Apache-2.0
// Every GPU compute device Quarbel could use, as `quarbel devices` lists them and `run --gpu`
// and `--opencl-device` choose among them: Vulkan devices by the index the GPU benchmarks use,
// OpenCL devices by one index over all platforms.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel::gpu {

struct VulkanDeviceInfo {
    std::size_t index = 0;
    std::string name;
    std::string type;     // "discrete GPU", "integrated GPU", "virtual GPU", "CPU", "other"
    std::string vendor;   // "NVIDIA", "AMD", "Intel", "Mesa" ... or the PCI vendor id
    std::string location; // "PCI 0000:65:00.0" where the driver says, else "UUID <hex>"
    std::string driver;   // "NVIDIA 580.65.06", "llvmpipe Mesa 22.3.6"
    std::string apiVersion;
    bool unifiedMemory = false;
    std::uint64_t deviceLocalBytes = 0;
    bool chosen = false; // the device the GPU benchmarks would use now
};

struct OpenCLDeviceInfo {
    std::size_t index = 0;
    std::string platform; // platform name and version
    std::string name;
    std::string type;   // "GPU", "CPU", "accelerator", "other"
    std::string driver; // the device's driver version
    std::string version;
    std::uint32_t computeUnits = 0;
    std::uint64_t globalMemoryBytes = 0;
    bool chosen = false;
};

// Vulkan 1.1 devices, in the order QUARBEL_GPU indices count them; empty without a driver.
std::vector<VulkanDeviceInfo> listVulkanDevices();
// OpenCL devices of every platform (at most 8 of each), in platform order; empty without one.
std::vector<OpenCLDeviceInfo> listOpenCLDevices();

// QUARBEL_OPENCL_DEVICE: an index into listOpenCLDevices() or a part of "platform device";
// the device it names, nullopt when unset or when it names none.
std::optional<OpenCLDeviceInfo> openCLDeviceOverride(const std::vector<OpenCLDeviceInfo>& devices,
                                                     std::string_view override);

// The chosen Vulkan device's driver and the chosen OpenCL device's, for the run's manifest:
// "llvmpipe (LLVM 15.0.6, 256 bits): llvmpipe Mesa 22.3.6, Vulkan 1.3.230".
std::pair<std::string, std::string> chosenDriverDescriptions();

} // namespace quarbel::gpu
