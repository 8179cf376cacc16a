// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/scene_swapchain.h"

#include "workloads/gpu/scene_pipeline.h"
#include "workloads/gpu/vk_result_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace quarbel::gpu {
namespace {

constexpr VkFormat kFormat = VK_FORMAT_B8G8R8A8_UNORM;
constexpr VkClearColorValue kClearColor{{0.02f, 0.025f, 0.03f, 1.0f}};
const auto kFrameTimeoutNanoseconds = static_cast<std::uint64_t>(SceneSwapchain::kFrameTimeoutSeconds * 1e9);

std::string stoppedAnswering() { return "the GPU stopped answering"; }

// A layout change of a whole single-level colour image, ordered after `source` work and before
// `destination` work.
void recordLayoutChange(VkCommandBuffer commands, VkImage image, VkImageLayout from, VkImageLayout to,
                        VkPipelineStageFlags sourceStage, VkAccessFlags sourceAccess,
                        VkPipelineStageFlags destinationStage, VkAccessFlags destinationAccess) {
    VkImageMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
    barrier.srcAccessMask = sourceAccess;
    barrier.dstAccessMask = destinationAccess;
    barrier.oldLayout = from;
    barrier.newLayout = to;
    barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image;
    barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    vkCmdPipelineBarrier(commands, sourceStage, destinationStage, 0, 0, nullptr, 0, nullptr, 1, &barrier);
}

// Where a drawable of `drawable` pixels goes in a window of `window` pixels: as large as fits,
// its aspect kept, centred.
std::array<VkOffset3D, 2> fittedArea(SceneFrameTarget::Size drawable, SceneFrameTarget::Size window) {
    const double scale = std::min(static_cast<double>(window.width) / drawable.width,
                                  static_cast<double>(window.height) / drawable.height);
    const auto width = std::clamp(static_cast<std::int32_t>(std::lround(drawable.width * scale)), 1,
                                  static_cast<std::int32_t>(window.width));
    const auto height = std::clamp(static_cast<std::int32_t>(std::lround(drawable.height * scale)), 1,
                                   static_cast<std::int32_t>(window.height));
    const auto left = (static_cast<std::int32_t>(window.width) - width) / 2;
    const auto top = (static_cast<std::int32_t>(window.height) - height) / 2;
    return {VkOffset3D{left, top, 0}, VkOffset3D{left + width, top + height, 1}};
}

} // namespace

