// SPDX-License-Identifier: Apache-2.0
#include "cli/import_command.h"

#include "results/json_report.h"
#include "results/regular_file.h"
#include "results/run_history.h"
#include "results/shared_report.h"
#include "session/run_session.h"

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace quarbel::cli {
namespace {

// What makes two reports the same run: where and when it ran, and what it scored.
std::string runKey(const SavedRun& run) {
    std::ostringstream key;
    key.precision(17);
    key << run.startedAt << '|' << (run.machineId.empty() ? run.machine : run.machineId) << '|'
        << run.globalScore;
    for (const auto& result : run.results)
        key << '|' << result.title << '=' << result.score;
    return key.str();
}

} // namespace

int importCommand(const std::vector<std::string>& files) {
    const std::string directory = historyDirectory();
    if (directory.empty()) {
        std::fprintf(stderr, "quarbel: no history folder: set XDG_DATA_HOME or HOME\n");
        return session::kExitBadInput;
    }
    struct Incoming {
        std::string path;
        std::string text;
        SavedRun run;
    };
    std::vector<Incoming> incoming;
    for (const std::string& path : files) {
        // Each file is read once; the strict reader decides what is a report, the listing's
        // reader gives the key.
        FileText file = readRegularFile(path, kLargestReportBytes);
        if (!file.problem.empty()) {
            std::fprintf(stderr, "quarbel: %s %s; nothing was imported\n", path.c_str(),
                         file.problem.c_str());
            return session::kExitBadInput;
        }
        // A page written by 'quarbel share' hands over the report it carries, if unaltered.
        if (isSharedPage(file.text)) {
            SharedReport shared = embeddedReport(file.text);
            if (!shared.problem.empty()) {
                std::fprintf(stderr, "quarbel: %s %s; nothing was imported\n", path.c_str(),
                             shared.problem.c_str());
                return session::kExitBadInput;
            }
            file.text = std::move(shared.report);
        }
        if (auto report = parseJsonReportFrom(path, file.text); std::holds_alternative<std::string>(report)) {
            std::fprintf(stderr, "quarbel: %s; nothing was imported\n",
                         std::get<std::string>(report).c_str());
            return session::kExitBadInput;
        }
        std::string problem;
        auto run = savedRunFromText(file.text, path, &problem);
        if (!run) {
            std::fprintf(stderr, "quarbel: %s %s; nothing was imported\n", path.c_str(), problem.c_str());
            return session::kExitBadInput;
        }
        incoming.push_back({path, std::move(file.text), std::move(*run)});
    }

    std::set<std::string> known;
    for (const SavedRun& run : listHistory(directory).runs)
        known.insert(runKey(run));
    int duplicates = 0;
    std::vector<const Incoming*> fresh;
    std::vector<HistoryEntry> entries;
    for (const Incoming& file : incoming) {
        if (!known.insert(runKey(file.run)).second) {
            std::printf("%s: already in the history, skipped\n", file.path.c_str());
            ++duplicates;
            continue;
        }
        fresh.push_back(&file);
        entries.push_back({file.run.startedAt, file.text});
    }
    const HistoryBatchSave saved = saveAllToHistory(directory, entries);
    if (!saved.problem.empty()) {
        std::fprintf(stderr, "quarbel: nothing was imported: %s\n", saved.problem.c_str());
        return session::kExitFailed;
    }
    for (std::size_t i = 0; i < fresh.size(); ++i)
        std::printf("%s: imported as %s\n", fresh[i]->path.c_str(), saved.paths[i].c_str());
    const int imported = static_cast<int>(fresh.size());
    std::printf("%d imported, %d already in the history.\n", imported, duplicates);
    return session::kExitOk;
}

} // namespace quarbel::cli
