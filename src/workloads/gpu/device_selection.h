// SPDX-License-Identifier: Apache-2.0
// Which Vulkan device is "the system default device": the rule alone, without Vulkan calls,
// so that it can be checked against any list of devices.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quarbel::gpu {

// Ordered by preference.
enum class DeviceKind { discrete, integrated, virtualGpu, cpu, other };

struct DeviceCandidate {
    std::string name;
    DeviceKind kind = DeviceKind::other;
};

struct DeviceChoice {
    std::optional<std::size_t> index; // into the candidates; nullopt for an empty list
    // Set when the override matched nothing: one line naming the override and the devices
    // there are, for the user who set it to read. The choice is then the default device.
    std::optional<std::string> warning;
    bool operator==(const DeviceChoice&) const = default;
};

// Without an override: the first discrete GPU, else the first integrated, else virtual, else
// CPU, else any other device. `override` (the QUARBEL_GPU text) is either a device index in
// decimal or a case-insensitive part of a device name; the first match wins. An override that
// matches nothing falls back to the default rule, so a stale setting still benchmarks the
// default device, but the choice then carries a warning.
DeviceChoice chooseDevice(std::span<const DeviceCandidate> devices, std::string_view override);

// The device `override` names among `devices` (a decimal index, else the first whose name
// holds it, ignoring case); nullopt when none does.
std::optional<std::size_t> matchDeviceOverride(std::span<const DeviceCandidate> devices,
                                               std::string_view override);

// The QUARBEL_GPU environment variable, or empty.
std::string deviceOverrideFromEnvironment();

} // namespace quarbel::gpu
