// SPDX-License-Identifier: Apache-2.0
// Helpers for driving the Qt event loop from a test.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <functional>

namespace quarbel::test {

// Processes events until `done()` holds or `timeoutMs` pass; returns whether it held.
inline bool processEventsUntil(const std::function<bool()>& done, int timeoutMs = 5000) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}

inline void processEventsFor(int ms) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
}

} // namespace quarbel::test
