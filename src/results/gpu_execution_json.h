// SPDX-License-Identifier: Apache-2.0
// The "gpu" member of a GPU benchmark's result in the JSON report.
#pragma once

#include "model/gpu_execution.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace quarbel {

nlohmann::ordered_json gpuExecutionJson(const GpuExecution& execution);

// Reads `value` into `execution`; the problem when it is malformed, e.g.
// "gpu.busyFraction is not a number between 0 and 1".
std::optional<std::string> readGpuExecution(const nlohmann::json& value, GpuExecution& execution);

} // namespace quarbel