std::unique_ptr<SceneSwapchain> SceneSwapchain::create(Context& context, VkSurfaceKHR surface, Size drawable,
                                                       std::string& error,
                                                       std::optional<std::string_view> fragmentSource) {
    if (!context.presentable()) {
        error = "the Vulkan driver cannot present to windows";
        return nullptr;
    }
    VkBool32 supported = VK_FALSE;
    if (vkGetPhysicalDeviceSurfaceSupportKHR(context.physicalDevice(), context.queueFamily(), surface,
                                             &supported) != VK_SUCCESS ||
        supported == VK_FALSE) {
        error = "the GPU cannot present to this window";
        return nullptr;
    }
    std::uint32_t formatCount = 0;
    vkGetPhysicalDeviceSurfaceFormatsKHR(context.physicalDevice(), surface, &formatCount, nullptr);
    std::vector<VkSurfaceFormatKHR> formats(formatCount);
    vkGetPhysicalDeviceSurfaceFormatsKHR(context.physicalDevice(), surface, &formatCount, formats.data());
    formats.resize(formatCount);
    if (std::none_of(formats.begin(), formats.end(), [](const VkSurfaceFormatKHR& f) {
            return f.format == kFormat && f.colorSpace == VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
        })) {
        error = "the window does not take B8G8R8A8 UNORM images";
        return nullptr;
    }
    VkSurfaceCapabilitiesKHR capabilities{};
    if (vkGetPhysicalDeviceSurfaceCapabilitiesKHR(context.physicalDevice(), surface, &capabilities) !=
            VK_SUCCESS ||
        (capabilities.supportedUsageFlags & VK_IMAGE_USAGE_TRANSFER_DST_BIT) == 0) {
        error = "the window does not take copied images";
        return nullptr;
    }

    std::unique_ptr<SceneSwapchain> chain(new SceneSwapchain());
    chain->context_ = &context;
    chain->device_ = context.device();
    chain->surface_ = surface;
    chain->drawable_ = {std::max<std::uint32_t>(drawable.width, 1),
                        std::max<std::uint32_t>(drawable.height, 1)};
    VkResult result = VK_SUCCESS;
    // The pass leaves the drawable ready to draw again; finishFrame() moves it on to the copy.
    chain->pass_ = ColorPass::create(context, kFormat, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL, result);
    if (!chain->pass_) {
        error = "Metal pipeline failed: " + vkResultName(result);
        return nullptr;
    }
    ScenePipeline scene = buildScenePipeline(context, chain->pass_->handle(), std::nullopt, fragmentSource);
    if (!scene.pipeline) {
        error = "Metal pipeline failed: " + scene.error;
        return nullptr;
    }
    chain->pipeline_ = std::move(scene.pipeline);
    chain->ring_ = FrameRing::create(context, FrameRing::kDefaultSlots, result);
    if (!chain->ring_) {
        error = "the scene window could not prepare its frames: " + vkResultName(result);
        return nullptr;
    }
    for (std::uint32_t i = 0; i < chain->ring_->slotCount(); ++i) {
        chain->drawableTargets_.push_back(OffscreenTarget::create(
            context, *chain->pass_, chain->drawable_.width, chain->drawable_.height,
            {kClearColor.float32[0], kClearColor.float32[1], kClearColor.float32[2], kClearColor.float32[3]},
            VK_IMAGE_USAGE_TRANSFER_SRC_BIT));
        if (!chain->drawableTargets_.back()) {
            error = "Metal could not create the render target.";
            return nullptr;
        }
    }
    // Linear scaling where the format allows it (it nearly always does), else the nearest pixel.
    VkFormatProperties properties{};
    vkGetPhysicalDeviceFormatProperties(context.physicalDevice(), kFormat, &properties);
    if ((properties.optimalTilingFeatures & VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT) == 0)
        chain->scaleFilter_ = VK_FILTER_NEAREST;

    VkSemaphoreCreateInfo semaphoreInfo{};
    semaphoreInfo.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
    for (std::uint32_t i = 0; i < chain->ring_->slotCount() && result == VK_SUCCESS; ++i) {
        VkSemaphore semaphore = VK_NULL_HANDLE;
        result = vkCreateSemaphore(chain->device_, &semaphoreInfo, nullptr, &semaphore);
        if (result == VK_SUCCESS) chain->acquiredSemaphores_.push_back(semaphore);
    }
    if (result != VK_SUCCESS) {
        error = "the scene window could not prepare its frames: " + vkResultName(result);
        return nullptr;
    }
    return chain;
}

SceneSwapchain::~SceneSwapchain() {
    // A device that stopped answering may still hold the frame: leave its objects to the
    // process's end rather than wait for it for good.
    if (problem_ == stoppedAnswering()) return;
    if (device_ == VK_NULL_HANDLE) return;
    vkDeviceWaitIdle(device_);
    releaseImages();
    if (swapchain_ != VK_NULL_HANDLE) vkDestroySwapchainKHR(device_, swapchain_, nullptr);
    for (VkSemaphore semaphore : acquiredSemaphores_)
        vkDestroySemaphore(device_, semaphore, nullptr);
}

void SceneSwapchain::resize(std::uint32_t width, std::uint32_t height) {
    if (width == requested_.width && height == requested_.height) return;
    requested_ = {width, height};
    stale_ = true;
}

void SceneSwapchain::releaseImages() {
    for (VkSemaphore semaphore : renderedSemaphores_)
        vkDestroySemaphore(device_, semaphore, nullptr);
    renderedSemaphores_.clear();
    images_.clear();
}

