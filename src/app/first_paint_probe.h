// SPDX-License-Identifier: Apache-2.0
// For the start-up benchmarks: when QUARBEL_FIRST_PAINT_TRACE is set, prints
// "<label> <wall-clock seconds>" on standard error the first time a watched window paints,
// and quits once every watched window has painted when its value is "quit". A launcher that
// notes the time before it starts the program then knows how long each first picture took.
#pragma once

#include <QObject>

namespace quarbel::app {

class FirstPaintProbe : public QObject {
    Q_OBJECT
  public:
    // Watches `window` when the variable is set; does nothing otherwise.
    static void watch(QWidget& window, const char* label = "first-paint");

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    FirstPaintProbe(QObject* parent, const char* label, bool quitAfter)
        : QObject(parent), label_(label), quitAfter_(quitAfter) {}
    const char* label_;
    bool quitAfter_;
    static int unpainted_; // watched windows that have not painted yet
};

} // namespace quarbel::app
