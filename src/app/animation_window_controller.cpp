// SPDX-License-Identifier: Apache-2.0
#include "app/animation_window_controller.h"

#include "app/scene_window.h"
#include "ui/views/theme.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>

namespace quarbel::app {
namespace {

QString windowTitle(BenchmarkID id) {
    return QCoreApplication::translate("quarbel::app::BenchmarkAnimationWindowController", "Quarbel - %1")
        .arg(ui::theme::uiText(title(id)));
}

QRect centredOnScreen(QScreen* screen, QSize size = kBenchmarkWindowSize) {
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    QRect frame(QPoint(0, 0), size);
    if (screen != nullptr) frame.moveCenter(screen->availableGeometry().center());
    return frame;
}

} // namespace

QSize sceneWindowSize(qreal devicePixelRatio) {
    const qreal ratio = devicePixelRatio > 0 ? devicePixelRatio : 1.0;
    return {qRound(kSceneDrawableSize.width / ratio), qRound(kSceneDrawableSize.height / ratio)};
}

BenchmarkAnimationWindowController::BenchmarkAnimationWindowController(BenchmarkID id,
                                                                       VisualBenchmarkRequest request,
                                                                       std::unique_ptr<QWidget> window)
    : benchmarkID_(id), request_(std::move(request)), widget_(std::move(window)) {
    widget_->installEventFilter(this);
}

BenchmarkAnimationWindowController::BenchmarkAnimationWindowController(
    VisualBenchmarkRequest request, std::unique_ptr<MetalBenchmarkSceneWindow> window, Completion completion)
    : benchmarkID_(BenchmarkID::metalVisual), request_(std::move(request)), scene_(std::move(window)),
      completion_(std::move(completion)) {
    connect(scene_.get(), &MetalBenchmarkSceneWindow::closing, this,
            &BenchmarkAnimationWindowController::windowWillClose);
}

BenchmarkAnimationWindowController::~BenchmarkAnimationWindowController() {
    completed_ = true;
    if (widget_) widget_->removeEventFilter(this);
}

void BenchmarkAnimationWindowController::showWindow(QWindow* parent) {
    const Qt::WindowFlags flags = Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                  Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint;
    if (widget_) {
        widget_->setWindowFlags(flags);
        widget_->setAttribute(Qt::WA_QuitOnClose, false);
        widget_->setWindowTitle(windowTitle(benchmarkID_));
        widget_->setMinimumSize(kBenchmarkWindowMinimumSize);
        widget_->setGeometry(centredOnScreen(widget_->screen()));
        widget_->winId(); // the native window, to hang it under its parent before it is shown
        widget_->windowHandle()->setTransientParent(parent);
        widget_->show();
        widget_->raise();
        widget_->activateWindow();
        return;
    }
    scene_->setFlags(flags);
    scene_->setTransientParent(parent);
    scene_->setTitle(windowTitle(benchmarkID_));
    // The scene is shown pixel for pixel as it is measured: the window holds the drawable's
    // device pixels at any display scale and keeps that size, so that neither the scale nor a
    // resize changes what the frames present, and so the work the score measures.
    const QSize fixed = sceneWindowSize(scene_->devicePixelRatio());
    scene_->setMinimumSize(fixed);
    scene_->setMaximumSize(fixed);
    scene_->setGeometry(centredOnScreen(scene_->screen(), fixed));
    scene_->show();
    scene_->raise();
    scene_->requestActivate();
}

void BenchmarkAnimationWindowController::close() {
    completed_ = true;
    if (closing_) return; // already on its way out
    if (widget_) widget_->close();
    if (scene_) scene_->close();
}

void BenchmarkAnimationWindowController::windowWillClose() {
    if (completed_) return;
    completed_ = true;
    if (benchmarkID_ != BenchmarkID::metalVisual || !completion_) return;
    closing_ = true;
    BenchmarkOutcome outcome =
        failedOutcome("The visual benchmark window was closed before the run completed.");
    // The completion may close and drop this controller; keep nothing of it alive here.
    const Completion completion = completion_;
    completion(outcome);
}

bool BenchmarkAnimationWindowController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget_.get() && event->type() == QEvent::Close) windowWillClose();
    return QObject::eventFilter(watched, event);
}

} // namespace quarbel::app
