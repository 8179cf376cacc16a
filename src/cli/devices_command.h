// SPDX-License-Identifier: Apache-2.0
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

} // namespace quarbel::cli
