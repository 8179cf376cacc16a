// SPDX-License-Identifier: Apache-2.0
// Owns one benchmark window, a workload animation or the visual benchmark's scene, and
// decides what its closing means: closed by the program (completed first) it reports
// nothing; closed by the user before the visual benchmark finished, it reports the run
// as failed, once.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/visual.h"

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <functional>
#include <memory>

namespace quarbel::app {

class MetalBenchmarkSceneWindow;

// Content 960 x 540, at least 720 x 405, centred on the screen and kept above the main window.
inline constexpr QSize kBenchmarkWindowSize{960, 540};
inline constexpr QSize kBenchmarkWindowMinimumSize{720, 405};

// The scene's window, in device-independent pixels: its measured drawable's 960 x 540 device
// pixels at `devicePixelRatio`, neither more nor less.
QSize sceneWindowSize(qreal devicePixelRatio);

class BenchmarkAnimationWindowController : public QObject {
    Q_OBJECT
  public:
    using Completion = std::function<void(const BenchmarkOutcome&)>;

    // A workload animation window (`window` is its top-level content).
    BenchmarkAnimationWindowController(BenchmarkID id, VisualBenchmarkRequest request,
                                       std::unique_ptr<QWidget> window);
    // The visual benchmark's window; `completion` hears of a close before the end.
    BenchmarkAnimationWindowController(VisualBenchmarkRequest request,
                                       std::unique_ptr<MetalBenchmarkSceneWindow> window,
                                       Completion completion);
    ~BenchmarkAnimationWindowController() override;

    // Sizes, titles, centres and shows the window as a transient child of `parent` (the main
    // window, or none): it stays above its parent and never keeps the program alive.
    void showWindow(QWindow* parent);
    // Closes the window without it reporting anything.
    void close();

    BenchmarkID benchmarkID() const { return benchmarkID_; }
    const VisualBenchmarkRequest& request() const { return request_; }
    bool completed() const { return completed_; }
    QWidget* animationWindow() const { return widget_.get(); }
    MetalBenchmarkSceneWindow* sceneWindow() const { return scene_.get(); }

    // The window is closing; reports a visual run that did not finish.
    void windowWillClose();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    BenchmarkID benchmarkID_;
    VisualBenchmarkRequest request_;
    std::unique_ptr<QWidget> widget_;
    std::unique_ptr<MetalBenchmarkSceneWindow> scene_;
    Completion completion_;
    bool completed_ = false;
    bool closing_ = false;
};

} // namespace quarbel::app
