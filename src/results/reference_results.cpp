// SPDX-License-Identifier: Apache-2.0
#include "results/reference_results.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace quarbel {

namespace fs = std::filesystem;

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

std::vector<KnownMachine> readReferences(std::vector<std::string>* skipped) {
    std::vector<KnownMachine> machines;
    for (const ReferenceReport& report : referenceReports()) {
        std::string problem;
        auto run = readSavedRun(report.path, &problem);
        if (!run) {
            if (skipped != nullptr) skipped->push_back(report.name + " skipped: " + problem);
            continue;
        }
        machines.push_back({report.name, std::move(*run), referenceGpu(report.path)});
    }
    return machines;
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

std::string otherVersionNote(const std::string& reportVersion) {
    if (reportVersion == QUARBEL_VERSION) return {};
    return "from Quarbel " + (reportVersion.empty() ? std::string("(unknown version)") : reportVersion) +
           ": judged only where that version scores alike";
}

std::string referenceGpu(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const auto document = nlohmann::json::parse(in, nullptr, false);
    if (!document.is_object()) return {};
    const auto machine = document.find("machine");
    if (machine == document.end() || !machine->is_object()) return {};
    const auto gpu = machine->find("gpu");
    return gpu != machine->end() && gpu->is_string() ? gpu->get<std::string>() : std::string();
}

} // namespace quarbel
