#include "session/device_choices.h"

#include "workloads/gpu/device_inventory.h"
#include "workloads/gpu/device_selection.h"
#include "workloads/storage/storage_locations.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace quarbel::session {

std::optional<std::string> applyDeviceChoices(const DeviceChoices& choices) {
    if (choices.gpu) {
        const auto devices = gpu::listVulkanDevices();
        std::vector<gpu::DeviceCandidate> candidates;
        std::string names;
        for (const auto& d : devices) {
            candidates.push_back({d.name, gpu::DeviceKind::other});
            names += (names.empty() ? "" : "; ") + std::to_string(d.index) + " " + d.name;
        }
        if (choices.gpu->empty() || !gpu::matchDeviceOverride(candidates, *choices.gpu))
            return "--gpu " + *choices.gpu + " names no Vulkan device (" +
                   (names.empty() ? std::string("there is none") : "there are: " + names) +
                   "; see 'quarbel devices')";
        ::setenv("QUARBEL_GPU", choices.gpu->c_str(), 1);
    }
    if (choices.openclDevice) {
        const auto devices = gpu::listOpenCLDevices();
        std::string names;
        for (const auto& d : devices)
            names += (names.empty() ? "" : "; ") + std::to_string(d.index) + " " + d.name;
        if (choices.openclDevice->empty() || !gpu::openCLDeviceOverride(devices, *choices.openclDevice))
            return "--opencl-device " + *choices.openclDevice + " names no OpenCL device (" +
                   (names.empty() ? std::string("there is none") : "there are: " + names) +
                   "; see 'quarbel devices')";
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
