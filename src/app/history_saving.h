// SPDX-License-Identifier: Apache-2.0
// Saving a kept run again from Run History: its result cards into a folder and its report, as
// it was kept, to a file; the dialogs that ask where and the warning when a save fails. Apart
// from the window, which only keeps what the last save did for its status line.
#pragma once

#include "results/run_report.h"

#include <QString>

#include <string>

class QFileDialog;
class QWidget;

namespace quarbel::app {

// What a save did: a line for the status when it worked, else what failed and why.
struct HistorySave {
    QString done;
    QString failed;
    QString reason;
    bool ok() const { return failed.isEmpty(); }
};

// Writes the report's global card and one card per benchmark into `directory`. On failure the
// cards this call added are removed again.
HistorySave saveRunCards(const RunReport& report, const QString& directory);

// Writes `text`, a report as it was kept, to `path`, replacing it atomically.
HistorySave saveRunReport(const std::string& text, const QString& path);

// A window-modal warning over `parent` that goes away by itself once read.
void showSaveProblem(QWidget* parent, const QString& what, const QString& reason);

// Non-modal dialogs, opening in `folder` (the home folder when empty), that delete themselves
// when done: one for the cards' folder, one for the report of the run started at `startedAt`.
QFileDialog* cardsFolderDialog(QWidget* parent, const QString& folder);
QFileDialog* reportFileDialog(QWidget* parent, const QString& folder, const std::string& startedAt);

} // namespace quarbel::app
