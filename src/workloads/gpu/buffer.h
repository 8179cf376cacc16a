// SPDX-License-Identifier: Apache-2.0
// Device buffers in the two storage modes the workloads use.
#pragma once

#include "workloads/gpu/gpu_context.h"

#include <memory>

namespace quarbel::gpu {

enum class Storage {
    shared, // host-visible and coherent, mapped for the buffer's life: the CPU writes and reads it directly
    privateGpu, // device-local; only the device touches it (copy it out to look at it)
    // device-local and also host-visible and coherent (a GPU's mappable window of its own
    // memory), mapped for the buffer's life; nullptr where the device has no such memory
    deviceMapped,
};

// A storage buffer that can also be the source and destination of copies. Destroy it before
// its context; same thread rules as the context.
class Buffer {
  public:
    // nullptr when the device cannot create or back a buffer of `bytes` bytes in `storage`.
    static std::unique_ptr<Buffer> create(const Context& context, VkDeviceSize bytes, Storage storage);

    ~Buffer();
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    VkBuffer handle() const noexcept { return buffer_; }
    VkDeviceSize size() const noexcept { return size_; } // bytes
    // The CPU view of a shared or device-mapped buffer; nullptr for private storage.
    void* contents() const noexcept { return mapped_; }

  private:
    Buffer() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkBuffer buffer_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    VkDeviceSize size_ = 0;
    void* mapped_ = nullptr;
};

// Records a whole-buffer copy from `source` into `destination` (at least as large), followed
// by a barrier that makes the copy visible to later compute and host reads.
void recordCopy(VkCommandBuffer commands, const Buffer& source, const Buffer& destination);

} // namespace quarbel::gpu
