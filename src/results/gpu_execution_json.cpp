// SPDX-License-Identifier: Apache-2.0
#include "results/gpu_execution_json.h"

#include "results/json_reading.h"

#include <cmath>
#include <limits>

namespace quarbel {
namespace {

using json_reading::json;
using json_reading::Malformed;

// A whole number from 0 to `most`, or `fallback` when the member is absent.
template <typename T> T count(const json& object, const char* key, T fallback) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return fallback;
    if (!found->is_number_unsigned() || found->get<std::uint64_t>() > std::numeric_limits<T>::max())
        throw Malformed{std::string("gpu.") + key + " is not a whole number"};
    return static_cast<T>(found->get<std::uint64_t>());
}

} // namespace

nlohmann::ordered_json gpuExecutionJson(const GpuExecution& e) {
    using ordered = nlohmann::ordered_json;
    return {{"memory", e.placement ? ordered(std::string(rawValue(*e.placement))) : ordered(nullptr)},
            {"bytesCopiedOutsideTiming", e.bytesCopied},
            {"workgroupSize", e.groupSize},
            {"dispatchesPerSubmission", e.dispatchesPerSubmission},
            {"busyFraction", e.busyFraction ? ordered(*e.busyFraction) : ordered(nullptr)}};
}

std::optional<std::string> readGpuExecution(const json& value, GpuExecution& e) {
    try {
        if (!value.is_object()) throw Malformed{"gpu is not an object"};
        if (const auto memory = value.find("memory"); memory != value.end() && !memory->is_null()) {
            if (!memory->is_string()) throw Malformed{"gpu.memory is not a text"};
            e.placement = gpuMemoryPlacementFromRawValue(memory->get<std::string>());
            if (!e.placement) throw Malformed{"gpu.memory is not unified, deviceMapped or deviceStaged"};
        }
        e.bytesCopied = count<std::uint64_t>(value, "bytesCopiedOutsideTiming", 0);
        e.groupSize = count<std::uint32_t>(value, "workgroupSize", 0);
        e.dispatchesPerSubmission = count<std::uint32_t>(value, "dispatchesPerSubmission", 1);
        if (const auto busy = value.find("busyFraction"); busy != value.end() && !busy->is_null()) {
            if (!busy->is_number() || !(busy->get<double>() >= 0 && busy->get<double>() <= 1))
                throw Malformed{"gpu.busyFraction is not a number between 0 and 1"};
            e.busyFraction = busy->get<double>();
        }
    } catch (const Malformed& problem) {
        return problem.text;
    }
    return std::nullopt;
}

} // namespace quarbel
