// SPDX-License-Identifier: Apache-2.0
// The "manifest" member of a report: the facts that decide whether two runs are comparable.
#pragma once

#include "sensors/system_manifest.h"

#include <nlohmann/json.hpp>

namespace quarbel {

nlohmann::ordered_json manifestJson(const SystemManifest& manifest);

// The fields of a "manifest" member; fields that are not objects of texts are passed over, and
// anything but a list reads as no manifest (reports from before it, or edited by hand).
SystemManifest manifestFromJson(const nlohmann::json& value);

} // namespace quarbel
