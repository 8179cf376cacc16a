// SPDX-License-Identifier: Apache-2.0
// The last run's summary, shown once a run has ended without being stopped: title, total
// score, completed / skipped / failed of total, elapsed time and peak temperatures.
#pragma once

#include "model/outcome.h"

#include <QWidget>

#include <string>

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
};

// The run's total score, or when nothing completed, "Skipped", "Failed" or both; and the
// state whose colour it is shown in.
QString totalScoreText(const RunSummary& summary);
TestRunState totalScoreState(const RunSummary& summary);

// A run summary's title in the user's language: the store names summaries in English, and
// reports keep that name; the titles it knows are translated, any other is shown as written.
QString summaryTitleText(const std::string& title);

// "42.0s" under a minute, else "3.5m".
QString durationText(double seconds);

} // namespace quarbel::ui
