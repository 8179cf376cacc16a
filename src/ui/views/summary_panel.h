// The last run's summary, shown once a run has ended without being stopped: title, total
// score, completed / skipped / failed of total, elapsed time and peak temperatures.
#pragma once

#include <QWidget>

class QPushButton;

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class SummaryPanel : public QWidget {
    Q_OBJECT
  public:
    explicit SummaryPanel(BenchmarkStore& store, QWidget* parent = nullptr);

    QPushButton* saveCardButton() const { return saveCard_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    BenchmarkStore& store_;
    QPushButton* saveCard_;
};

// "42.0s" under a minute, else "3.5m".
QString durationText(double seconds);

} // namespace quarbel::ui
