// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/compute_pipeline.h"

#include "workloads/gpu/shader_compiler.h"
#include "workloads/gpu/vk_result_text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quarbel::gpu {

std::uint32_t threadgroupWidth(std::uint32_t executionWidth, std::uint32_t maxThreadsPerGroup) noexcept {
    return std::min(std::max<std::uint32_t>(executionWidth, 1), maxThreadsPerGroup);
}

DispatchGrid dispatchGridFor(std::uint64_t items, std::uint32_t width,
                             std::uint32_t maxGroupsPerDimension) noexcept {
    width = std::max<std::uint32_t>(width, 1);
    maxGroupsPerDimension = std::max<std::uint32_t>(maxGroupsPerDimension, 1);
    const std::uint64_t groups = std::max<std::uint64_t>((items + width - 1) / width, 1);
    const std::uint64_t rows = (groups + maxGroupsPerDimension - 1) / maxGroupsPerDimension;
    // Filling rows to the limit would leave up to a whole row idle at the end; an even spread
    // leaves fewer spare groups than rows.
    const std::uint64_t perRow = (groups + rows - 1) / rows;
    return {static_cast<std::uint32_t>(perRow), static_cast<std::uint32_t>(rows)};
}

std::uint32_t partsAvailable(DispatchGrid grid, std::uint32_t wanted) noexcept {
    const std::uint32_t axis = grid.groupsY > 1 ? grid.groupsY : grid.groupsX;
    return std::clamp<std::uint32_t>(wanted, 1, std::max<std::uint32_t>(axis, 1));
}

GridPart gridPart(DispatchGrid grid, std::uint32_t parts, std::uint32_t first, std::uint32_t last) noexcept {
    const bool byRows = grid.groupsY > 1;
    const std::uint64_t axis = byRows ? grid.groupsY : grid.groupsX;
    parts = std::max<std::uint32_t>(parts, 1);
    const auto boundary = [&](std::uint32_t index) {
        return static_cast<std::uint32_t>(axis * std::min(index, parts) / parts);
    };
    const std::uint32_t begin = boundary(first);
    const std::uint32_t length = boundary(std::max(first, last)) - begin;
    if (byRows) return {0, begin, {grid.groupsX, length}};
    return {begin, 0, {length, grid.groupsY}};
}

std::uint64_t groupCount(DispatchGrid groups) noexcept {
    return std::uint64_t{groups.groupsX} * groups.groupsY;
}

VkShaderModule createShaderModule(VkDevice device, std::span<const std::uint32_t> spirv, VkResult& error) {
    VkShaderModuleCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    info.codeSize = spirv.size_bytes();
    info.pCode = spirv.data();
    VkShaderModule module = VK_NULL_HANDLE;
    error = vkCreateShaderModule(device, &info, nullptr, &module);
    return error == VK_SUCCESS ? module : VK_NULL_HANDLE;
}

std::unique_ptr<ComputePipeline> ComputePipeline::create(const Context& context,
                                                         std::span<const std::uint32_t> spirv,
                                                         std::uint32_t bufferCount,
                                                         std::uint32_t argumentBytes,
                                                         std::uint32_t groupWidth, VkResult& error) {
    std::unique_ptr<ComputePipeline> pipeline(new ComputePipeline());
    VkDevice device = context.device();
    pipeline->device_ = device;
    pipeline->bufferCount_ = bufferCount;
    pipeline->argumentBytes_ = argumentBytes;

    pipeline->module_ = createShaderModule(device, spirv, error);
    if (pipeline->module_ == VK_NULL_HANDLE) return nullptr;

    std::vector<VkDescriptorSetLayoutBinding> bindings(bufferCount);
    for (std::uint32_t i = 0; i < bufferCount; ++i) {
        bindings[i].binding = i;
        bindings[i].descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
        bindings[i].descriptorCount = 1;
        bindings[i].stageFlags = VK_SHADER_STAGE_COMPUTE_BIT;
    }
    VkDescriptorSetLayoutCreateInfo setInfo{};
    setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    setInfo.bindingCount = bufferCount;
    setInfo.pBindings = bindings.data();
    error = vkCreateDescriptorSetLayout(device, &setInfo, nullptr, &pipeline->setLayout_);
    if (error != VK_SUCCESS) return nullptr;

    VkPushConstantRange range{VK_SHADER_STAGE_COMPUTE_BIT, 0, argumentBytes};
    VkPipelineLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    layoutInfo.setLayoutCount = 1;
    layoutInfo.pSetLayouts = &pipeline->setLayout_;
    layoutInfo.pushConstantRangeCount = argumentBytes > 0 ? 1 : 0;
    layoutInfo.pPushConstantRanges = &range;
    error = vkCreatePipelineLayout(device, &layoutInfo, nullptr, &pipeline->layout_);
    if (error != VK_SUCCESS) return nullptr;

    VkSpecializationMapEntry widthEntry{0, 0, sizeof(std::uint32_t)};
    VkSpecializationInfo specialization{1, &widthEntry, sizeof(groupWidth), &groupWidth};
    const std::string entry(kEntryPointName);
    VkComputePipelineCreateInfo pipelineInfo{};
    pipelineInfo.sType = VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO;
    pipelineInfo.stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    pipelineInfo.stage.stage = VK_SHADER_STAGE_COMPUTE_BIT;
    pipelineInfo.stage.module = pipeline->module_;
    pipelineInfo.stage.pName = entry.c_str();
    pipelineInfo.stage.pSpecializationInfo = &specialization;
    pipelineInfo.flags = VK_PIPELINE_CREATE_DISPATCH_BASE_BIT;
    pipelineInfo.layout = pipeline->layout_;
    error = vkCreateComputePipelines(device, VK_NULL_HANDLE, 1, &pipelineInfo, nullptr, &pipeline->pipeline_);
    if (error != VK_SUCCESS) return nullptr;

    VkDescriptorPoolSize poolSize{VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, std::max<std::uint32_t>(bufferCount, 1)};
    VkDescriptorPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    poolInfo.maxSets = 1;
    poolInfo.poolSizeCount = 1;
    poolInfo.pPoolSizes = &poolSize;
    error = vkCreateDescriptorPool(device, &poolInfo, nullptr, &pipeline->pool_);
    if (error != VK_SUCCESS) return nullptr;
    VkDescriptorSetAllocateInfo allocateInfo{};
    allocateInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    allocateInfo.descriptorPool = pipeline->pool_;
    allocateInfo.descriptorSetCount = 1;
    allocateInfo.pSetLayouts = &pipeline->setLayout_;
    error = vkAllocateDescriptorSets(device, &allocateInfo, &pipeline->set_);
    if (error != VK_SUCCESS) return nullptr;
    return pipeline;
}

