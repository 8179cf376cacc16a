// The selected benchmark's last result: score in Quarbel points, its measurement lines,
// duration and detail (Accuracy Mode's pass scores included), and the card button,
// enabled while the selected benchmark has an outcome.
#pragma once

#include <QWidget>

class QPushButton;

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class ResultPanel : public QWidget {
    Q_OBJECT
  public:
    explicit ResultPanel(BenchmarkStore& store, QWidget* parent = nullptr);

    QPushButton* saveCardButton() const { return saveCard_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void refresh();

    BenchmarkStore& store_;
    QPushButton* saveCard_;
};

} // namespace quarbel::ui
