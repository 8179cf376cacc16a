// The run history window: the runs kept on this machine, newest first, and the selected
// one compared with the newest, benchmark by benchmark, with the same verdicts as
// `quarbel compare`.
#pragma once

#include "app/shared_window.h"
#include "results/run_history.h"
#include "ui/views/comparison_view.h"

#include <QWidget>

#include <string>

class QLabel;
class QListWidget;

namespace quarbel::app {

// The table of `before` against `after`, as the window shows it.
ui::ComparisonTable comparisonTable(const SavedRun& before, const SavedRun& after);

class HistoryView : public QWidget {
    Q_OBJECT
  public:
    explicit HistoryView(std::string directory, QWidget* parent = nullptr);

    // Reads the folder again, keeping the selection where it can.
    void reload();
    QListWidget* runList() const { return list_; }
    ui::ComparisonView* comparison() const { return comparison_; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void showComparison();

    std::string directory_;
    HistoryListing history_;
    QLabel* status_;
    QListWidget* list_;
    ui::ComparisonView* comparison_;
};

// The one history window of the program.
class HistoryWindowController : public SharedWindowController {
  public:
    explicit HistoryWindowController(std::string directory);
    // Reloads an open window, e.g. after a run was kept.
    void reload();
};

} // namespace quarbel::app
