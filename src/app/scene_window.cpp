// SPDX-License-Identifier: Apache-2.0
#include "app/scene_window.h"

#include <QCloseEvent>
#include <QExposeEvent>
#include <QPlatformSurfaceEvent>

namespace quarbel::app {

MetalBenchmarkSceneWindow::MetalBenchmarkSceneWindow(
    std::unique_ptr<gpu::Context> context, const VisualBenchmarkRequest& request,
    gpu::MetalBenchmarkSceneCoordinator::LiveUpdate liveUpdate,
    gpu::MetalBenchmarkSceneCoordinator::Completion completion, std::optional<std::string> fragmentSource)
    : context_(std::move(context)), coordinator_(request, std::move(liveUpdate), std::move(completion)),
      fragmentSource_(std::move(fragmentSource)) {
    if (!context_ || !context_->presentable()) {
        problem_ = "the Vulkan driver cannot present to windows";
    } else {
        vulkan_.setVkInstance(context_->instance());
        if (vulkan_.create())
            setVulkanInstance(&vulkan_);
        else
            problem_ = "the window system offers no Vulkan surfaces";
    }
    // Without a Vulkan instance the window stays an empty plain one.
    setSurfaceType(problem_.empty() ? QSurface::VulkanSurface : QSurface::RasterSurface);
}

MetalBenchmarkSceneWindow::~MetalBenchmarkSceneWindow() {
    // The swapchain before the surface it presents to, the surface before the instance.
    swapchain_.reset();
    destroy();
}

bool MetalBenchmarkSceneWindow::ensureSwapchain() {
    if (swapchain_) return true;
    if (!problem_.empty()) return false;
    VkSurfaceKHR surface = QVulkanInstance::surfaceForWindow(this);
    if (surface == VK_NULL_HANDLE) {
        problem_ = "the window has no Vulkan surface";
        return false;
    }
    std::string error;
    swapchain_ = gpu::SceneSwapchain::create(*context_, surface, kSceneDrawableSize, error, fragmentSource_);
    if (!swapchain_) problem_ = error;
    return swapchain_ != nullptr;
}

void MetalBenchmarkSceneWindow::renderFrame() {
    if (closed_ || !isExposed() || coordinator_.finished()) return;
    if (!ensureSwapchain()) return;
    // The window's pixels, for the copy of the fixed-size drawable onto it.
    const qreal ratio = devicePixelRatio();
    swapchain_->resize(static_cast<std::uint32_t>(width() * ratio),
                       static_cast<std::uint32_t>(height() * ratio));
    // The completion may close this window from inside draw(); the surface and the
    // swapchain go with it, and nothing below touches them then.
    coordinator_.draw(*swapchain_);
    if (swapchain_ && swapchain_->problem()) problem_ = *swapchain_->problem();
    if (!closed_ && problem_.empty() && !coordinator_.finished()) requestUpdate();
}

bool MetalBenchmarkSceneWindow::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::UpdateRequest: renderFrame(); return true;
    case QEvent::PlatformSurface:
        if (static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
            QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed)
            swapchain_.reset();
        break;
    default: break;
    }
    return QWindow::event(event);
}

void MetalBenchmarkSceneWindow::exposeEvent(QExposeEvent*) {
    if (isExposed()) requestUpdate();
}

void MetalBenchmarkSceneWindow::closeEvent(QCloseEvent* event) {
    if (!closed_) {
        closed_ = true;
        Q_EMIT closing();
    }
    event->accept();
}

} // namespace quarbel::app
