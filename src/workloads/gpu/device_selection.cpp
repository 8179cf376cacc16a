// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/device_selection.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>

namespace quarbel::gpu {
namespace {

std::optional<std::size_t> parseIndex(std::string_view text) {
    std::size_t index = 0;
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, index);
    if (error != std::errc() || stop != end) return std::nullopt;
    return index;
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    auto lower = [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); };
    auto found = std::search(text.begin(), text.end(), part.begin(), part.end(),
                             [&](char a, char b) { return lower(a) == lower(b); });
    return found != text.end();
}

std::optional<std::size_t> matchOverride(std::span<const DeviceCandidate> devices,
                                         std::string_view override) {
    if (auto index = parseIndex(override)) {
        if (*index < devices.size()) return *index;
        return std::nullopt;
    }
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (containsIgnoringCase(devices[i].name, override)) return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> preferredDevice(std::span<const DeviceCandidate> devices) {
    for (DeviceKind kind : {DeviceKind::discrete, DeviceKind::integrated, DeviceKind::virtualGpu,
                            DeviceKind::cpu, DeviceKind::other}) {
        for (std::size_t i = 0; i < devices.size(); ++i) {
            if (devices[i].kind == kind) return i;
        }
    }
    return std::nullopt;
}

std::string unmatchedOverrideWarning(std::span<const DeviceCandidate> devices, std::string_view override) {
    std::string text = "QUARBEL_GPU=\"" + std::string(override) + "\" matches no Vulkan device";
    if (devices.empty()) return text + ": none was found.";
    text += "; using the default. Devices:";
    for (std::size_t i = 0; i < devices.size(); ++i)
        text += (i == 0 ? " " : "; ") + std::to_string(i) + " " + devices[i].name;
    return text + ".";
}

} // namespace

DeviceChoice chooseDevice(std::span<const DeviceCandidate> devices, std::string_view override) {
    if (override.empty()) return {preferredDevice(devices), std::nullopt};
    if (auto matched = matchOverride(devices, override)) return {matched, std::nullopt};
    return {preferredDevice(devices), unmatchedOverrideWarning(devices, override)};
}

std::optional<std::size_t> matchDeviceOverride(std::span<const DeviceCandidate> devices,
                                               std::string_view override) {
    return matchOverride(devices, override);
}

std::string deviceOverrideFromEnvironment() {
    const char* value = std::getenv("QUARBEL_GPU");
    return value != nullptr ? std::string(value) : std::string();
}

} // namespace quarbel::gpu