ComputePipeline::~ComputePipeline() {
    if (pool_ != VK_NULL_HANDLE) vkDestroyDescriptorPool(device_, pool_, nullptr);
    if (pipeline_ != VK_NULL_HANDLE) vkDestroyPipeline(device_, pipeline_, nullptr);
    if (layout_ != VK_NULL_HANDLE) vkDestroyPipelineLayout(device_, layout_, nullptr);
    if (setLayout_ != VK_NULL_HANDLE) vkDestroyDescriptorSetLayout(device_, setLayout_, nullptr);
    if (module_ != VK_NULL_HANDLE) vkDestroyShaderModule(device_, module_, nullptr);
}

ComputeKernel buildComputeKernel(const Context& context, std::string_view source, std::string_view sourceName,
                                 std::uint32_t bufferCount, std::uint32_t argumentBytes,
                                 std::uint32_t groupWidth) {
    ComputeKernel kernel;
    CompiledShader compiled = compileGlsl(source, ShaderStage::compute, sourceName);
    if (!compiled.ok()) {
        kernel.failure = ComputeKernel::Failure::compile;
        kernel.message = std::move(compiled.error);
        return kernel;
    }
    if (!hasEntryPoint(compiled.spirv, ShaderStage::compute, kEntryPointName)) {
        kernel.failure = ComputeKernel::Failure::entryPointMissing;
        return kernel;
    }
    VkResult error = VK_SUCCESS;
    kernel.pipeline =
        ComputePipeline::create(context, compiled.spirv, bufferCount, argumentBytes, groupWidth, error);
    if (!kernel.pipeline) {
        kernel.failure = ComputeKernel::Failure::pipeline;
        kernel.message = vkResultName(error);
    }
    return kernel;
}

void ComputePipeline::bindBuffers(std::initializer_list<const Buffer*> buffers) {
    std::vector<VkDescriptorBufferInfo> infos;
    std::vector<VkWriteDescriptorSet> writes;
    infos.reserve(buffers.size());
    for (const Buffer* buffer : buffers)
        infos.push_back({buffer->handle(), 0, VK_WHOLE_SIZE});
    for (std::uint32_t i = 0; i < infos.size() && i < bufferCount_; ++i) {
        VkWriteDescriptorSet write{};
        write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        write.dstSet = set_;
        write.dstBinding = i;
        write.descriptorCount = 1;
        write.descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
        write.pBufferInfo = &infos[i];
        writes.push_back(write);
    }
    vkUpdateDescriptorSets(device_, static_cast<std::uint32_t>(writes.size()), writes.data(), 0, nullptr);
}

void ComputePipeline::recordDispatch(VkCommandBuffer commands, const void* arguments,
                                     DispatchGrid grid) const {
    recordDispatch(commands, arguments, GridPart{0, 0, grid});
}

void ComputePipeline::recordDispatch(VkCommandBuffer commands, const void* arguments, GridPart part) const {
    vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_COMPUTE, pipeline_);
    vkCmdBindDescriptorSets(commands, VK_PIPELINE_BIND_POINT_COMPUTE, layout_, 0, 1, &set_, 0, nullptr);
    if (argumentBytes_ > 0)
        vkCmdPushConstants(commands, layout_, VK_SHADER_STAGE_COMPUTE_BIT, 0, argumentBytes_, arguments);
    vkCmdDispatchBase(commands, part.baseX, part.baseY, 0, part.groups.groupsX, part.groups.groupsY, 1);
    VkMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
    barrier.srcAccessMask = VK_ACCESS_SHADER_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_SHADER_WRITE_BIT |
                            VK_ACCESS_TRANSFER_READ_BIT | VK_ACCESS_HOST_READ_BIT;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT,
                         VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT | VK_PIPELINE_STAGE_TRANSFER_BIT |
                             VK_PIPELINE_STAGE_HOST_BIT,
                         0, 1, &barrier, 0, nullptr, 0, nullptr);
}

} // namespace quarbel::gpu
