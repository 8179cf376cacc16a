// SPDX-License-Identifier: Apache-2.0
// The selected benchmark's last result: score in Quarbel points with its 95 % interval,
// its measurement lines, duration and whole detail (Accuracy Mode's pass scores, spread and
// confidence included), and the card button, enabled while the selected benchmark has a
// completed result. A skipped GPU benchmark also says what would let it run here.
#pragma once

#include "model/catalogue.h"

#include <QWidget>

#include <optional>

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
    // The height the selected benchmark's content takes at `width`, padding included.
    qreal contentHeight(qreal width) const;
    void fitHeight();

    BenchmarkStore& store_;
    QPushButton* saveCard_;
    std::optional<int> stackFloor_; // the minimum height the enclosing stack came with
};

// What a Linux user can do about a skipped GPU benchmark (install a driver, pick another
// device); empty for the benchmarks that need no GPU.
QString skipAdvice(BenchmarkID id);

} // namespace quarbel::ui
