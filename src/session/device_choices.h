// SPDX-License-Identifier: Apache-2.0
// The devices a run uses when the user picks them (`run --gpu`, `--opencl-device`,
// `--storage-dir`, the window's Devices dialog), checked against what is there.
#pragma once

#include <optional>
#include <string>

namespace quarbel::session {

// The device choices of a run, checked against what is there before anything runs. Each that
// is set is put into the environment the workloads read (QUARBEL_GPU, QUARBEL_OPENCL_DEVICE,
// QUARBEL_STORAGE_DIR); the one-line error otherwise, naming what there is to choose from, and
// nothing is changed. Call while no benchmark runs: the workloads read these as they start.
struct DeviceChoices {
    std::optional<std::string> gpu;
    std::optional<std::string> openclDevice;
    std::optional<std::string> storageDirectory;
};
std::optional<std::string> applyDeviceChoices(const DeviceChoices& choices);

} // namespace quarbel::session
