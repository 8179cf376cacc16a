// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/buffer.h"

namespace quarbel::gpu {

std::unique_ptr<Buffer> Buffer::create(const Context& context, VkDeviceSize bytes, Storage storage) {
    std::unique_ptr<Buffer> buffer(new Buffer());
    buffer->device_ = context.device();
    buffer->size_ = bytes;

    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    info.size = bytes;
    info.usage = VK_BUFFER_USAGE_STORAGE_BUFFER_BIT | VK_BUFFER_USAGE_TRANSFER_SRC_BIT |
                 VK_BUFFER_USAGE_TRANSFER_DST_BIT;
    info.sharingMode = VK_SHARING_MODE_EXCLUSIVE;
    if (vkCreateBuffer(buffer->device_, &info, nullptr, &buffer->buffer_) != VK_SUCCESS) return nullptr;

    VkMemoryRequirements requirements{};
    vkGetBufferMemoryRequirements(buffer->device_, buffer->buffer_, &requirements);
    constexpr VkMemoryPropertyFlags kMappable =
        VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
    const VkMemoryPropertyFlags wanted = storage == Storage::shared ? kMappable
                                         : storage == Storage::privateGpu
                                             ? VkMemoryPropertyFlags{VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT}
                                             : kMappable | VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
    auto type = context.findMemoryType(requirements.memoryTypeBits, wanted);
    if (!type) return nullptr;

    VkMemoryAllocateInfo allocate{};
    allocate.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocate.allocationSize = requirements.size;
    allocate.memoryTypeIndex = *type;
    if (vkAllocateMemory(buffer->device_, &allocate, nullptr, &buffer->memory_) != VK_SUCCESS) return nullptr;
    if (vkBindBufferMemory(buffer->device_, buffer->buffer_, buffer->memory_, 0) != VK_SUCCESS)
        return nullptr;
    if (storage != Storage::privateGpu &&
        vkMapMemory(buffer->device_, buffer->memory_, 0, VK_WHOLE_SIZE, 0, &buffer->mapped_) != VK_SUCCESS)
        return nullptr;
    return buffer;
}

Buffer::~Buffer() {
    if (mapped_ != nullptr) vkUnmapMemory(device_, memory_);
    if (buffer_ != VK_NULL_HANDLE) vkDestroyBuffer(device_, buffer_, nullptr);
    if (memory_ != VK_NULL_HANDLE) vkFreeMemory(device_, memory_, nullptr);
}

void recordCopy(VkCommandBuffer commands, const Buffer& source, const Buffer& destination) {
    VkBufferCopy region{};
    region.size = source.size();
    vkCmdCopyBuffer(commands, source.handle(), destination.handle(), 1, &region);
    VkMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
    barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_SHADER_WRITE_BIT | VK_ACCESS_HOST_READ_BIT;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT,
                         VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT | VK_PIPELINE_STAGE_HOST_BIT, 0, 1, &barrier, 0,
                         nullptr, 0, nullptr);
}

} // namespace quarbel::gpu