bool SceneSwapchain::recreate() {
    VkSurfaceCapabilitiesKHR capabilities{};
    VkResult result =
        vkGetPhysicalDeviceSurfaceCapabilitiesKHR(context_->physicalDevice(), surface_, &capabilities);
    if (result != VK_SUCCESS) {
        problem_ = "the window's surface is gone: " + vkResultName(result);
        return false;
    }
    VkExtent2D extent = capabilities.currentExtent;
    if (extent.width == std::numeric_limits<std::uint32_t>::max()) {
        extent.width = std::clamp(requested_.width, capabilities.minImageExtent.width,
                                  capabilities.maxImageExtent.width);
        extent.height = std::clamp(requested_.height, capabilities.minImageExtent.height,
                                   capabilities.maxImageExtent.height);
    }
    if (extent.width == 0 || extent.height == 0) return false; // minimised: try again later
    // The old images may still be in flight.
    vkDeviceWaitIdle(device_);

    std::uint32_t imageCount = capabilities.minImageCount + 1;
    if (capabilities.maxImageCount > 0) imageCount = std::min(imageCount, capabilities.maxImageCount);
    VkCompositeAlphaFlagBitsKHR alpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
    for (VkCompositeAlphaFlagBitsKHR candidate :
         {VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR, VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR,
          VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR, VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR}) {
        if ((capabilities.supportedCompositeAlpha & candidate) != 0) {
            alpha = candidate;
            break;
        }
    }
    VkSwapchainCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR;
    info.surface = surface_;
    info.minImageCount = imageCount;
    info.imageFormat = kFormat;
    info.imageColorSpace = VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
    info.imageExtent = extent;
    info.imageArrayLayers = 1;
    info.imageUsage = VK_IMAGE_USAGE_TRANSFER_DST_BIT; // only ever the target of the drawable's copy
    info.imageSharingMode = VK_SHARING_MODE_EXCLUSIVE;
    info.preTransform = capabilities.currentTransform;
    info.compositeAlpha = alpha;
    info.presentMode = VK_PRESENT_MODE_FIFO_KHR; // paced by the display; every driver has it
    info.clipped = VK_TRUE;
    info.oldSwapchain = swapchain_;
    VkSwapchainKHR created = VK_NULL_HANDLE;
    result = vkCreateSwapchainKHR(device_, &info, nullptr, &created);
    releaseImages();
    if (swapchain_ != VK_NULL_HANDLE) vkDestroySwapchainKHR(device_, swapchain_, nullptr);
    swapchain_ = created;
    if (result != VK_SUCCESS) {
        problem_ = "the scene window could not make its swapchain: " + vkResultName(result);
        return false;
    }

    std::uint32_t count = 0;
    vkGetSwapchainImagesKHR(device_, swapchain_, &count, nullptr);
    images_.resize(count);
    vkGetSwapchainImagesKHR(device_, swapchain_, &count, images_.data());
    images_.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        VkSemaphoreCreateInfo semaphoreInfo{};
        semaphoreInfo.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
        VkSemaphore semaphore = VK_NULL_HANDLE;
        result = vkCreateSemaphore(device_, &semaphoreInfo, nullptr, &semaphore);
        if (result != VK_SUCCESS) break;
        renderedSemaphores_.push_back(semaphore);
    }
    if (result != VK_SUCCESS) {
        problem_ = "the scene window could not prepare its images: " + vkResultName(result);
        return false;
    }
    extent_ = {extent.width, extent.height};
    stale_ = false;
    return true;
}

bool SceneSwapchain::beginFrame() {
    if (problem_) return false;
    if (stale_ && !recreate()) return false;
    // The slot's previous frame must be finished before its drawable, semaphore and commands
    // are used again.
    slot_ = ring_->slot();
    VkResult result = ring_->begin(kFrameTimeoutNanoseconds);
    if (result != VK_SUCCESS) {
        problem_ = result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST
                       ? stoppedAnswering()
                       : "the scene window could not record a frame: " + vkResultName(result);
        return false;
    }
    result = vkAcquireNextImageKHR(device_, swapchain_, kFrameTimeoutNanoseconds, acquiredSemaphores_[slot_],
                                   VK_NULL_HANDLE, &imageIndex_);
    if (result == VK_ERROR_OUT_OF_DATE_KHR) {
        stale_ = true;
        return false;
    }
    if (result == VK_TIMEOUT || result == VK_NOT_READY) return false;
    if (result == VK_SUBOPTIMAL_KHR) {
        stale_ = true; // this image is still good to draw; the next frame gets new ones
    } else if (result != VK_SUCCESS) {
        problem_ = result == VK_ERROR_DEVICE_LOST ? stoppedAnswering()
                                                  : "the window's surface is gone: " + vkResultName(result);
        return false;
    }

    drawableTargets_[slot_]->recordBegin(ring_->commands());
    pipeline_->recordBind(ring_->commands());
    return true;
}

