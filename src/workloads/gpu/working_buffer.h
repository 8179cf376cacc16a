// SPDX-License-Identifier: Apache-2.0
// The data a kernel reads or writes on every pass, kept in the memory that suits the device:
// on a unified device the memory the CPU writes; on a discrete GPU its own memory, filled
// once before timing and read back once after it, so that no pass reads across the host bus.
#pragma once

#include "model/gpu_execution.h"
#include "workloads/gpu/buffer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace quarbel::gpu {

// Unified memory on a unified device, else the device's own memory through a mapping where
// it has one (a buffer that cannot be had that way falls back to staging).
GpuMemoryPlacement preferredPlacement(const Context& context) noexcept;

// QUARBEL_GPU_MEMORY ("unified", "mapped" or "staged") forces a placement, to compare one
// with another on the same device; nullopt when unset or not one of those.
std::optional<GpuMemoryPlacement> placementOverride(std::string_view text) noexcept;
std::optional<GpuMemoryPlacement> placementFromEnvironment();
// `requested`, else the environment's, else the preferred placement.
GpuMemoryPlacement placementFor(const Context& context, std::optional<GpuMemoryPlacement> requested);

// Destroy it before its context; same thread rules as the context.
class WorkingBuffer {
  public:
    // nullptr when the device cannot back `bytes` bytes in that placement (mapped falls back
    // to staged first).
    static std::unique_ptr<WorkingBuffer> create(Context& context, VkDeviceSize bytes,
                                                 GpuMemoryPlacement placement);

    const Buffer& buffer() const noexcept { return *buffer_; }
    GpuMemoryPlacement placement() const noexcept { return placement_; }
    // Bytes moved between the host's memory and the device's, over the buffer's life.
    std::uint64_t bytesCopied() const noexcept { return bytesCopied_; }

    // Gives `write` size() bytes of host memory to fill, which then become the buffer's
    // contents. The first failing VkResult, else VK_SUCCESS.
    VkResult fill(const std::function<void(void* bytes)>& write);
    // Copies `bytes` bytes from `offset` of the buffer into `destination`.
    VkResult read(VkDeviceSize offset, VkDeviceSize bytes, void* destination);

  private:
    WorkingBuffer() = default;
    Context* context_ = nullptr;
    std::unique_ptr<Buffer> buffer_;
    GpuMemoryPlacement placement_ = GpuMemoryPlacement::unified;
    std::uint64_t bytesCopied_ = 0;
};

} // namespace quarbel::gpu
