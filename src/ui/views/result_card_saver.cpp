// SPDX-License-Identifier: Apache-2.0
#include "ui/views/result_card_saver.h"

#include "run/benchmark_store.h"
#include "sensors/system_snapshot.h"
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_exporter.h"
#include "ui/views/main_window.h"
#include "ui/views/result_panel.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/summary_panel.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include <algorithm>

namespace quarbel::ui {
namespace {

namespace Exporter = cards::ResultCardExporter;

cards::HardwareRows hardwareRows() {
    cards::HardwareRows rows;
    for (const SystemRow& row : SystemSnapshot::rows())
        rows.emplace_back(row.label, row.value);
    return rows;
}

std::string appVersion() { return QCoreApplication::applicationVersion().toStdString(); }

// The dialogs inherit the window's light text from its style sheet, so they need the dark
// surfaces under it too: lists, fields and buttons included.
void useDarkSurfaces(QWidget& dialog) {
    QPalette palette = dialog.palette();
    const QColor field = QColor(0x0d, 0x0f, 0x12);
    palette.setColor(QPalette::Window, theme::panel());
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, theme::panel());
    palette.setColor(QPalette::Button, QColor(0x1b, 0x1f, 0x24));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(role, theme::text());
    palette.setColor(QPalette::PlaceholderText, theme::muted());
    palette.setColor(QPalette::Highlight, QColor::fromRgbF(0.13f, 0.79f, 0.88f, 0.35f));
    dialog.setPalette(palette);
    dialog.setStyleSheet(QStringLiteral("QDialog { background: %1; }"
                                        "QLineEdit, QComboBox, QTreeView, QListView { background: %2; "
                                        "border: 1px solid rgba(255,255,255,0.13); border-radius: 5px; }"
                                        "QLineEdit, QComboBox { padding: 4px; }"
                                        "QHeaderView, QHeaderView::section { background: %1; color: "
                                        "rgba(255,255,255,0.62); border: none; "
                                        "padding: 4px 6px; }")
                             .arg(theme::panel().name(), field.name()));
}

} // namespace

QString ResultCardSaver::defaultDirectory() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return pictures.isEmpty() || !QFileInfo(pictures).isDir() ? QDir::homePath() : pictures;
}

ResultCardSaver::ResultCardSaver(BenchmarkStore& store, MainWindow& window)
    : QObject(&window), store_(store), window_(&window), directory_(defaultDirectory()) {
    noticeTimer_.setSingleShot(true);
    noticeTimer_.setInterval(kNoticeMilliseconds);
    connect(&noticeTimer_, &QTimer::timeout, this, [this] {
        if (notice_) notice_->hide();
    });
    connect(window.resultPanel()->saveCardButton(), &QPushButton::clicked, this,
            &ResultCardSaver::saveSelectedBenchmarkCard);
    connect(window.summaryPanel()->saveCardButton(), &QPushButton::clicked, this,
            &ResultCardSaver::saveSummaryCard);
}

cards::BenchmarkCardContent ResultCardSaver::benchmarkCardContent(const BenchmarkStore& store,
                                                                  BenchmarkID id) {
    const BenchmarkEndState& end = store.endState(id);
    return {id,
            store.rows()[id].outcome.value_or(BenchmarkOutcome{}),
            end.temperature,
            end.accuracyMode,
            store.budgetScale() < 1.0,
            std::chrono::system_clock::now(),
            hardwareRows(),
            appVersion(),
            end.stabilityPercent,
            end.uncertainty,
            end.noisy,
            end.traceSummary,
            end.startCelsius,
            end.energy};
}

cards::SummaryCardContent ResultCardSaver::summaryCardContent(const BenchmarkStore& store) {
    cards::SummaryCardContent content{store.runSummary().value_or(RunSummary{}),
                                      store.rows(),
                                      store.totalScore(),
                                      store.budgetScale() < 1.0,
                                      std::chrono::system_clock::now(),
                                      hardwareRows(),
                                      appVersion(),
                                      store.runCondition().badges,
                                      {},
                                      {}};
    for (BenchmarkID id : kAllBenchmarks) {
        const BenchmarkEndState& end = store.endState(id);
        if (end.uncertainty) content.uncertainties[id] = *end.uncertainty;
        if (end.noisy) content.noisy.insert(id);
    }
    // The energy of what the last run measured, as the saved report's card sums it.
    std::vector<ResultEnergy> energies;
    for (BenchmarkID id : store.endedInRun())
        energies.push_back(store.endState(id).energy);
    content.energy = cards::runEnergy(energies);
    return content;
}

