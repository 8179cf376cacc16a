// SPDX-License-Identifier: Apache-2.0
#include "app/summary_actions.h"

#include "app/history_window.h"
#include "app/run_history_recorder.h"
#include "app/shared_window.h"
#include "results/json_report.h"
#include "results/reference_results.h"
#include "results/regular_file.h"
#include "results/report_file.h"
#include "results/run_history.h"
#include "run/benchmark_store.h"
#include "ui/cards/shared_page.h"
#include "ui/views/summary_panel.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QPushButton>

#include <variant>

namespace quarbel::app {
namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

} // namespace

SummaryActions::SummaryActions(BenchmarkStore& store, ui::SummaryPanel& panel, RunHistoryRecorder& recorder,
                               HistoryWindowController& history, QObject* parent)
    : QObject(parent), store_(store), panel_(panel), history_(history), menu_(new QMenu(&panel)) {
    menu_->setObjectName(QStringLiteral("compareMenu"));
    panel_.compareButton()->setMenu(menu_);
    connect(menu_, &QMenu::aboutToShow, this, &SummaryActions::fillCompareMenu);
    connect(panel_.shareButton(), &QPushButton::clicked, this, &SummaryActions::chooseShareFile);
    connect(&recorder, &RunHistoryRecorder::runKept, this, [this](const QString& path) {
        keptPath_ = path.toStdString();
        followRun();
    });
    connect(&store_, &BenchmarkStore::busyChanged, this, [this] {
        if (store_.busy()) keptPath_.clear();
        followRun();
    });
    followRun();
}

void SummaryActions::followRun() {
    const bool kept = !keptPath_.empty();
    const QString notYet = tr("This run is not in the run history, so there is nothing to compare or share");
    panel_.compareButton()->setEnabled(kept);
    panel_.shareButton()->setEnabled(kept);
    panel_.compareButton()->setToolTip(kept ? tr("Place this run beside an earlier run or a known machine")
                                            : notYet);
    panel_.shareButton()->setToolTip(
        kept ? tr("Save this run as one HTML page that any browser opens and Quarbel imports again")
             : notYet);
}

void SummaryActions::fillCompareMenu() {
    menu_->clear();
    menu_->addAction(tr("An Earlier Run…"), this, [this] { history_.compareNewestWith({}); });
    const auto references = readReferences();
    if (!references.empty()) menu_->addSection(tr("Known machines"));
    for (const KnownMachine& reference : references) {
        QString label = tr("%1 \u00B7 %2").arg(q(reference.name), q(reference.run.machine));
        if (!reference.gpu.empty()) label += QStringLiteral(" \u00B7 ") + q(reference.gpu);
        if (reference.run.version != QUARBEL_VERSION)
            label += tr(" \u00B7 Quarbel %1").arg(q(reference.run.version));
        menu_->addAction(label, this, [this, name = reference.name] { history_.compareNewestWith(name); });
    }
}

void SummaryActions::chooseShareFile() {
    if (keptPath_.empty()) return;
    QString stamp = QFileInfo(q(keptPath_)).completeBaseName();
    auto* dialog = new QFileDialog(panel_.window(), tr("Share Run"));
    dialog->setObjectName(QStringLiteral("shareDialog"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(tr("Web page (*.html)"));
    dialog->setDefaultSuffix(QStringLiteral("html"));
    applyDarkPalette(*dialog);
    dialog->setDirectory(QDir::homePath());
    dialog->selectFile(QStringLiteral("quarbel-run-%1.html").arg(stamp));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { share(path); });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->show();
}

bool SummaryActions::share(const QString& path) {
    if (keptPath_.empty()) return false;
    const auto failed = [this](const QString& reason) {
        store_.logNotice(
            QStringLiteral("Run not shared: %1").arg(reason)); // the log stays English: reports keep it
        return false;
    };
    FileText file = readRegularFile(keptPath_, kLargestReportBytes);
    if (!file.problem.empty()) return failed(q(keptPath_ + " " + file.problem));
    auto report = parseJsonReportFrom(keptPath_, file.text);
    if (const auto* problem = std::get_if<std::string>(&report)) return failed(q(*problem));
    // Links are followed to the file they end at; devices, pipes and folders are refused.
    auto target = resolveReportTarget("the page", path.toStdString());
    if (const auto* problem = std::get_if<std::string>(&target)) return failed(q(*problem));
    const ReportTarget destination = std::get<ReportTarget>(std::move(target));
    const std::string page = cards::sharedPage(keptPath_, file.text, std::get<RunReport>(std::move(report)));
    const ReportWrite written = writeReportFile(destination, page);
    if (!written.problem.empty()) {
        if (!written.keptAt.empty()) QFile::remove(q(written.keptAt));
        return failed(q(written.problem));
    }
    const QString resolved = q(destination.path);
    store_.logNotice(
        QStringLiteral("Shared page written to %1; 'quarbel import' takes it back").arg(resolved));
    return true;
}

} // namespace quarbel::app
