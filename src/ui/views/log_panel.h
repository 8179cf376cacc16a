// The store's log: its last fourteen lines, newest at the bottom.
#pragma once

#include <QWidget>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class LogPanel : public QWidget {
    Q_OBJECT
  public:
    explicit LogPanel(BenchmarkStore& store, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {600, 150}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    BenchmarkStore& store_;
};

} // namespace quarbel::ui
