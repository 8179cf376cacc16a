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
    // Beside the total score: place the run among earlier runs and known machines, and hand it
    // over as one page. The desktop program gives them their work.
    QPushButton* compareButton() const { return compare_; }
    QPushButton* shareButton() const { return share_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void followSummary();
    BenchmarkStore& store_;
    QPushButton* saveCard_;
    QPushButton* compare_;
    QPushButton* share_;
    int buttonsLeft_ = 0; // where the row of buttons begins
};

// The run's total score, or when nothing completed, "Skipped", "Failed" or both; and the
// state whose colour it is shown in.
QString totalScoreText(const RunSummary& summary);
TestRunState totalScoreState(const RunSummary& summary);

// "42.0s" under a minute, else "3.5m".
QString durationText(double seconds);

} // namespace quarbel::ui
