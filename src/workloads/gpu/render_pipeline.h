// SPDX-License-Identifier: Apache-2.0
// Full-screen rendering: an offscreen colour target with its render pass, and a graphics
// pipeline that draws a four-vertex strip with inline fragment arguments.
#pragma once

#include "workloads/gpu/gpu_context.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace quarbel::gpu {

// A render pass with one colour attachment that is cleared on load and kept, ending in
// `finalLayout` (the colour-attachment layout when nothing but the next frame uses the image,
// the present layout for a window's image). Same thread rules as the context; destroy it
// before the context.
class ColorPass {
  public:
    // nullptr on failure with the VkResult in `error`.
    static std::unique_ptr<ColorPass> create(const Context& context, VkFormat format,
                                             VkImageLayout finalLayout, VkResult& error);
    ~ColorPass();
    ColorPass(const ColorPass&) = delete;
    ColorPass& operator=(const ColorPass&) = delete;

    VkRenderPass handle() const noexcept { return renderPass_; }
    VkFormat format() const noexcept { return format_; }

    // A 2D view of the whole of `image` (one level, one layer, in this pass's format), and a
    // framebuffer of such a view at `extent`. The caller destroys what it gets.
    VkResult createView(VkImage image, VkImageView& view) const;
    VkResult createFramebuffer(VkImageView view, VkExtent2D extent, VkFramebuffer& framebuffer) const;

    // Begins the pass over the whole of `framebuffer`, clearing it to `clear`, and sets the
    // viewport and scissor to it.
    void recordBegin(VkCommandBuffer commands, VkFramebuffer framebuffer, VkExtent2D extent,
                     const VkClearColorValue& clear) const;

  private:
    ColorPass() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkRenderPass renderPass_ = VK_NULL_HANDLE;
    VkFormat format_ = VK_FORMAT_UNDEFINED;
};

// A device-local colour image rendered through `pass` (which must outlive it). Its usage is
// colour attachment plus `extraUsage` (none by default: then it cannot be copied or sampled,
// and `pass` must end it in the colour-attachment layout).
class OffscreenTarget {
  public:
    // nullptr when the image, its memory, the view or the framebuffer cannot be made.
    static std::unique_ptr<OffscreenTarget> create(const Context& context, const ColorPass& pass,
                                                   std::uint32_t width, std::uint32_t height,
                                                   std::array<float, 4> clearColor,
                                                   VkImageUsageFlags extraUsage = 0);
    ~OffscreenTarget();
    OffscreenTarget(const OffscreenTarget&) = delete;
    OffscreenTarget& operator=(const OffscreenTarget&) = delete;

    std::uint32_t width() const noexcept { return width_; }
    std::uint32_t height() const noexcept { return height_; }
    VkImage image() const noexcept { return image_; }

    // Begins the render pass over the whole target (clearing it) and sets viewport and scissor.
    void recordBegin(VkCommandBuffer commands) const;
    void recordEnd(VkCommandBuffer commands) const;

  private:
    OffscreenTarget() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkImage image_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    VkImageView view_ = VK_NULL_HANDLE;
    const ColorPass* pass_ = nullptr; // not owned
    VkFramebuffer framebuffer_ = VK_NULL_HANDLE;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    VkClearColorValue clearColor_{};
};

// Draws with no vertex buffers (the vertex stage makes the corners from the vertex index), no
// blending and dynamic viewport and scissor, so one pipeline serves targets of any size.
class RenderPipeline {
  public:
    // nullptr on failure with the VkResult in `error`. The stages' entry points are "main".
    static std::unique_ptr<RenderPipeline> create(const Context& context,
                                                  std::span<const std::uint32_t> vertex,
                                                  std::span<const std::uint32_t> fragment,
                                                  VkRenderPass renderPass,
                                                  std::uint32_t fragmentArgumentBytes, VkResult& error);
    ~RenderPipeline();
    RenderPipeline(const RenderPipeline&) = delete;
    RenderPipeline& operator=(const RenderPipeline&) = delete;

    // Inside a render pass: bind once, then draw as often as needed.
    void recordBind(VkCommandBuffer commands) const;
    // One four-vertex triangle strip with `arguments` (fragmentArgumentBytes) as push constants.
    void recordStrip(VkCommandBuffer commands, const void* arguments) const;

  private:
    RenderPipeline() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkShaderModule vertex_ = VK_NULL_HANDLE;
    VkShaderModule fragment_ = VK_NULL_HANDLE;
    VkPipelineLayout layout_ = VK_NULL_HANDLE;
    VkPipeline pipeline_ = VK_NULL_HANDLE;
    std::uint32_t argumentBytes_ = 0;
};

} // namespace quarbel::gpu
