// SPDX-License-Identifier: Apache-2.0
// The desktop program's windows for the run controller: the workload animation windows and
// the visual benchmark's scene window, one at a time.
#pragma once

#include "run/window_presenter.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>
#include <string>

namespace quarbel {

class BenchmarkStore;

namespace gpu {
class Context;
}

namespace app {

class BenchmarkAnimationWindowController;

class DesktopWindowPresenter final : public WindowPresenter {
  public:
    DesktopWindowPresenter();
    ~DesktopWindowPresenter() override;
    DesktopWindowPresenter(const DesktopWindowPresenter&) = delete;
    DesktopWindowPresenter& operator=(const DesktopWindowPresenter&) = delete;

    // The store whose live state the animation windows show; without one they stay closed.
    void observe(BenchmarkStore& store) { store_ = &store; }
    // The benchmark windows are transient children of `window`: they stay above it, and
    // closing it is closing the program, whatever benchmark window is open.
    void setMainWindow(QWidget* window) { mainWindow_ = window; }
    // Replaces the scene's fragment stage (a broken one makes the pipeline fail).
    void setSceneFragmentSource(std::optional<std::string> source) { fragmentSource_ = std::move(source); }

    bool hasVisualDevice() const override;
    void showAnimationWindow(BenchmarkID id, int passes) override;
    void showVisualBenchmark(const VisualBenchmarkRequest& request,
                             std::function<void(const VisualBenchmarkLiveStats&)> liveUpdate,
                             std::function<void(const BenchmarkOutcome&)> completion) override;
    void closeWindow() override;
    std::string visualProblem() const override;

    // The window now open, if any.
    BenchmarkAnimationWindowController* controller() const { return controller_.get(); }

  private:
    QWindow* mainWindowHandle() const;

    BenchmarkStore* store_ = nullptr;
    QPointer<QWidget> mainWindow_;
    std::optional<std::string> fragmentSource_;
    // Opened by hasVisualDevice() and handed to the scene window that follows.
    mutable std::unique_ptr<gpu::Context> context_;
    std::unique_ptr<BenchmarkAnimationWindowController> controller_;
    std::string lastVisualProblem_;
};

} // namespace app
} // namespace quarbel
