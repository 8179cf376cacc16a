// SPDX-License-Identifier: Apache-2.0
// The visual benchmark's window: a Vulkan surface on the GPU workloads' own instance and
// device (so the device choice, QUARBEL_GPU included, is the same as offscreen), redrawn
// continuously and paced by the display, each frame measured by the scene coordinator.
#pragma once

#include "model/visual.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/scene_coordinator.h"
#include "workloads/gpu/scene_swapchain.h"

#include <QVulkanInstance>
#include <QWindow>

#include <memory>
#include <optional>
#include <string>

namespace quarbel::app {

// The scene is measured in an image of this many pixels, whatever the window's size or the
// display's scale factor, so that scores of different screens compare; the window shows it
// scaled to fit.
inline constexpr gpu::SceneFrameTarget::Size kSceneDrawableSize{960, 540};

class MetalBenchmarkSceneWindow : public QWindow {
    Q_OBJECT
  public:
    // `context` is the device to render with (it may be null: the window then draws nothing
    // and says why in problem()). `fragmentSource` replaces the scene's fragment stage.
    MetalBenchmarkSceneWindow(std::unique_ptr<gpu::Context> context, const VisualBenchmarkRequest& request,
                              gpu::MetalBenchmarkSceneCoordinator::LiveUpdate liveUpdate,
                              gpu::MetalBenchmarkSceneCoordinator::Completion completion,
                              std::optional<std::string> fragmentSource = std::nullopt);
    ~MetalBenchmarkSceneWindow() override;

    // A request with a new id starts the measurement again.
    void update(const VisualBenchmarkRequest& request) { coordinator_.update(request); }

    // Why no frame is drawn, or empty while the scene runs.
    const std::string& problem() const { return problem_; }
    std::int64_t frames() const { return coordinator_.frames(); }

  Q_SIGNALS:
    // The window is about to close, by the user or the program.
    void closing();

  protected:
    bool event(QEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void renderFrame();
    bool ensureSwapchain();

    // Declared in the order they are made; the swapchain goes first, the context last.
    std::unique_ptr<gpu::Context> context_;
    QVulkanInstance vulkan_;
    gpu::MetalBenchmarkSceneCoordinator coordinator_;
    std::optional<std::string> fragmentSource_;
    std::unique_ptr<gpu::SceneSwapchain> swapchain_;
    std::string problem_;
    bool closed_ = false;
};

} // namespace quarbel::app
