// SPDX-License-Identifier: Apache-2.0
#include "cli/export_command.h"

#include "cli/command_output.h"
#include "results/json_report.h"
#include "results/openmetrics.h"
#include "results/report_file.h"
#include "results/run_comparison.h"
#include "results/run_export.h"
#include "session/card_writer.h"
#include "session/run_session.h"
#include "ui/cards/html_export.h"

#include <QCoreApplication>

#include <cstdio>

namespace quarbel::cli {
int exportCommand(const std::vector<std::string>& runs, const std::string& formatName,
                  const std::optional<std::string>& outPath) {
    const auto format = exportFormatNamed(formatName);
    if (!format)
        return badInput("--format must be csv, md, html, json or openmetrics, not '" + formatName + "'");
    if (*format == ExportFormat::openMetrics && runs.size() != 1)
        return badInput("--format openmetrics exports one run: its series would repeat for several");
    std::optional<ReportTarget> target;
    if (outPath) {
        auto resolved = resolveReportTarget("--out", *outPath);
        if (const auto* problem = std::get_if<std::string>(&resolved)) return badInput(*problem);
        target = std::get<ReportTarget>(std::move(resolved));
    }

    // Numbers name runs of the history; the history is read only when one is used.
    std::optional<HistoryListing> history;
    std::vector<ExportedRun> exported;
    for (const std::string& name : runs) {
        std::string path = name;
        if (!name.empty() && name.find_first_not_of("0123456789") == std::string::npos) {
            if (!history) {
                history = listHistory(historyDirectory(), HistoryDetail::order);
                for (const auto& warning : history->warnings)
                    std::fprintf(stderr, "quarbel: %s\n", warning.c_str());
            }
            auto saved = resolveSavedRun(name, *history);
            if (const auto* problem = std::get_if<std::string>(&saved)) return badInput(*problem);
            path = std::get<SavedRun>(saved).path;
        }
        auto report = readJsonReportFile(path);
        if (const auto* problem = std::get_if<std::string>(&report)) return badInput(*problem);
        exported.push_back({name, std::get<RunReport>(std::move(report))});
    }

    std::string text;
    switch (*format) {
    case ExportFormat::csv: text = exportCsv(exported); break;
    case ExportFormat::markdown: text = exportMarkdown(exported); break;
    case ExportFormat::html: {
        // The charts are painted, and painting text needs a graphics application; no
        // display is used.
        int argc = 1;
        char name[] = "quarbel";
        char* argv[] = {name, nullptr};
        const auto application =
            QCoreApplication::instance() ? nullptr : session::makeApplication(argc, argv, true);
        text = cards::exportHtml(exported);
        break;
    }
    case ExportFormat::json: text = exportJson(exported); break;
    case ExportFormat::openMetrics: text = openMetricsText(exported.front().report); break;
    }
    if (!target || target->standardOutput) {
        std::fputs(text.c_str(), stdout);
        return session::kExitOk;
    }
    const ReportWrite written = writeReportFile(*target, text);
    if (written.problem.empty()) return session::kExitOk;
    std::fprintf(stderr, "quarbel: %s\n", written.problem.c_str());
    // A copy that could not be put in place is not an export: nothing half-written stays.
    if (!written.keptAt.empty()) std::remove(written.keptAt.c_str());
    return session::kExitFailed;
}

} // namespace quarbel::cli
