#include "cli/reference_command.h"

#include "model/number_format.h"
#include "results/reference_results.h"
#include "results/run_history.h"
#include "session/run_session.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace quarbel::cli {

int referenceCommand(bool asJson) {
    const auto reports = referenceReports();
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    std::string text;
    for (const ReferenceReport& report : reports) {
        std::string problem;
        const auto run = readSavedRun(report.path, &problem);
        if (!run) {
            std::fprintf(stderr, "quarbel: reference %s skipped: %s\n", report.name.c_str(), problem.c_str());
            continue;
        }
        const std::string gpu = referenceGpu(report.path);
        const std::string machine = run->machine + (gpu.empty() ? "" : " \u00b7 " + gpu);
        list.push_back({{"name", report.name},
                        {"path", report.path},
                        {"machine", machine},
                        {"globalScore", run->globalScore},
                        {"version", run->version},
                        {"sameVersion", run->version == QUARBEL_VERSION},
                        {"startedAt", run->startedAt}});
        const std::string note = otherVersionNote(run->version);
        text += report.name + "  " + machine + "  " + scoreText(run->globalScore) + " pts  Quarbel " +
                run->version + "  " + run->startedAt.substr(0, 10) +
                (note.empty() ? "" : "  (" + note + ")") + "\n";
    }
    if (reports.empty()) {
        std::fprintf(stderr, "quarbel: no reference results were found in %s\n",
                     referenceDirectory().c_str());
        return session::kExitFailed;
    }
    std::fputs(asJson ? (list.dump(2) + "\n").c_str() : text.c_str(), stdout);
    return session::kExitOk;
}

} // namespace quarbel::cli
