#include "cli/card_command.h"

#include "cli/cards_directory.h"
#include "cli/json_report.h"
#include "cli/run_session.h"
#include "ui/cards/result_card_exporter.h"

#include <QGuiApplication>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace quarbel::cli {

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

int cardCommand(const std::string& reportPath, const std::string& outArgument, int& argc, char** argv) {
    if (std::error_code ignored; std::filesystem::is_directory(reportPath, ignored)) {
        std::fprintf(stderr, "quarbel: %s is a directory, not a JSON report\n", reportPath.c_str());
        return kExitBadInput;
    }
    std::ifstream in(reportPath, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "quarbel: cannot read %s: %s\n", reportPath.c_str(), std::strerror(errno));
        return kExitBadInput;
    }
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) {
        std::fprintf(stderr, "quarbel: cannot read %s\n", reportPath.c_str());
        return kExitBadInput;
    }
    auto parsed = parseJsonReport(text.str());
    if (const auto* problem = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "quarbel: %s is not a Quarbel JSON report: %s\n", reportPath.c_str(),
                     problem->c_str());
        return kExitBadInput;
    }
    const auto directory = prepareCardsDirectory("--out", outArgument);
    if (const auto* problem = std::get_if<std::string>(&directory)) {
        std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
        return kExitBadInput;
    }
    const auto application = makeApplication(argc, argv, true);
    return writeCards(std::get<RunReport>(parsed), std::get<CardsDirectory>(directory).path, stdout);
}

} // namespace quarbel::cli
