// `quarbel devices`: the Vulkan devices, OpenCL devices and file systems a run can use, with
// the ones it would use now marked; and the checks of `run --gpu`, `--opencl-device` and
// `--storage-dir`.
#pragma once

#include "workloads/gpu/device_inventory.h"
#include "workloads/storage/storage_locations.h"

#include <optional>
#include <string>
#include <vector>

namespace quarbel::cli {

struct DeviceListing {
    std::vector<gpu::VulkanDeviceInfo> vulkan;
    std::vector<gpu::OpenCLDeviceInfo> opencl;
    std::vector<MountedFilesystem> filesystems;
    std::string storageRoot; // where the storage benchmarks would write now
};

DeviceListing currentDevices();
std::string devicesText(const DeviceListing& listing);
std::string devicesJson(const DeviceListing& listing);

// The device choices of a run, checked against what is there before anything runs. Each that
// is set is put into the environment the workloads read (QUARBEL_GPU, QUARBEL_OPENCL_DEVICE,
// QUARBEL_STORAGE_DIR); the one-line error otherwise, naming what there is to choose from.
struct DeviceChoices {
    std::optional<std::string> gpu;
    std::optional<std::string> openclDevice;
    std::optional<std::string> storageDirectory;
};
std::optional<std::string> applyDeviceChoices(const DeviceChoices& choices);

} // namespace quarbel::cli
