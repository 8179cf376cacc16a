// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/render_pipeline.h"

#include "workloads/gpu/compute_pipeline.h"
#include "workloads/gpu/shader_compiler.h"

#include <string>

namespace quarbel::gpu {

std::unique_ptr<ColorPass> ColorPass::create(const Context& context, VkFormat format,
                                             VkImageLayout finalLayout, VkResult& error) {
    std::unique_ptr<ColorPass> pass(new ColorPass());
    pass->device_ = context.device();
    pass->format_ = format;
    VkAttachmentDescription attachment{};
    attachment.format = format;
    attachment.samples = VK_SAMPLE_COUNT_1_BIT;
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    attachment.stencilLoadOp = VK_ATTACHMENT_LOAD_OP_DONT_CARE;
    attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_DONT_CARE;
    attachment.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    attachment.finalLayout = finalLayout;
    VkAttachmentReference colorReference{0, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL};
    VkSubpassDescription subpass{};
    subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
    subpass.colorAttachmentCount = 1;
    subpass.pColorAttachments = &colorReference;
    // The previous frame's colour writes finish before this frame clears the image. Nothing
    // else touches the attachment between frames, so no other stage needs waiting for.
    VkSubpassDependency dependency{};
    dependency.srcSubpass = VK_SUBPASS_EXTERNAL;
    dependency.dstSubpass = 0;
    dependency.srcStageMask = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    dependency.srcAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    dependency.dstStageMask = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    dependency.dstAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    VkRenderPassCreateInfo passInfo{};
    passInfo.sType = VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO;
    passInfo.attachmentCount = 1;
    passInfo.pAttachments = &attachment;
    passInfo.subpassCount = 1;
    passInfo.pSubpasses = &subpass;
    passInfo.dependencyCount = 1;
    passInfo.pDependencies = &dependency;
    error = vkCreateRenderPass(pass->device_, &passInfo, nullptr, &pass->renderPass_);
    if (error != VK_SUCCESS) return nullptr;
    return pass;
}

ColorPass::~ColorPass() {
    if (renderPass_ != VK_NULL_HANDLE) vkDestroyRenderPass(device_, renderPass_, nullptr);
}

VkResult ColorPass::createView(VkImage image, VkImageView& view) const {
    VkImageViewCreateInfo viewInfo{};
    viewInfo.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
    viewInfo.image = image;
    viewInfo.viewType = VK_IMAGE_VIEW_TYPE_2D;
    viewInfo.format = format_;
    viewInfo.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    return vkCreateImageView(device_, &viewInfo, nullptr, &view);
}

VkResult ColorPass::createFramebuffer(VkImageView view, VkExtent2D extent, VkFramebuffer& framebuffer) const {
    VkFramebufferCreateInfo framebufferInfo{};
    framebufferInfo.sType = VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO;
    framebufferInfo.renderPass = renderPass_;
    framebufferInfo.attachmentCount = 1;
    framebufferInfo.pAttachments = &view;
    framebufferInfo.width = extent.width;
    framebufferInfo.height = extent.height;
    framebufferInfo.layers = 1;
    return vkCreateFramebuffer(device_, &framebufferInfo, nullptr, &framebuffer);
}

void ColorPass::recordBegin(VkCommandBuffer commands, VkFramebuffer framebuffer, VkExtent2D extent,
                            const VkClearColorValue& clear) const {
    VkClearValue clearValue{};
    clearValue.color = clear;
    VkRenderPassBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO;
    begin.renderPass = renderPass_;
    begin.framebuffer = framebuffer;
    begin.renderArea = {{0, 0}, extent};
    begin.clearValueCount = 1;
    begin.pClearValues = &clearValue;
    vkCmdBeginRenderPass(commands, &begin, VK_SUBPASS_CONTENTS_INLINE);
    const VkViewport viewport{0.0f, 0.0f, static_cast<float>(extent.width), static_cast<float>(extent.height),
                              0.0f, 1.0f};
    vkCmdSetViewport(commands, 0, 1, &viewport);
    const VkRect2D scissor{{0, 0}, extent};
    vkCmdSetScissor(commands, 0, 1, &scissor);
}

std::unique_ptr<OffscreenTarget> OffscreenTarget::create(const Context& context, const ColorPass& pass,
                                                         std::uint32_t width, std::uint32_t height,
                                                         std::array<float, 4> clearColor,
                                                         VkImageUsageFlags extraUsage) {
    const VkFormat format = pass.format();
    std::unique_ptr<OffscreenTarget> target(new OffscreenTarget());
    VkDevice device = context.device();
    target->device_ = device;
    target->width_ = width;
    target->height_ = height;
    for (std::size_t i = 0; i < clearColor.size(); ++i)
        target->clearColor_.float32[i] = clearColor[i];
    target->pass_ = &pass;

    VkImageCreateInfo imageInfo{};
    imageInfo.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    imageInfo.imageType = VK_IMAGE_TYPE_2D;
    imageInfo.format = format;
    imageInfo.extent = {width, height, 1};
    imageInfo.mipLevels = 1;
    imageInfo.arrayLayers = 1;
    imageInfo.samples = VK_SAMPLE_COUNT_1_BIT;
    imageInfo.tiling = VK_IMAGE_TILING_OPTIMAL;
    // Without extra usage, rendered to and never read back. Copy-source usage, with the move to a
    // copy layout after each frame that goes with it, is work a GPU may do for nothing (a layout
    // change can mean decompressing the image), so it is there only when asked for.
    imageInfo.usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | extraUsage;
    imageInfo.sharingMode = VK_SHARING_MODE_EXCLUSIVE;
    imageInfo.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    if (vkCreateImage(device, &imageInfo, nullptr, &target->image_) != VK_SUCCESS) return nullptr;

    VkMemoryRequirements requirements{};
    vkGetImageMemoryRequirements(device, target->image_, &requirements);
    auto type = context.findMemoryType(requirements.memoryTypeBits, VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT);
    if (!type) return nullptr;
    VkMemoryAllocateInfo allocate{};
    allocate.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocate.allocationSize = requirements.size;
    allocate.memoryTypeIndex = *type;
    if (vkAllocateMemory(device, &allocate, nullptr, &target->memory_) != VK_SUCCESS) return nullptr;
    if (vkBindImageMemory(device, target->image_, target->memory_, 0) != VK_SUCCESS) return nullptr;

    if (pass.createView(target->image_, target->view_) != VK_SUCCESS) return nullptr;
    if (pass.createFramebuffer(target->view_, {width, height}, target->framebuffer_) != VK_SUCCESS)
        return nullptr;
    return target;
}

OffscreenTarget::~OffscreenTarget() {
    if (framebuffer_ != VK_NULL_HANDLE) vkDestroyFramebuffer(device_, framebuffer_, nullptr);
    if (view_ != VK_NULL_HANDLE) vkDestroyImageView(device_, view_, nullptr);
    if (image_ != VK_NULL_HANDLE) vkDestroyImage(device_, image_, nullptr);
    if (memory_ != VK_NULL_HANDLE) vkFreeMemory(device_, memory_, nullptr);
}

void OffscreenTarget::recordBegin(VkCommandBuffer commands) const {
    pass_->recordBegin(commands, framebuffer_, {width_, height_}, clearColor_);
}

void OffscreenTarget::recordEnd(VkCommandBuffer commands) const { vkCmdEndRenderPass(commands); }

std::unique_ptr<RenderPipeline> RenderPipeline::create(const Context& context,
                                                       std::span<const std::uint32_t> vertex,
                                                       std::span<const std::uint32_t> fragment,
                                                       VkRenderPass renderPass,
                                                       std::uint32_t fragmentArgumentBytes, VkResult& error) {
    std::unique_ptr<RenderPipeline> pipeline(new RenderPipeline());
    VkDevice device = context.device();
    pipeline->device_ = device;
    pipeline->argumentBytes_ = fragmentArgumentBytes;
    pipeline->vertex_ = createShaderModule(device, vertex, error);
    if (pipeline->vertex_ == VK_NULL_HANDLE) return nullptr;
    pipeline->fragment_ = createShaderModule(device, fragment, error);
    if (pipeline->fragment_ == VK_NULL_HANDLE) return nullptr;

    VkPushConstantRange range{VK_SHADER_STAGE_FRAGMENT_BIT, 0, fragmentArgumentBytes};
    VkPipelineLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    layoutInfo.pushConstantRangeCount = fragmentArgumentBytes > 0 ? 1 : 0;
    layoutInfo.pPushConstantRanges = &range;
    error = vkCreatePipelineLayout(device, &layoutInfo, nullptr, &pipeline->layout_);
    if (error != VK_SUCCESS) return nullptr;

    const std::string entry(kEntryPointName);
    std::array<VkPipelineShaderStageCreateInfo, 2> stages{};
    stages[0].sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].module = pipeline->vertex_;
    stages[0].pName = entry.c_str();
    stages[1] = stages[0];
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].module = pipeline->fragment_;

    VkPipelineVertexInputStateCreateInfo vertexInput{};
    vertexInput.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly{};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_STRIP;
    VkPipelineViewportStateCreateInfo viewport{};
    viewport.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewport.viewportCount = 1;
    viewport.scissorCount = 1;
    VkPipelineRasterizationStateCreateInfo raster{};
    raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    raster.polygonMode = VK_POLYGON_MODE_FILL;
    raster.cullMode = VK_CULL_MODE_NONE;
    raster.frontFace = VK_FRONT_FACE_COUNTER_CLOCKWISE;
    raster.lineWidth = 1.0f;
    VkPipelineMultisampleStateCreateInfo multisample{};
    multisample.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    multisample.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState blendAttachment{};
    blendAttachment.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT |
                                     VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &blendAttachment;
    const std::array<VkDynamicState, 2> dynamicStates{VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    VkPipelineDynamicStateCreateInfo dynamic{};
    dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
    dynamic.dynamicStateCount = static_cast<std::uint32_t>(dynamicStates.size());
    dynamic.pDynamicStates = dynamicStates.data();

    VkGraphicsPipelineCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    info.stageCount = static_cast<std::uint32_t>(stages.size());
    info.pStages = stages.data();
    info.pVertexInputState = &vertexInput;
    info.pInputAssemblyState = &assembly;
    info.pViewportState = &viewport;
    info.pRasterizationState = &raster;
    info.pMultisampleState = &multisample;
    info.pColorBlendState = &blend;
    info.pDynamicState = &dynamic;
    info.layout = pipeline->layout_;
    info.renderPass = renderPass;
    info.subpass = 0;
    error = vkCreateGraphicsPipelines(device, VK_NULL_HANDLE, 1, &info, nullptr, &pipeline->pipeline_);
    if (error != VK_SUCCESS) return nullptr;
    return pipeline;
}

RenderPipeline::~RenderPipeline() {
    if (pipeline_ != VK_NULL_HANDLE) vkDestroyPipeline(device_, pipeline_, nullptr);
    if (layout_ != VK_NULL_HANDLE) vkDestroyPipelineLayout(device_, layout_, nullptr);
    if (fragment_ != VK_NULL_HANDLE) vkDestroyShaderModule(device_, fragment_, nullptr);
    if (vertex_ != VK_NULL_HANDLE) vkDestroyShaderModule(device_, vertex_, nullptr);
}

void RenderPipeline::recordBind(VkCommandBuffer commands) const {
    vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline_);
}

void RenderPipeline::recordStrip(VkCommandBuffer commands, const void* arguments) const {
    if (argumentBytes_ > 0)
        vkCmdPushConstants(commands, layout_, VK_SHADER_STAGE_FRAGMENT_BIT, 0, argumentBytes_, arguments);
    vkCmdDraw(commands, 4, 1, 0, 0);
}

} // namespace quarbel::gpu
