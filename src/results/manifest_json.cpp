// SPDX-License-Identifier: Apache-2.0
#include "results/manifest_json.h"

namespace quarbel {

nlohmann::ordered_json manifestJson(const SystemManifest& manifest) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::array();
    for (const auto& field : manifest)
        fields.push_back(
            {{"key", field.key}, {"label", field.label}, {"value", field.value}, {"affects", field.affects}});
    return fields;
}

SystemManifest manifestFromJson(const nlohmann::json& value) {
    SystemManifest manifest;
    if (!value.is_array()) return manifest;
    const auto text = [](const nlohmann::json& field, const char* key) {
        const auto found = field.find(key);
        return found != field.end() && found->is_string() ? found->get<std::string>() : std::string();
    };
    for (const auto& field : value) {
        if (!field.is_object() || text(field, "key").empty()) continue;
        manifest.push_back(
            {text(field, "key"), text(field, "label"), text(field, "value"), text(field, "affects")});
    }
    return manifest;
}

} // namespace quarbel
