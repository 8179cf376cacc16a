// SPDX-License-Identifier: Apache-2.0
// The scene drawn for a window. Each frame is rendered into an image of a fixed size in
// pixels, the measured drawable, whatever the window's size or the display's scale; it is
// then copied, scaled to fit with its aspect kept, onto a swapchain on the window's surface
// in B8G8R8A8 UNORM with FIFO presentation (one image per display refresh). Two frames are in
// flight, each with its own drawable: the next is recorded while the device renders the last.
#pragma once

#include "workloads/gpu/frame_ring.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/render_pipeline.h"
#include "workloads/gpu/scene_coordinator.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel::gpu {

class SceneSwapchain final : public SceneFrameTarget {
  public:
    // The surface must belong to the context's instance and outlive the swapchain; `context`
    // must be presentable and outlive it too. `drawable` is the measured image's size in
    // pixels. nullptr with the reason in `error` when the queue cannot present to the surface,
    // the window cannot take copied images, or the pipeline or the image cannot be made (a
    // shader source given here replaces the built-in fragment stage).
    static std::unique_ptr<SceneSwapchain>
    create(Context& context, VkSurfaceKHR surface, Size drawable, std::string& error,
           std::optional<std::string_view> fragmentSource = std::nullopt);
    ~SceneSwapchain() override;
    SceneSwapchain(const SceneSwapchain&) = delete;
    SceneSwapchain& operator=(const SceneSwapchain&) = delete;

    // The window's new size in pixels; the swapchain is made again before the next frame. The
    // measured drawable keeps its size.
    void resize(std::uint32_t width, std::uint32_t height);

    bool beginFrame() override;
    Size drawableSize() const override { return drawable_; }
    void drawPass(const SceneUniforms& uniforms) override;
    bool finishFrame() override;
    bool finishInFlight() override;

    // Set once the device stopped answering or the swapchain cannot be made; no frame is
    // drawn after that.
    const std::optional<std::string>& problem() const { return problem_; }

    // Longest a frame may take on the device before it counts as lost.
    static constexpr double kFrameTimeoutSeconds = 10;

  private:
    SceneSwapchain() = default;
    bool recreate();
    void releaseImages();
    void recordCopyToWindow();

    Context* context_ = nullptr;
    VkDevice device_ = VK_NULL_HANDLE;
    VkSurfaceKHR surface_ = VK_NULL_HANDLE;
    std::unique_ptr<ColorPass> pass_;
    std::unique_ptr<RenderPipeline> pipeline_;
    std::vector<std::unique_ptr<OffscreenTarget>> drawableTargets_; // one per frame in flight
    Size drawable_;
    VkFilter scaleFilter_ = VK_FILTER_LINEAR;
    VkSwapchainKHR swapchain_ = VK_NULL_HANDLE;
    std::vector<VkImage> images_;
    std::vector<VkSemaphore> renderedSemaphores_; // one per image: presentation may still hold one
    std::vector<VkSemaphore> acquiredSemaphores_; // one per frame in flight
    std::unique_ptr<FrameRing> ring_;
    std::uint32_t slot_ = 0; // the frame in flight being recorded
    Size extent_;
    Size requested_;
    bool stale_ = true; // the images need making (again) before the next frame
    std::uint32_t imageIndex_ = 0;
    std::optional<std::string> problem_;
};

} // namespace quarbel::gpu
