// SPDX-License-Identifier: Apache-2.0
#include "sensors/cpuinfo_brand.h"

#include "sensors/sysfs_text.h"

#include <array>
#include <optional>

namespace quarbel {
namespace {

// The value of the first "<key>\t: value" line, without the blanks before it.
std::optional<std::string_view> firstValue(std::string_view cpuinfo, std::string_view key) {
    while (!cpuinfo.empty()) {
        const auto end = cpuinfo.find('\n');
        std::string_view line = cpuinfo.substr(0, end);
        cpuinfo = end == std::string_view::npos ? std::string_view{} : cpuinfo.substr(end + 1);
        const auto colon = line.find(':');
        if (colon == std::string_view::npos || sysfs::trimmed(line.substr(0, colon)) != key) continue;
        std::string_view value = line.substr(colon + 1);
        while (!value.empty() && (value.front() == ' ' || value.front() == '\t'))
            value.remove_prefix(1);
        return value;
    }
    return std::nullopt;
}

struct ArmCore {
    unsigned implementer;
    unsigned part;
    std::string_view name;
};

// Common cores by their MIDR implementer and part numbers.
constexpr std::array<ArmCore, 27> kArmCores = {{
    {0x41, 0xd03, "ARM Cortex-A53"},  {0x41, 0xd04, "ARM Cortex-A35"},  {0x41, 0xd05, "ARM Cortex-A55"},
    {0x41, 0xd07, "ARM Cortex-A57"},  {0x41, 0xd08, "ARM Cortex-A72"},  {0x41, 0xd09, "ARM Cortex-A73"},
    {0x41, 0xd0a, "ARM Cortex-A75"},  {0x41, 0xd0b, "ARM Cortex-A76"},  {0x41, 0xd0c, "ARM Neoverse-N1"},
    {0x41, 0xd0d, "ARM Cortex-A77"},  {0x41, 0xd40, "ARM Neoverse-V1"}, {0x41, 0xd41, "ARM Cortex-A78"},
    {0x41, 0xd44, "ARM Cortex-X1"},   {0x41, 0xd46, "ARM Cortex-A510"}, {0x41, 0xd47, "ARM Cortex-A710"},
    {0x41, 0xd48, "ARM Cortex-X2"},   {0x41, 0xd49, "ARM Neoverse-N2"}, {0x41, 0xd4d, "ARM Cortex-A715"},
    {0x41, 0xd4e, "ARM Cortex-X3"},   {0x41, 0xd4f, "ARM Neoverse-V2"}, {0x41, 0xd80, "ARM Cortex-A520"},
    {0x41, 0xd81, "ARM Cortex-A720"}, {0x41, 0xd82, "ARM Cortex-X4"},   {0x41, 0xd8e, "ARM Neoverse-N3"},
    {0xc0, 0xac3, "Ampere-1"},        {0xc0, 0xac4, "Ampere-1a"},       {0x61, 0x000, "Apple"},
}};

std::optional<unsigned> hexNumber(std::string_view text) {
    text = sysfs::trimmed(text);
    if (!text.starts_with("0x")) return std::nullopt;
    unsigned value = 0;
    text.remove_prefix(2);
    if (text.empty() || text.size() > 8) return std::nullopt;
    for (char c : text) {
        unsigned digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else
            return std::nullopt;
        value = value * 16 + digit;
    }
    return value;
}

std::string armCoreName(std::string_view cpuinfo) {
    const auto implementer = firstValue(cpuinfo, "CPU implementer");
    const auto part = firstValue(cpuinfo, "CPU part");
    if (!implementer || !part) return {};
    const auto implementerNumber = hexNumber(*implementer);
    const auto partNumber = hexNumber(*part);
    if (!implementerNumber || !partNumber) return {};
    for (const auto& core : kArmCores) {
        // Apple's cores are many parts under one implementer; the name is the vendor's.
        const bool anyPart = core.implementer == 0x61;
        if (core.implementer == *implementerNumber && (anyPart || core.part == *partNumber))
            return std::string(core.name);
    }
    return {};
}

} // namespace

std::string brandFromCpuinfo(std::string_view cpuinfo) {
    for (std::string_view key : {"model name", "Processor"}) {
        if (const auto value = firstValue(cpuinfo, key); value && !sysfs::trimmed(*value).empty())
            return std::string(*value);
    }
    if (auto core = armCoreName(cpuinfo); !core.empty()) return core;
    if (const auto hardware = firstValue(cpuinfo, "Hardware")) return std::string(*hardware);
    return {};
}

} // namespace quarbel