void ResultCardSaver::saveSelectedBenchmarkCard() {
    const BenchmarkID id = store_.selectedID();
    // A skipped or failed benchmark has no score to put on a card.
    const auto& outcome = store_.rows()[id].outcome;
    if (!outcome || outcome->status != OutcomeStatus::ok) return;
    save([content = benchmarkCardContent(store_, id)] { return cards::renderBenchmarkCard(content); },
         Exporter::filename(Exporter::benchmarkCardPrefix(id)));
}

void ResultCardSaver::saveSummaryCard() {
    if (!store_.runSummary()) return;
    save([content = summaryCardContent(store_)] { return cards::renderSummaryCard(content); },
         Exporter::filename(Exporter::summaryCardPrefix()));
}

void ResultCardSaver::save(std::function<QImage()> render, const QString& suggestedName) {
    auto* dialog = new QFileDialog(window_, tr("Save Result Card"));
    dialog->setObjectName(QStringLiteral("resultCardDialog"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setMimeTypeFilters({QStringLiteral("image/png")});
    dialog->setDefaultSuffix(QStringLiteral("png"));
    // A folder that went away since the last card would leave the dialog somewhere arbitrary.
    if (!QFileInfo(directory_).isDir()) directory_ = defaultDirectory();
    dialog->setDirectory(directory_);
    dialog->selectFile(suggestedName);
    // The window stays usable while the dialog is open, as a sheet would leave it.
    dialog->setWindowModality(Qt::NonModal);
    useDarkSurfaces(*dialog);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, render = std::move(render)](const QString& path) {
                // Only a folder the card reached is offered again: one that refused it (or
                // a pseudo file system such as /proc) would only fail, or stall the dialog.
                if (const auto problem = Exporter::writePNG(render(), path)) {
                    showSaveError(*problem);
                    return;
                }
                directory_ = QFileInfo(path).absolutePath();
                showSaved(QFileInfo(path).absoluteFilePath());
            });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->show();
}

void ResultCardSaver::showSaved(const QString& path) {
    if (!window_) return;
    if (!notice_) {
        // A brief note over the foot of the window, in the dark style with a success edge;
        // it takes no focus and goes by itself.
        notice_ = new QLabel(window_);
        notice_->setObjectName(QStringLiteral("resultCardSaved"));
        notice_->setFocusPolicy(Qt::NoFocus);
        notice_->setTextInteractionFlags(Qt::TextSelectableByMouse);
        notice_->setStyleSheet(
            QStringLiteral("QLabel#resultCardSaved { background: #1b1f24; color: %1; "
                           "border: 1px solid %2; border-radius: 8px; padding: 8px 14px; "
                           "font-size: 13px; }")
                .arg(theme::text().name(QColor::HexArgb), theme::stateColor(TestRunState::done).name()));
    }
    // Centred under the result, clear of the benchmark list and its footer.
    int left = 16;
    if (const auto* main = qobject_cast<MainWindow*>(window_.data()))
        left = main->sidebar()->mapTo(main, QPoint(main->sidebar()->width(), 0)).x() + 16;
    const int room = std::max(240, window_->width() - left - 16);
    const QString shown = QDir::toNativeSeparators(path);
    notice_->ensurePolished();
    const QString text = tr("Result card saved to %1").arg(shown);
    notice_->setText(notice_->fontMetrics().elidedText(text, Qt::ElideMiddle, room - 32));
    notice_->setToolTip(shown);
    notice_->adjustSize();
    notice_->move(std::max(0, left + (room - notice_->width()) / 2),
                  window_->height() - notice_->height() - 24);
    notice_->raise();
    notice_->show();
    noticeTimer_.start();
}

void ResultCardSaver::showSaveError(const QString& reason) {
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Quarbel"),
                                tr("Could not save result card"), QMessageBox::Ok, window_);
    box->setObjectName(QStringLiteral("resultCardError"));
    box->setInformativeText(reason);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::ApplicationModal);
    useDarkSurfaces(*box);
    box->show();
}

} // namespace quarbel::ui
