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

} // namespace

std::optional<std::size_t> chooseDevice(std::span<const DeviceCandidate> devices, std::string_view override) {
    if (devices.empty()) return std::nullopt;
    if (!override.empty()) {
        if (auto index = parseIndex(override)) {
            if (*index < devices.size()) return *index;
        } else {
            for (std::size_t i = 0; i < devices.size(); ++i) {
                if (containsIgnoringCase(devices[i].name, override)) return i;
            }
        }
    }
    for (DeviceKind kind : {DeviceKind::discrete, DeviceKind::integrated, DeviceKind::virtualGpu,
                            DeviceKind::cpu, DeviceKind::other}) {
        for (std::size_t i = 0; i < devices.size(); ++i) {
            if (devices[i].kind == kind) return i;
        }
    }
    return std::nullopt;
}

std::string deviceOverrideFromEnvironment() {
    const char* value = std::getenv("QUARBEL_GPU");
    return value != nullptr ? std::string(value) : std::string();
}

} // namespace quarbel::gpu
