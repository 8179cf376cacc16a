// SPDX-License-Identifier: Apache-2.0
#include "app/first_paint_probe.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>

namespace quarbel::app {

int FirstPaintProbe::unpainted_ = 0;

void FirstPaintProbe::watch(QWidget& window, const char* label) {
    const QByteArray mode = qgetenv("QUARBEL_FIRST_PAINT_TRACE");
    if (mode.isEmpty()) return;
    // Paint events go to the widgets that paint; the central widget's children are the
    // first to draw, so watching every widget of the window catches the first of them.
    auto* probe = new FirstPaintProbe(&window, label, mode == "quit");
    ++unpainted_;
    for (QWidget* widget : window.findChildren<QWidget*>())
        widget->installEventFilter(probe);
    window.installEventFilter(probe);
}

bool FirstPaintProbe::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Paint) return QObject::eventFilter(watched, event);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::fprintf(stderr, "%s %lld.%09ld\n", label_, static_cast<long long>(now.tv_sec), now.tv_nsec);
    std::fflush(stderr);
    if (--unpainted_ == 0 && quitAfter_)
        QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
    // Once is enough: stop watching everything.
    for (QWidget* widget : static_cast<QWidget*>(parent())->findChildren<QWidget*>())
        widget->removeEventFilter(this);
    parent()->removeEventFilter(this);
    return false;
}

} // namespace quarbel::app
