// SPDX-License-Identifier: Apache-2.0
#include "session/card_writer.h"

#include "session/run_session.h"
#include "ui/cards/result_card_exporter.h"

#include <QGuiApplication>

namespace quarbel::session {

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool drawsCards) {
    if (!drawsCards) return std::make_unique<QCoreApplication>(argc, argv);
    // The command line never shows a window: whatever platform the environment names,
    // cards are drawn offscreen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int writeCards(const RunReport& report, const std::string& directory, std::FILE* out) {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        std::fputs("quarbel: result cards need the graphics application; none were written\n", stderr);
        return kExitFailed;
    }
    const auto written =
        cards::ResultCardExporter::writeReportCards(report, QString::fromStdString(directory));
    for (const QString& path : written.paths)
        std::fprintf(out, "Result card: %s\n", path.toUtf8().constData());
    if (!report.summary && !written.problem)
        std::fputs("No global result card: the run has no summary (it was stopped).\n", out);
    std::fflush(out);
    if (!written.problem) return kExitOk;
    std::fprintf(stderr, "quarbel: cannot write result card %s\n", written.problem->toUtf8().constData());
    return kExitFailed;
}

} // namespace quarbel::session
