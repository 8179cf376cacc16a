// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/working_buffer.h"

#include <cstdlib>
#include <cstring>

namespace quarbel::gpu {
namespace {

Storage storageFor(GpuMemoryPlacement placement) {
    switch (placement) {
    case GpuMemoryPlacement::unified: return Storage::shared;
    case GpuMemoryPlacement::deviceMapped: return Storage::deviceMapped;
    case GpuMemoryPlacement::deviceStaged: return Storage::privateGpu;
    }
    return Storage::shared;
}

void recordRegionCopy(VkCommandBuffer commands, const Buffer& source, VkDeviceSize sourceOffset,
                      const Buffer& destination, VkDeviceSize bytes) {
    VkBufferCopy region{sourceOffset, 0, bytes};
    vkCmdCopyBuffer(commands, source.handle(), destination.handle(), 1, &region);
    VkMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
    barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_HOST_READ_BIT;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_HOST_BIT, 0, 1, &barrier,
                         0, nullptr, 0, nullptr);
}

} // namespace

GpuMemoryPlacement preferredPlacement(const Context& context) noexcept {
    return context.unifiedMemory() ? GpuMemoryPlacement::unified : GpuMemoryPlacement::deviceMapped;
}

std::optional<GpuMemoryPlacement> placementOverride(std::string_view text) noexcept {
    if (text == "unified") return GpuMemoryPlacement::unified;
    if (text == "mapped") return GpuMemoryPlacement::deviceMapped;
    if (text == "staged") return GpuMemoryPlacement::deviceStaged;
    return std::nullopt;
}

std::optional<GpuMemoryPlacement> placementFromEnvironment() {
    const char* text = std::getenv("QUARBEL_GPU_MEMORY");
    return text != nullptr ? placementOverride(text) : std::nullopt;
}

GpuMemoryPlacement placementFor(const Context& context, std::optional<GpuMemoryPlacement> requested) {
    return requested.value_or(placementFromEnvironment().value_or(preferredPlacement(context)));
}

std::unique_ptr<WorkingBuffer> WorkingBuffer::create(Context& context, VkDeviceSize bytes,
                                                     GpuMemoryPlacement placement) {
    std::unique_ptr<WorkingBuffer> working(new WorkingBuffer());
    working->context_ = &context;
    working->buffer_ = Buffer::create(context, bytes, storageFor(placement));
    // A GPU's mappable window of its own memory can be small (256 MB without resizable BAR)
    // or missing; its other memory is always there.
    if (!working->buffer_ && placement == GpuMemoryPlacement::deviceMapped) {
        placement = GpuMemoryPlacement::deviceStaged;
        working->buffer_ = Buffer::create(context, bytes, Storage::privateGpu);
    }
    if (!working->buffer_) return nullptr;
    working->placement_ = placement;
    return working;
}

VkResult WorkingBuffer::fill(const std::function<void(void*)>& write) {
    const VkDeviceSize bytes = buffer_->size();
    if (placement_ != GpuMemoryPlacement::deviceStaged) {
        write(buffer_->contents());
        if (placement_ == GpuMemoryPlacement::deviceMapped) bytesCopied_ += bytes;
        return VK_SUCCESS;
    }
    auto staging = Buffer::create(*context_, bytes, Storage::shared);
    if (!staging) return VK_ERROR_OUT_OF_HOST_MEMORY;
    write(staging->contents());
    const VkResult result =
        context_->submitAndWait([&](VkCommandBuffer commands) { recordCopy(commands, *staging, *buffer_); });
    if (result == VK_SUCCESS) bytesCopied_ += bytes;
    return result;
}

VkResult WorkingBuffer::read(VkDeviceSize offset, VkDeviceSize bytes, void* destination) {
    if (bytes == 0) return VK_SUCCESS;
    if (placement_ != GpuMemoryPlacement::deviceStaged) {
        std::memcpy(destination, static_cast<const std::byte*>(buffer_->contents()) + offset, bytes);
        if (placement_ == GpuMemoryPlacement::deviceMapped) bytesCopied_ += bytes;
        return VK_SUCCESS;
    }
    auto staging = Buffer::create(*context_, bytes, Storage::shared);
    if (!staging) return VK_ERROR_OUT_OF_HOST_MEMORY;
    const VkResult result = context_->submitAndWait(
        [&](VkCommandBuffer commands) { recordRegionCopy(commands, *buffer_, offset, *staging, bytes); });
    if (result != VK_SUCCESS) return result;
    std::memcpy(destination, staging->contents(), bytes);
    bytesCopied_ += bytes;
    return VK_SUCCESS;
}

} // namespace quarbel::gpu
