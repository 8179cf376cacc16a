// SPDX-License-Identifier: Apache-2.0
// How a GPU benchmark ran on its device: where the data its kernels touch on every pass
// lived, what was copied outside the timed span, the workgroup size it chose and how busy
// it kept the device. Plain values, carried by the outcome into every output.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarbel {

// Where the buffers that the kernels read and write on every pass live.
enum class GpuMemoryPlacement {
    unified,      // one memory for CPU and GPU (integrated GPUs, CPU devices): mapped, no copies
    deviceMapped, // the GPU's own memory, also visible to the CPU: filled through a mapping
    deviceStaged, // the GPU's own memory, filled and read back through a staging buffer
};

std::string_view rawValue(GpuMemoryPlacement placement); // "unified", "deviceMapped", "deviceStaged"
std::optional<GpuMemoryPlacement> gpuMemoryPlacementFromRawValue(std::string_view raw);
// "unified memory", "device memory (mapped)", "device memory (staged)"
std::string_view placementText(GpuMemoryPlacement placement);

struct GpuExecution {
    std::optional<GpuMemoryPlacement> placement; // none: the API placed it (OpenCL)
    std::uint64_t bytesCopied = 0;               // host <-> device, before and after timing
    std::uint32_t groupSize = 0;                 // invocations per workgroup; 0 when not chosen
    std::uint32_t dispatchesPerSubmission = 1;   // the most that one submission carried
    // Seconds the device spent on the timed work (timestamps or profiling events) over the
    // wall-clock seconds of the timed span; none when the device cannot time its work.
    std::optional<double> busyFraction;
    bool operator==(const GpuExecution&) const = default;
};

// One line for a result's details, e.g. "GPU busy 97.2 % of wall time · device memory
// (staged), 32 MB copied outside timing · workgroups of 256 · 16 dispatches per submission".
std::string gpuExecutionText(const GpuExecution& execution);

} // namespace quarbel
