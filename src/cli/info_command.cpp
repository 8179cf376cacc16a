// SPDX-License-Identifier: Apache-2.0
#include "cli/info_command.h"

#include "results/manifest_json.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quarbel::cli {
namespace {

using json = nlohmann::ordered_json;

json optionalNumber(const std::optional<double>& value) { return value ? json(*value) : json(nullptr); }

} // namespace

std::string infoText(const std::vector<SystemRow>& rows, const TemperatureSnapshot& temperatures,
                     const SystemManifest& manifest) {
    std::vector<SystemRow> lines = rows;
    lines.push_back({"CPU temperature", temperatureText(temperatures.cpuCelsius)});
    lines.push_back({"GPU temperature", temperatureText(temperatures.gpuCelsius)});
    for (const auto& field : manifest)
        lines.push_back({field.label, field.value.empty() ? "Unknown" : field.value});
    std::size_t width = 0;
    for (const auto& line : lines)
        width = std::max(width, line.label.size());
    std::string text;
    for (const auto& line : lines)
        text += line.label + std::string(width - line.label.size() + 2, ' ') + line.value + "\n";
    return text;
}

std::string infoJson(const std::vector<SystemRow>& rows, const TemperatureSnapshot& temperatures,
                     const SystemManifest& manifest) {
    json system = json::array();
    for (const auto& row : rows)
        system.push_back({{"label", row.label}, {"value", row.value}});
    const json document = {
        {"schema", 1},
        {"system", system},
        {"temperatures",
         {{"cpu", optionalNumber(temperatures.cpuCelsius)},
          {"gpu", optionalNumber(temperatures.gpuCelsius)},
          {"cpuText", temperatureText(temperatures.cpuCelsius)},
          {"gpuText", temperatureText(temperatures.gpuCelsius)}}},
        {"manifest", manifestJson(manifest)},
    };
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace quarbel::cli
