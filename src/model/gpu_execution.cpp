// SPDX-License-Identifier: Apache-2.0
#include "model/gpu_execution.h"

#include "model/number_format.h"

#include <array>

namespace quarbel {
namespace {

constexpr std::array<std::string_view, 3> kPlacementRaw = {"unified", "deviceMapped", "deviceStaged"};
constexpr std::array<std::string_view, 3> kPlacementText = {"unified memory", "device memory (mapped)",
                                                            "device memory (staged)"};

} // namespace

std::string_view rawValue(GpuMemoryPlacement placement) {
    return kPlacementRaw[static_cast<std::size_t>(placement)];
}

std::optional<GpuMemoryPlacement> gpuMemoryPlacementFromRawValue(std::string_view raw) {
    for (std::size_t i = 0; i < kPlacementRaw.size(); ++i)
        if (kPlacementRaw[i] == raw) return static_cast<GpuMemoryPlacement>(i);
    return std::nullopt;
}

std::string_view placementText(GpuMemoryPlacement placement) {
    return kPlacementText[static_cast<std::size_t>(placement)];
}

std::string gpuExecutionText(const GpuExecution& execution) {
    std::string text = execution.busyFraction
                           ? "GPU busy " + format(*execution.busyFraction * 100.0, 1) + " % of wall time"
                           : "GPU busy time not measurable";
    if (execution.placement) {
        text += " \u00b7 ";
        text += placementText(*execution.placement);
        if (execution.bytesCopied > 0)
            text += ", " + formatBytes(static_cast<std::int64_t>(execution.bytesCopied)) +
                    " copied outside timing";
    }
    if (execution.groupSize > 0) text += " \u00b7 workgroups of " + std::to_string(execution.groupSize);
    text += " \u00b7 " + std::to_string(execution.dispatchesPerSubmission) +
            (execution.dispatchesPerSubmission == 1 ? " dispatch" : " dispatches") + " per submission";
    return text;
}

} // namespace quarbel
