// SPDX-License-Identifier: Apache-2.0
#include "app/app_delegate.h"

#include "run/benchmark_store.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace quarbel::app {

QuitShortcutFilter::QuitShortcutFilter(std::function<void()> quit, QObject* parent)
    : QObject(parent), quit_(std::move(quit)) {}

bool QuitShortcutFilter::isQuitShortcut(const QKeyEvent& event) {
    const auto held = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    return held == Qt::ControlModifier && event.key() == Qt::Key_Q;
}

bool QuitShortcutFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && isQuitShortcut(static_cast<const QKeyEvent&>(*event))) {
        if (quit_) quit_();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

bool waitUntilIdle(BenchmarkStore& store, std::chrono::milliseconds limit) {
    if (!store.busy()) return true;
    QEventLoop loop;
    QObject::connect(&store, &BenchmarkStore::busyChanged, &loop, [&] {
        if (!store.busy()) loop.quit();
    });
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    loop.exec();
    return !store.busy();
}

QuarbelAppDelegate::QuarbelAppDelegate(BenchmarkStore& store, std::chrono::milliseconds stopWaitLimit,
                                       QObject* parent)
    : QObject(parent), store_(store), stopWaitLimit_(stopWaitLimit) {
    connect(qApp, &QCoreApplication::aboutToQuit, this, &QuarbelAppDelegate::applicationWillTerminate);
}

QuarbelAppDelegate::~QuarbelAppDelegate() = default;

void QuarbelAppDelegate::applicationDidFinishLaunching() {
    // Help, about and animation windows opt out of this (WA_QuitOnClose off, or a
    // transient parent), so the main window is the one whose closing ends the program.
    QGuiApplication::setQuitOnLastWindowClosed(true);
    if (commandQMonitor_) return;
    commandQMonitor_ = std::make_unique<QuitShortcutFilter>([this] { terminate(); });
    qApp->installEventFilter(commandQMonitor_.get());
}

void QuarbelAppDelegate::terminate() {
    stopRun();
    closeAllWindows();
    QCoreApplication::quit();
}

void QuarbelAppDelegate::applicationWillTerminate() {
    if (commandQMonitor_) {
        qApp->removeEventFilter(commandQMonitor_.get());
        commandQMonitor_.reset();
    }
    // The run stops first, which closes its benchmark window as the program's own close: no
    // window is then reported as closed by the user under a running benchmark.
    stopRun();
    closeAllWindows();
    waitUntilIdle(store_, stopWaitLimit_);
}

void QuarbelAppDelegate::stopRun() {
    if (runStopped_) return;
    runStopped_ = true;
    store_.stop();
}

void QuarbelAppDelegate::closeAllWindows() {
    QApplication::closeAllWindows();
    // Windows that are not widgets (a GPU surface, say) are closed one by one.
    QList<QPointer<QWindow>> windows;
    for (QWindow* window : QGuiApplication::topLevelWindows())
        windows.append(window);
    for (const QPointer<QWindow>& window : windows) {
        if (window && window->isVisible()) window->close();
    }
}

} // namespace quarbel::app
