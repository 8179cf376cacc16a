#include "cli/reference_command.h"

#include "model/number_format.h"
#include "results/run_history.h"
#include "session/run_session.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace quarbel::cli {
namespace {

namespace fs = std::filesystem;

// The GPU the report's machine names; empty when it names none.
std::string gpuOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const auto document = nlohmann::json::parse(in, nullptr, false);
    if (!document.is_object()) return {};
    const auto machine = document.find("machine");
    if (machine == document.end() || !machine->is_object()) return {};
    const auto gpu = machine->find("gpu");
    return gpu != machine->end() && gpu->is_string() ? gpu->get<std::string>() : std::string();
}

} // namespace

std::string referenceDirectory() {
    if (const char* chosen = std::getenv("QUARBEL_REFERENCE_DIR"); chosen != nullptr && *chosen != '\0')
        return chosen;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path installed = program.parent_path().parent_path() / "share/quarbel/reference";
        if (fs::is_directory(installed, error)) return installed.string();
    }
    return QUARBEL_SOURCE_REFERENCE_DIR;
}

std::vector<ReferenceReport> referenceReports() {
    std::vector<ReferenceReport> reports;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(referenceDirectory(), error)) {
        if (entry.path().extension() != ".json" || !entry.is_regular_file(error)) continue;
        reports.push_back({entry.path().stem().string(), entry.path().string()});
    }
    std::sort(reports.begin(), reports.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return reports;
}

ReferenceLookup findReference(const std::string& name) {
    std::string names;
    for (const ReferenceReport& report : referenceReports()) {
        if (report.name == name) return {report.path, {}};
        names += (names.empty() ? "" : ", ") + report.name;
    }
    if (names.empty()) return {{}, "no reference results were found in " + referenceDirectory()};
    return {{},
            "--reference: no reference named '" + name + "'; there are " + names +
                " (see 'quarbel reference')"};
}

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
        const std::string gpu = gpuOf(report.path);
        const std::string machine = run->machine + (gpu.empty() ? "" : " \u00b7 " + gpu);
        list.push_back({{"name", report.name},
                        {"path", report.path},
                        {"machine", machine},
                        {"globalScore", run->globalScore},
                        {"version", run->version},
                        {"startedAt", run->startedAt}});
        text += report.name + "  " + machine + "  " + scoreText(run->globalScore) + " pts  Quarbel " +
                run->version + "  " + run->startedAt.substr(0, 10) + "\n";
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
