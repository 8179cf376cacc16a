#include "workloads/gpu/scene_swapchain.h"

#include "workloads/gpu/scene_pipeline.h"
#include "workloads/gpu/vk_result_text.h"

#include <algorithm>
#include <limits>

namespace quarbel::gpu {
namespace {

constexpr VkFormat kFormat = VK_FORMAT_B8G8R8A8_UNORM;
constexpr VkClearColorValue kClearColor{{0.02f, 0.025f, 0.03f, 1.0f}};
const auto kFrameTimeoutNanoseconds = static_cast<std::uint64_t>(SceneSwapchain::kFrameTimeoutSeconds * 1e9);

std::string stoppedAnswering() { return "the GPU stopped answering"; }

} // namespace

std::unique_ptr<SceneSwapchain> SceneSwapchain::create(Context& context, VkSurfaceKHR surface,
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

    std::unique_ptr<SceneSwapchain> chain(new SceneSwapchain());
    chain->context_ = &context;
    chain->device_ = context.device();
    chain->surface_ = surface;
    VkResult result = VK_SUCCESS;
    chain->pass_ = ColorPass::create(context, kFormat, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR, result);
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

    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    poolInfo.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    poolInfo.queueFamilyIndex = context.queueFamily();
    VkCommandBufferAllocateInfo allocateInfo{};
    allocateInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocateInfo.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocateInfo.commandBufferCount = 1;
    VkFenceCreateInfo fenceInfo{};
    fenceInfo.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
    VkSemaphoreCreateInfo semaphoreInfo{};
    semaphoreInfo.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
    result = vkCreateCommandPool(chain->device_, &poolInfo, nullptr, &chain->commandPool_);
    allocateInfo.commandPool = chain->commandPool_;
    if (result == VK_SUCCESS)
        result = vkAllocateCommandBuffers(chain->device_, &allocateInfo, &chain->commands_);
    if (result == VK_SUCCESS) result = vkCreateFence(chain->device_, &fenceInfo, nullptr, &chain->fence_);
    if (result == VK_SUCCESS)
        result = vkCreateSemaphore(chain->device_, &semaphoreInfo, nullptr, &chain->acquiredSemaphore_);
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
    if (acquiredSemaphore_ != VK_NULL_HANDLE) vkDestroySemaphore(device_, acquiredSemaphore_, nullptr);
    if (fence_ != VK_NULL_HANDLE) vkDestroyFence(device_, fence_, nullptr);
    if (commandPool_ != VK_NULL_HANDLE) vkDestroyCommandPool(device_, commandPool_, nullptr);
}

void SceneSwapchain::resize(std::uint32_t width, std::uint32_t height) {
    if (width == requested_.width && height == requested_.height) return;
    requested_ = {width, height};
    stale_ = true;
}

void SceneSwapchain::releaseImages() {
    for (VkFramebuffer framebuffer : framebuffers_)
        vkDestroyFramebuffer(device_, framebuffer, nullptr);
    for (VkImageView view : views_)
        vkDestroyImageView(device_, view, nullptr);
    for (VkSemaphore semaphore : renderedSemaphores_)
        vkDestroySemaphore(device_, semaphore, nullptr);
    framebuffers_.clear();
    views_.clear();
    renderedSemaphores_.clear();
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
    // Nothing of the old images is in flight: every frame waits for the device.
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
    info.imageUsage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
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
    std::vector<VkImage> images(count);
    vkGetSwapchainImagesKHR(device_, swapchain_, &count, images.data());
    for (VkImage image : images) {
        VkImageView view = VK_NULL_HANDLE;
        result = pass_->createView(image, view);
        if (result != VK_SUCCESS) break;
        views_.push_back(view);
        VkFramebuffer framebuffer = VK_NULL_HANDLE;
        result = pass_->createFramebuffer(view, extent, framebuffer);
        if (result != VK_SUCCESS) break;
        framebuffers_.push_back(framebuffer);
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
    VkResult result = vkAcquireNextImageKHR(device_, swapchain_, kFrameTimeoutNanoseconds, acquiredSemaphore_,
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

    vkResetCommandBuffer(commands_, 0);
    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    begin.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    vkBeginCommandBuffer(commands_, &begin);
    pass_->recordBegin(commands_, framebuffers_[imageIndex_], {extent_.width, extent_.height}, kClearColor);
    pipeline_->recordBind(commands_);
    return true;
}

void SceneSwapchain::drawPass(const SceneUniforms& uniforms) { pipeline_->recordStrip(commands_, &uniforms); }

bool SceneSwapchain::finishFrame() {
    vkCmdEndRenderPass(commands_);
    VkResult result = vkEndCommandBuffer(commands_);
    const VkPipelineStageFlags waitStage = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.waitSemaphoreCount = 1;
    submit.pWaitSemaphores = &acquiredSemaphore_;
    submit.pWaitDstStageMask = &waitStage;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commands_;
    submit.signalSemaphoreCount = 1;
    submit.pSignalSemaphores = &renderedSemaphores_[imageIndex_];
    if (result == VK_SUCCESS) result = vkQueueSubmit(context_->queue(), 1, &submit, fence_);
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

    // The frame is measured to the end of its rendering, so the wait is part of it.
    result = vkWaitForFences(device_, 1, &fence_, VK_TRUE, kFrameTimeoutNanoseconds);
    if (result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST) {
        problem_ = stoppedAnswering();
        return false;
    }
    vkResetFences(device_, 1, &fence_);
    if (presented == VK_ERROR_DEVICE_LOST) {
        problem_ = stoppedAnswering();
        return false;
    }
    return result == VK_SUCCESS;
}

} // namespace quarbel::gpu
