// SPDX-License-Identifier: Apache-2.0
// The texts keep the history window's translation context, so that its catalogue still finds
// them.
#include "app/history_saving.h"

#include "app/shared_window.h"
#include "results/report_file.h"
#include "ui/cards/result_card_exporter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

#include <fstream>

namespace quarbel::app {
namespace {

namespace Exporter = cards::ResultCardExporter;

// The umask, read without changing it (changing it would race with other threads).
mode_t newFileMode() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask:"))
            return static_cast<mode_t>(0666 & ~std::stoul(line.substr(6), nullptr, 8));
    return 0644;
}

QFileDialog* dialog(QWidget* parent, const QString& title, const QString& name, const QString& folder) {
    auto* dialog = new QFileDialog(parent, title);
    dialog->setObjectName(name);
    applyDarkPalette(*dialog);
    dialog->setDirectory(folder.isEmpty() ? QDir::homePath() : folder);
    dialog->setWindowModality(Qt::NonModal);
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    return dialog;
}

} // namespace

HistorySave saveRunCards(const RunReport& report, const QString& directory) {
    const QString what =
        QCoreApplication::translate("quarbel::app::HistoryView", "Could not save the result cards");
    if (!QFileInfo(directory).isDir())
        return {
            {},
            what,
            QCoreApplication::translate("quarbel::app::HistoryView", "%1 is not a folder.").arg(directory)};
    // A failed save takes back the cards it added, so the folder is as it was.
    const QStringList before = QDir(directory).entryList(QDir::Files | QDir::Hidden);
    const Exporter::CardsWritten written = Exporter::writeReportCards(report, directory);
    if (written.problem) {
        for (const QString& path : written.paths)
            if (!before.contains(QFileInfo(path).fileName())) QFile::remove(path);
        return {{}, what, *written.problem};
    }
    // Two sentences rather than a numerus form, so that English reads well without a translation.
    return {written.paths.size() == 1
                ? QCoreApplication::translate("quarbel::app::HistoryView", "Saved 1 result card in %1.")
                      .arg(directory)
                : QCoreApplication::translate("quarbel::app::HistoryView", "Saved %1 result cards in %2.")
                      .arg(written.paths.size())
                      .arg(directory),
            {},
            {}};
}

HistorySave saveRunReport(const std::string& text, const QString& path) {
    const QString what =
        QCoreApplication::translate("quarbel::app::HistoryView", "Could not save the report");
    const QFileInfo target(path);
    // The file a link leads to is replaced, the link stays; only a plain file is replaced.
    if (target.exists() && !target.isFile())
        return {
            {},
            what,
            QCoreApplication::translate("quarbel::app::HistoryView", "%1 is not a regular file.").arg(path)};
    const QString resolved = target.exists() ? target.canonicalFilePath() : target.absoluteFilePath();
    const ReportWrite write = writeReportFile({false, resolved.toStdString(), newFileMode()}, text);
    if (!write.problem.empty()) {
        QString reason = QString::fromStdString(write.problem);
        if (!write.keptAt.empty())
            reason += QLatin1Char('\n') + QCoreApplication::translate("quarbel::app::HistoryView",
                                                                      "A complete copy is kept at %1.")
                                              .arg(QString::fromStdString(write.keptAt));
        return {{}, what, reason};
    }
    return {QCoreApplication::translate("quarbel::app::HistoryView", "Saved the report as %1.").arg(resolved),
            {},
            {}};
}

void showSaveProblem(QWidget* parent, const QString& what, const QString& reason) {
    auto* box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Quarbel"), what, QMessageBox::Ok, parent);
    box->setObjectName(QStringLiteral("historySaveError"));
    box->setInformativeText(reason);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    applyDarkPalette(*box);
    box->show();
}

QFileDialog* cardsFolderDialog(QWidget* parent, const QString& folder) {
    QFileDialog* folders =
        dialog(parent, QCoreApplication::translate("quarbel::app::HistoryView", "Save Result Cards"),
               QStringLiteral("historyCardsDialog"), folder);
    folders->setFileMode(QFileDialog::Directory);
    folders->setOption(QFileDialog::ShowDirsOnly);
    return folders;
}

QFileDialog* reportFileDialog(QWidget* parent, const QString& folder, const std::string& startedAt) {
    QString stamp = QString::fromStdString(startedAt);
    stamp.remove(':').replace('T', '-').remove('Z');
    QFileDialog* files =
        dialog(parent, QCoreApplication::translate("quarbel::app::HistoryView", "Save JSON Report"),
               QStringLiteral("historyReportDialog"), folder);
    files->setAcceptMode(QFileDialog::AcceptSave);
    files->setFileMode(QFileDialog::AnyFile);
    files->setMimeTypeFilters({QStringLiteral("application/json")});
    files->setDefaultSuffix(QStringLiteral("json"));
    files->selectFile(QStringLiteral("Quarbel-Report-%1.json").arg(stamp));
    return files;
}

} // namespace quarbel::app
