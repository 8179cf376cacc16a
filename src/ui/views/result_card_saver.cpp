#include "ui/views/result_card_saver.h"

#include "run/benchmark_store.h"
#include "sensors/system_snapshot.h"
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_exporter.h"
#include "ui/views/main_window.h"
#include "ui/views/result_panel.h"
#include "ui/views/summary_panel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

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

} // namespace

ResultCardSaver::ResultCardSaver(BenchmarkStore& store, MainWindow& window)
    : QObject(&window), store_(store), window_(&window),
      directory_(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)) {
    if (directory_.isEmpty() || !QFileInfo(directory_).isDir()) directory_ = QDir::homePath();
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
            appVersion()};
}

cards::SummaryCardContent ResultCardSaver::summaryCardContent(const BenchmarkStore& store) {
    return {store.runSummary().value_or(RunSummary{}),
            store.rows(),
            store.totalScore(),
            store.budgetScale() < 1.0,
            std::chrono::system_clock::now(),
            hardwareRows(),
            appVersion()};
}

void ResultCardSaver::saveSelectedBenchmarkCard() {
    const BenchmarkID id = store_.selectedID();
    if (!store_.rows()[id].outcome) return;
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
    dialog->setDirectory(directory_);
    dialog->selectFile(suggestedName);
    // The window stays usable while the dialog is open, as a sheet would leave it.
    dialog->setWindowModality(Qt::NonModal);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, render = std::move(render)](const QString& path) {
                directory_ = QFileInfo(path).absolutePath();
                if (const auto problem = Exporter::writePNG(render(), path)) showSaveError(*problem);
            });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->show();
}

void ResultCardSaver::showSaveError(const QString& reason) {
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Quarbel"),
                                tr("Could not save result card"), QMessageBox::Ok, window_);
    box->setObjectName(QStringLiteral("resultCardError"));
    box->setInformativeText(reason);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::ApplicationModal);
    box->show();
}

} // namespace quarbel::ui
