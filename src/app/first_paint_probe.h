// For the start-up benchmark: when QUARBEL_FIRST_PAINT_TRACE is set, prints
// "first-paint <wall-clock seconds>" on standard error the first time the window paints,
// and quits at once when its value is "quit". A launcher that notes the time before it
// starts the program then knows how long the first picture took.
#pragma once

#include <QObject>

namespace quarbel::app {

class FirstPaintProbe : public QObject {
    Q_OBJECT
  public:
    // Watches `window` when the variable is set; does nothing otherwise.
    static void watch(QWidget& window);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    explicit FirstPaintProbe(QObject* parent, bool quitAfter) : QObject(parent), quitAfter_(quitAfter) {}
    bool quitAfter_;
};

} // namespace quarbel::app
