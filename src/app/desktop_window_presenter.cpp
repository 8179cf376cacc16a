// SPDX-License-Identifier: Apache-2.0
#include "app/desktop_window_presenter.h"

#include "app/animation_window_controller.h"
#include "app/scene_window.h"
#include "run/benchmark_store.h"
#include "ui/views/workload_animation_view.h"
#include "workloads/gpu/gpu_context.h"

#include <QUuid>
#include <QWindow>

namespace quarbel::app {

DesktopWindowPresenter::DesktopWindowPresenter() = default;

DesktopWindowPresenter::~DesktopWindowPresenter() {
    if (controller_) controller_->close();
}

bool DesktopWindowPresenter::hasVisualDevice() const {
    if (!context_) context_ = gpu::Context::openDefault({.presentation = true});
    return context_ && context_->supportsGraphics();
}

void DesktopWindowPresenter::showAnimationWindow(BenchmarkID id, int passes) {
    closeWindow();
    if (store_ == nullptr) return;
    const VisualBenchmarkRequest request{
        QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(),
        static_cast<double>(targetSeconds(id) * std::max(passes, 1)), 1};
    controller_ = std::make_unique<BenchmarkAnimationWindowController>(
        id, request, std::make_unique<ui::WorkloadAnimationView>(*store_, id));
    controller_->showWindow(mainWindowHandle());
}

void DesktopWindowPresenter::showVisualBenchmark(
    const VisualBenchmarkRequest& request, std::function<void(const VisualBenchmarkLiveStats&)> liveUpdate,
    std::function<void(const BenchmarkOutcome&)> completion) {
    closeWindow();
    lastVisualProblem_.clear();
    if (!context_) hasVisualDevice();
    auto window = std::make_unique<MetalBenchmarkSceneWindow>(std::move(context_), request, liveUpdate,
                                                              completion, fragmentSource_);
    controller_ =
        std::make_unique<BenchmarkAnimationWindowController>(request, std::move(window), completion);
    controller_->showWindow(mainWindowHandle());
}

void DesktopWindowPresenter::closeWindow() {
    if (!controller_) return;
    if (auto* scene = controller_->sceneWindow()) lastVisualProblem_ = scene->problem();
    controller_->close();
    // The window may be inside its own event handling (a close, a frame); it goes afterwards.
    controller_.release()->deleteLater();
}

QWindow* DesktopWindowPresenter::mainWindowHandle() const {
    return mainWindow_ ? mainWindow_->windowHandle() : nullptr;
}

std::string DesktopWindowPresenter::visualProblem() const {
    if (controller_ && controller_->sceneWindow()) return controller_->sceneWindow()->problem();
    return lastVisualProblem_;
}

} // namespace quarbel::app
