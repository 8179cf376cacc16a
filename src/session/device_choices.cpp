// SPDX-License-Identifier: Apache-2.0
#include "session/device_choices.h"

#include "workloads/gpu/device_inventory.h"
#include "workloads/gpu/device_selection.h"
#include "workloads/storage/storage_locations.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace quarbel::session {

namespace {

// "--gpu 7 names no Vulkan device (there are: 0 llvmpipe ...; see 'quarbel devices')"
template <typename Device>
std::string namesNothing(const char* option, const std::string& value, const char* kind,
                         const std::vector<Device>& devices) {
    std::string names;
    for (const auto& d : devices)
        names += (names.empty() ? "" : "; ") + std::to_string(d.index) + " " + d.name;
    return std::string(option) + " " + value + " names no " + kind + " device (" +
           (names.empty() ? std::string("there is none") : "there are: " + names) +
           "; see 'quarbel devices')";
}

} // namespace

std::optional<std::string> applyDeviceChoices(const DeviceChoices& choices) {
    if (choices.gpu) {
        const auto devices = gpu::listVulkanDevices();
        std::vector<gpu::DeviceCandidate> candidates;
        for (const auto& d : devices)
            candidates.push_back({d.name, gpu::DeviceKind::other});
        if (choices.gpu->empty() || !gpu::matchDeviceOverride(candidates, *choices.gpu))
            return namesNothing("--gpu", *choices.gpu, "Vulkan", devices);
        ::setenv("QUARBEL_GPU", choices.gpu->c_str(), 1);
    }
    if (choices.openclDevice) {
        const auto devices = gpu::listOpenCLDevices();
        if (choices.openclDevice->empty() || !gpu::openCLDeviceOverride(devices, *choices.openclDevice))
            return namesNothing("--opencl-device", *choices.openclDevice, "OpenCL", devices);
        ::setenv("QUARBEL_OPENCL_DEVICE", choices.openclDevice->c_str(), 1);
    }
    if (choices.storageDirectory) {
        if (const auto problem = storageDirectoryProblem(*choices.storageDirectory))
            return "--storage-dir: " + *problem;
        std::error_code error;
        const auto absolute = std::filesystem::absolute(*choices.storageDirectory, error);
        ::setenv("QUARBEL_STORAGE_DIR", (error ? *choices.storageDirectory : absolute.string()).c_str(), 1);
    }
    return std::nullopt;
}

} // namespace quarbel::session
