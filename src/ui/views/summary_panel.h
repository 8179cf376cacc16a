// The last run's summary, shown once a run has ended without being stopped: title, total
// score, completed / skipped / failed of total, elapsed time and peak temperatures.
#pragma once

#include "model/outcome.h"

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
    void followSummary();
    BenchmarkStore& store_;
    QPushButton* saveCard_;
};

// The run's total score, or when nothing completed, "Skipped", "Failed" or both; and the
// state whose colour it is shown in.
QString totalScoreText(const RunSummary& summary);
TestRunState totalScoreState(const RunSummary& summary);

// "42.0s" under a minute, else "3.5m".
QString durationText(double seconds);

} // namespace quarbel::ui