void SceneSwapchain::drawPass(const SceneUniforms& uniforms) {
    pipeline_->recordStrip(ring_->commands(), &uniforms);
}

void SceneSwapchain::recordCopyToWindow() {
    const VkCommandBuffer commands = ring_->commands();
    const OffscreenTarget& drawable = *drawableTargets_[slot_];
    const VkImage window = images_[imageIndex_];
    recordLayoutChange(commands, drawable.image(), VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL,
                       VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT,
                       VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT,
                       VK_ACCESS_TRANSFER_READ_BIT);
    // The acquired image is waited for at the transfer stage (see finishFrame).
    recordLayoutChange(commands, window, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                       VK_PIPELINE_STAGE_TRANSFER_BIT, 0, VK_PIPELINE_STAGE_TRANSFER_BIT,
                       VK_ACCESS_TRANSFER_WRITE_BIT);
    const std::array<VkOffset3D, 2> area = fittedArea(drawable_, extent_);
    const bool fillsWindow = area[0].x == 0 && area[0].y == 0 &&
                             area[1].x == static_cast<std::int32_t>(extent_.width) &&
                             area[1].y == static_cast<std::int32_t>(extent_.height);
    if (!fillsWindow) {
        // Bars around a drawable whose aspect is not the window's.
        const VkImageSubresourceRange range{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
        vkCmdClearColorImage(commands, window, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, &kClearColor, 1, &range);
        VkMemoryBarrier cleared{};
        cleared.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
        cleared.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
        cleared.dstAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
        vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT, 0, 1,
                             &cleared, 0, nullptr, 0, nullptr);
    }
    VkImageBlit blit{};
    blit.srcSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    blit.srcOffsets[1] = {static_cast<std::int32_t>(drawable_.width),
                          static_cast<std::int32_t>(drawable_.height), 1};
    blit.dstSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    blit.dstOffsets[0] = area[0];
    blit.dstOffsets[1] = area[1];
    vkCmdBlitImage(commands, drawable.image(), VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, window,
                   VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &blit, scaleFilter_);
    recordLayoutChange(commands, window, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                       VK_IMAGE_LAYOUT_PRESENT_SRC_KHR, VK_PIPELINE_STAGE_TRANSFER_BIT,
                       VK_ACCESS_TRANSFER_WRITE_BIT, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, 0);
}

bool SceneSwapchain::finishFrame() {
    drawableTargets_[slot_]->recordEnd(ring_->commands());
    recordCopyToWindow();
    const VkPipelineStageFlags waitStage = VK_PIPELINE_STAGE_TRANSFER_BIT;
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.waitSemaphoreCount = 1;
    submit.pWaitSemaphores = &acquiredSemaphores_[slot_];
    submit.pWaitDstStageMask = &waitStage;
    submit.signalSemaphoreCount = 1;
    submit.pSignalSemaphores = &renderedSemaphores_[imageIndex_];
    const VkResult result = ring_->submit(context_->queue(), submit);
    if (result != VK_SUCCESS) {
        problem_ = result == VK_ERROR_DEVICE_LOST ? stoppedAnswering()
                                                  : "the GPU refused a frame: " + vkResultName(result);
        return false;
    }
    VkPresentInfoKHR present{};
    present.sType = VK_STRUCTURE_TYPE_PRESENT_INFO_KHR;
    present.waitSemaphoreCount = 1;
    present.pWaitSemaphores = &renderedSemaphores_[imageIndex_];
    present.swapchainCount = 1;
    present.pSwapchains = &swapchain_;
    present.pImageIndices = &imageIndex_;
    const VkResult presented = vkQueuePresentKHR(context_->queue(), &present);
    if (presented == VK_ERROR_OUT_OF_DATE_KHR || presented == VK_SUBOPTIMAL_KHR) stale_ = true;
    if (presented == VK_ERROR_DEVICE_LOST) {
        problem_ = stoppedAnswering();
        return false;
    }
    // The frame renders on while the next is recorded; finishInFlight() waits for the last ones.
    return true;
}

bool SceneSwapchain::finishInFlight() {
    if (problem_) return false;
    const VkResult result = ring_->drain(kFrameTimeoutNanoseconds);
    if (result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST) problem_ = stoppedAnswering();
    return result == VK_SUCCESS;
}

} // namespace quarbel::gpu
