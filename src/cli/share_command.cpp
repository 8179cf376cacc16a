// SPDX-License-Identifier: Apache-2.0
#include "cli/share_command.h"

#include "cli/command_output.h"
#include "results/json_report.h"
#include "results/regular_file.h"
#include "results/report_file.h"
#include "results/run_comparison.h"
#include "results/run_history.h"
#include "results/shared_report.h"
#include "session/card_writer.h"
#include "session/run_session.h"
#include "ui/cards/shared_page.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace quarbel::cli {
int shareCommand(const std::string& run, const std::optional<std::string>& outPath) {
    std::string path = run;
    if (!run.empty() && run.find_first_not_of("0123456789") == std::string::npos) {
        const HistoryListing history = listHistory(historyDirectory(), HistoryDetail::order);
        for (const auto& warning : history.warnings)
            std::fprintf(stderr, "quarbel: %s\n", warning.c_str());
        auto saved = resolveSavedRun(run, history);
        if (const auto* problem = std::get_if<std::string>(&saved)) return badInput(*problem);
        path = std::get<SavedRun>(saved).path;
    }
    // The page carries the report's own bytes, so they are read once and parsed from there.
    FileText file = readRegularFile(path, kLargestReportBytes);
    if (!file.problem.empty()) return badInput(path + " " + file.problem);
    auto report = parseJsonReportFrom(path, file.text);
    if (const auto* problem = std::get_if<std::string>(&report)) return badInput(*problem);
    RunReport& parsed = std::get<RunReport>(report);

    std::string target = outPath.value_or("");
    if (!outPath) {
        std::string stamp = isoTimestamp(parsed.startedAt);
        stamp.erase(std::remove(stamp.begin(), stamp.end(), ':'), stamp.end());
        target = "quarbel-run-" + stamp + ".html";
    }
    auto resolved = resolveReportTarget("--out", target);
    if (const auto* problem = std::get_if<std::string>(&resolved)) return badInput(*problem);
    const ReportTarget destination = std::get<ReportTarget>(std::move(resolved));

    // The charts are painted, which needs a graphics application; no display is used.
    int argc = 1;
    char name[] = "quarbel";
    char* argv[] = {name, nullptr};
    const auto application =
        QCoreApplication::instance() ? nullptr : session::makeApplication(argc, argv, true);
    const std::string page = cards::sharedPage(path, file.text, std::move(parsed));

    if (destination.standardOutput) {
        std::fputs(page.c_str(), stdout);
        return session::kExitOk;
    }
    const ReportWrite written = writeReportFile(destination, page);
    if (!written.problem.empty()) {
        std::fprintf(stderr, "quarbel: %s\n", written.problem.c_str());
        if (!written.keptAt.empty()) std::remove(written.keptAt.c_str());
        return session::kExitFailed;
    }
    std::printf("Shared page written to %s (report SHA-256 %s); 'quarbel import' takes it back\n",
                target.c_str(), sha256Hex(file.text).c_str());
    return session::kExitOk;
}

} // namespace quarbel::cli
