// SPDX-License-Identifier: Apache-2.0
// The run history window: the runs kept on this machine, newest first, each named by the
// benchmarks it held. The selected run is compared, benchmark by benchmark and with the
// verdicts of `quarbel compare`, with an earlier run (by default the newest complete one
// before it that shares a benchmark), or opened read-only with its summary and results;
// its result cards and JSON report can be saved again.
#pragma once

#include "app/history_run_text.h"
#include "app/history_tables.h"
#include "app/shared_window.h"
#include "results/run_history.h"
#include "results/run_report.h"
#include "ui/views/comparison_view.h"
#include "ui/views/run_results_view.h"
#include "ui/views/trend_view.h"

#include <QWidget>

#include <optional>
#include <string>

class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QStackedWidget;

namespace quarbel::app {

struct HistorySave;

class HistoryView : public QWidget {
    Q_OBJECT
  public:
    explicit HistoryView(std::string directory, QWidget* parent = nullptr);

    // Reads the folder again, keeping a run the user selected where it can.
    void reload();
    // Selects the newest run and compares it with the shipped reference `referenceName`, or
    // with its default baseline when the name is empty.
    void compareNewestWith(const std::string& referenceName);

    QListWidget* runList() const { return list_; }
    QComboBox* baselineChooser() const { return baseline_; }
    ui::ComparisonView* comparison() const { return comparison_; }
    ui::RunResultsView* results() const { return results_; }
    QPushButton* comparisonButton() const { return comparisonTab_; }
    QPushButton* resultsButton() const { return resultsTab_; }
    QPushButton* trendButton() const { return trendTab_; }
    ui::TrendView* trend() const { return trend_; }
    QPushButton* saveCardsButton() const { return saveCards_; }
    QPushButton* saveReportButton() const { return saveReport_; }
    bool showingResults() const;
    // The line under the heading: the folder, skipped files and what the last save did.
    QString statusText() const;

    // Writes the selected run's global card and one card per benchmark into `directory`.
    // On failure the cards this call added are removed again and the reason is shown.
    bool saveCards(const QString& directory);
    // Writes the selected run's report, as it was kept, to `path`, replacing it atomically.
    bool saveReport(const QString& path);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void selectRun(int row);
    void showComparison();
    void chooseCardsFolder();
    void chooseReportFile();
    void showPage(int page);
    void showTrend();
    bool finishSave(const HistorySave& save);
    void updateStatus();

    std::string directory_;
    HistoryListing history_;
    // The shipped results of known machines, offered after the history's runs as baselines.
    std::vector<SavedRun> references_;
    int selected_ = -1;
    bool userChoseRun_ = false;
    std::string selectedText_; // the selected run's report as kept
    QString lastSave_;         // what the last save did, for the status line
    QLabel* status_;
    QListWidget* list_;
    QLabel* runHeading_;
    QPushButton* comparisonTab_;
    QPushButton* resultsTab_;
    QPushButton* trendTab_;
    QPushButton* saveCards_;
    QPushButton* saveReport_;
    QStackedWidget* pages_;
    QComboBox* baseline_;
    ui::ComparisonView* comparison_;
    ui::RunResultsView* results_;
    ui::TrendView* trend_;
    QString cardsFolder_; // where the last cards went; the dialog opens there
};

// The one history window of the program.
class HistoryWindowController : public SharedWindowController {
  public:
    explicit HistoryWindowController(std::string directory);
    // Reloads an open window, e.g. after a run was kept.
    void reload();
    // Shows the window comparing the newest run (see HistoryView::compareNewestWith).
    void compareNewestWith(const std::string& referenceName);
};

} // namespace quarbel::app
