// SPDX-License-Identifier: Apache-2.0
#include "cli/reference_command.h"

#include "model/number_format.h"
#include "results/reference_results.h"
#include "results/run_history.h"
#include "session/run_session.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace quarbel::cli {

int referenceCommand(bool asJson) {
    std::vector<std::string> skipped;
    const auto references = readReferences(&skipped);
    for (const auto& problem : skipped)
        std::fprintf(stderr, "quarbel: reference %s\n", problem.c_str());
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    std::string text;
    for (const KnownMachine& reference : references) {
        const SavedRun& run = reference.run;
        const std::string& gpu = reference.gpu;
        const std::string machine = run.machine + (gpu.empty() ? "" : " \u00b7 " + gpu);
        list.push_back({{"name", reference.name},
                        {"path", run.path},
                        {"machine", machine},
                        {"globalScore", run.globalScore},
                        {"version", run.version},
                        {"sameVersion", run.version == QUARBEL_VERSION},
                        {"startedAt", run.startedAt}});
        const std::string note = otherVersionNote(run.version);
        text += reference.name + "  " + machine + "  " + scoreText(run.globalScore) + " pts  Quarbel " +
                run.version + "  " + run.startedAt.substr(0, 10) + (note.empty() ? "" : "  (" + note + ")") +
                "\n";
    }
    if (references.empty() && skipped.empty()) {
        std::fprintf(stderr, "quarbel: no reference results were found in %s\n",
                     referenceDirectory().c_str());
        return session::kExitFailed;
    }
    std::fputs(asJson ? (list.dump(2) + "\n").c_str() : text.c_str(), stdout);
    return session::kExitOk;
}

} // namespace quarbel::cli
