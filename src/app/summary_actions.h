// SPDX-License-Identifier: Apache-2.0
// The run summary's Compare with… and Share… buttons: both act on the run the history kept
// last, so they wait until it is kept and stand disabled, saying why, until then.
#pragma once

#include <QObject>
#include <QString>

#include <string>

class QMenu;

namespace quarbel {

class BenchmarkStore;

namespace ui {
class SummaryPanel;
}

namespace app {

class HistoryWindowController;
class RunHistoryRecorder;

class SummaryActions : public QObject {
    Q_OBJECT
  public:
    // Everything passed must outlive this object.
    SummaryActions(BenchmarkStore& store, ui::SummaryPanel& panel, RunHistoryRecorder& recorder,
                   HistoryWindowController& history, QObject* parent = nullptr);

    // The menu Compare with… opens: earlier runs, then each shipped reference.
    QMenu* compareMenu() const { return menu_; }
    // Writes the kept run as one shared page at `path`; false, with the reason in the log,
    // when it cannot.
    bool share(const QString& path);

  private:
    void followRun();
    void fillCompareMenu();
    void chooseShareFile();

    BenchmarkStore& store_;
    ui::SummaryPanel& panel_;
    HistoryWindowController& history_;
    QMenu* menu_;
    std::string keptPath_; // the report of the run the summary shows, once kept
};

} // namespace app
} // namespace quarbel
