// SPDX-License-Identifier: Apache-2.0
// `quarbel info`: the machine's six system rows, its current temperatures and the manifest
// of the set-up that decides whether two runs are comparable.
#pragma once

#include "sensors/system_manifest.h"
#include "sensors/system_snapshot.h"
#include "sensors/temperature.h"

#include <string>
#include <vector>

namespace quarbel::cli {

// Aligned "Label  value" lines, the system rows then "CPU temperature" and "GPU temperature".
std::string infoText(const std::vector<SystemRow>& rows, const TemperatureSnapshot& temperatures,
                     const SystemManifest& manifest = {});

// {"schema":1,"system":[{"label","value"}...],"temperatures":{"cpu":n|null,"gpu":n|null,"cpuText","gpuText"}}
std::string infoJson(const std::vector<SystemRow>& rows, const TemperatureSnapshot& temperatures,
                     const SystemManifest& manifest = {});

} // namespace quarbel::cli
