// SPDX-License-Identifier: Apache-2.0
#include "results/run_history.h"

#include "results/manifest_json.h"

#include "results/history_index.h"
#include "results/json_report.h"
#include "results/regular_file.h"
#include "results/report_file.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <sys/stat.h>

namespace quarbel {
namespace {

using json = nlohmann::json;
namespace fs = std::filesystem;

// Runs that may start in one second, each with a name of its own.
constexpr int kMostRunsPerSecond = 1000;

// "2026-11-23T14:15:02Z" -> "2026-11-23-141502Z": sorts like the time and is a plain file name.
std::string stampFromIso(const std::string& iso) {
    std::string stamp;
    for (const char c : iso) {
        if (c == 'T')
            stamp += '-';
        else if (c != ':' && (std::isalnum(static_cast<unsigned char>(c)) || c == '-'))
            stamp += c;
    }
    return stamp.empty() ? "run" : stamp;
}

// Creates `directory` and its missing parents, each new one private to the user.
std::string makeDirectories(const std::string& directory) {
    fs::path partial;
    for (const auto& part : fs::path(directory)) {
        partial /= part;
        if (::mkdir(partial.c_str(), 0700) != 0 && errno != EEXIST) return std::strerror(errno);
    }
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return "not a directory";
    return {};
}

template <typename T> T valueOr(const json& object, const char* key, T fallback) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return fallback;
    try {
        return found->get<T>();
    } catch (const json::exception&) {
        return fallback;
    }
}

// The names a run's report may take, in order: "2026-11-23-141502Z.json", then "-2", "-3" ...
ReportNames reportNames(const std::string& startedAtIso) {
    return {stampFromIso(startedAtIso), kMostRunsPerSecond - 1};
}

} // namespace

std::string historyDirectory() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && data[0] == '/') return std::string(data) + "/quarbel/runs";
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/share/quarbel/runs";
    return {};
}

HistorySave saveToHistory(const std::string& directory, const std::string& startedAtIso,
                          const std::string& reportText) {
    if (directory.empty()) return {{}, "no home directory to keep it in"};
    if (const std::string problem = makeDirectories(directory); !problem.empty())
        return {{}, "cannot create " + directory + ": " + problem};
    NewReportFile written = writeNewReportFile(directory, reportNames(startedAtIso), 0644, reportText);
    return {std::move(written.path), std::move(written.problem)};
}

HistoryBatchSave saveAllToHistory(const std::string& directory, const std::vector<HistoryEntry>& entries) {
    if (entries.empty()) return {};
    if (directory.empty()) return {{}, "no home directory to keep them in"};
    if (const std::string problem = makeDirectories(directory); !problem.empty())
        return {{}, "cannot create " + directory + ": " + problem};
    std::vector<NewReport> reports;
    reports.reserve(entries.size());
    for (const HistoryEntry& entry : entries)
        reports.push_back({reportNames(entry.startedAtIso), entry.reportText});
    NewReportBatch written = writeNewReportFiles(directory, reports, 0644);
    return {std::move(written.paths), std::move(written.problem)};
}

std::optional<SavedRun> readSavedRun(const std::string& path, std::string* problem) {
    FileText file = readRegularFile(path, kLargestReportBytes);
    if (!file.problem.empty()) {
        if (problem != nullptr) *problem = std::move(file.problem);
        return std::nullopt;
    }
    return savedRunFromText(file.text, path, problem);
}

std::optional<SavedRun> savedRunFromText(const std::string& text, const std::string& path,
                                         std::string* problem) {
    const auto fail = [&](const std::string& why) -> std::optional<SavedRun> {
        if (problem != nullptr) *problem = why;
        return std::nullopt;
    };
    json document;
    try {
        document = json::parse(text);
    } catch (const json::parse_error& error) {
        return fail(std::string("is not valid JSON (") + error.what() + ")");
    } catch (const json::exception& error) { // valid grammar, but a number no double holds
        return fail(std::string("does not read as a report (") + error.what() + ")");
    }
    if (!document.is_object() || !document.contains("results") || !document["results"].is_array() ||
        !document.contains("schema"))
        return fail("is not a Quarbel report");
    SavedRun run;
    run.path = path;
    run.startedAt = valueOr<std::string>(document, "startedAt", "");
    if (document.contains("app") && document["app"].is_object())
        run.version = valueOr<std::string>(document["app"], "version", "");
    run.mode = valueOr<std::string>(document, "mode", "standard");
    run.quick = valueOr<bool>(document, "quick", false);
    run.globalScore = valueOr<double>(document, "globalScore", 0.0);
    const json summary = document.value("summary", json(nullptr));
    run.stopped = !summary.is_object();
    run.title = run.stopped ? "Stopped run" : valueOr<std::string>(summary, "title", "Run");
    if (!run.stopped) run.runScore = valueOr<double>(summary, "score", 0.0);
    if (document.contains("system") && document["system"].is_array())
        for (const auto& row : document["system"])
            if (row.is_object() && valueOr<std::string>(row, "label", "") == "CPU")
                run.machine = valueOr<std::string>(row, "value", "");
    if (const auto machine = document.find("machine"); machine != document.end() && machine->is_object()) {
        run.machineId = valueOr<std::string>(*machine, "machineId", "");
        run.hostName = valueOr<std::string>(*machine, "hostName", "");
    }
    if (const auto manifest = document.find("manifest"); manifest != document.end())
        run.manifest = manifestFromJson(*manifest);
    for (const auto& result : document["results"]) {
        if (!result.is_object()) return fail("has a result that is not an object");
        SavedResult saved;
        saved.id = valueOr<std::string>(result, "id", "");
        saved.title = valueOr<std::string>(result, "title", saved.id);
        saved.status = valueOr<std::string>(result, "status", "");
        saved.score = valueOr<double>(result, "score", 0.0);
        if (result.contains("spreadPercent") && result["spreadPercent"].is_number())
            saved.spreadPercent = result["spreadPercent"].get<double>();
        if (saved.title.empty()) return fail("has a result without a title");
        // A result whose statistics do not read is compared the way older reports are.
        if (readStatistics(result, saved.statistics)) saved.statistics = {};
        run.results.push_back(std::move(saved));
    }
    return run;
}

HistoryListing listHistory(const std::string& directory, HistoryDetail detail) {
    HistoryListing listing;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(directory.c_str()), ::closedir);
    if (!entries) return listing; // no history yet
    const std::string folder = directory.ends_with('/') ? directory : directory + '/';
    // Each report is read once: later listings take what it said from the index, as long as
    // the file keeps its size and modification time.
    const std::string indexPath = historyIndexPath(directory);
    std::string unusableIndex;
    auto index = readHistoryIndex(indexPath, detail == HistoryDetail::results, &unusableIndex);
    const std::size_t indexed = index.size();
    std::vector<IndexedFile> files;
    files.reserve(indexed);
    bool changed = false;
    while (const dirent* entry = ::readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        if (name.size() <= 5 || !name.ends_with(".json")) continue;
        struct stat info {};
        if (::fstatat(::dirfd(entries.get()), entry->d_name, &info, 0) != 0 || !S_ISREG(info.st_mode))
            continue;
        IndexedFile file;
        file.name = name;
        file.size = static_cast<std::uintmax_t>(info.st_size);
        file.modifiedNanoseconds = std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
        if (const auto known = index.find(file.name);
            known != index.end() && known->second.size == file.size &&
            known->second.modifiedNanoseconds == file.modifiedNanoseconds) {
            files.push_back(std::move(known->second));
            continue;
        }
        // An index read without results cannot be written back: the full listing reads the
        // new reports and brings the index up to date.
        if (detail == HistoryDetail::order) return listHistory(directory, HistoryDetail::results);
        file.run = readSavedRun(folder + file.name, &file.problem);
        files.push_back(std::move(file));
        changed = true;
    }
    if (changed || files.size() != indexed || !unusableIndex.empty()) {
        if (detail == HistoryDetail::order) return listHistory(directory, HistoryDetail::results);
        const bool rebuilt = writeHistoryIndex(indexPath, files);
        if (!unusableIndex.empty())
            listing.warnings.push_back(indexPath + " " + unusableIndex +
                                       ": the runs were read from their reports" +
                                       (rebuilt ? " and the index made again" : ""));
    }
    // Newest first; runs started in the same second come in the order of their "-2", "-3"
    // suffixes, which saveToHistory gives in the order they ended, and then by name.
    struct Place {
        IndexedFile* file;
        int suffix;
    };
    std::vector<Place> order;
    order.reserve(files.size());
    for (IndexedFile& file : files) {
        const std::string_view stem = std::string_view(file.name).substr(0, file.name.size() - 5);
        const auto dash = stem.rfind('-');
        int suffix = 1;
        if (dash != std::string_view::npos && dash + 1 < stem.size() && stem.size() - dash < 9 &&
            std::all_of(stem.begin() + long(dash) + 1, stem.end(),
                        [](char c) { return c >= '0' && c <= '9'; }))
            suffix = std::stoi(std::string(stem.substr(dash + 1)));
        order.push_back({&file, suffix});
    }
    const std::string startedAtOfBadFile;
    std::sort(order.begin(), order.end(), [&](const Place& a, const Place& b) {
        const std::string& startedA = a.file->run ? a.file->run->startedAt : startedAtOfBadFile;
        const std::string& startedB = b.file->run ? b.file->run->startedAt : startedAtOfBadFile;
        if (const int c = startedA.compare(startedB); c != 0) return c > 0;
        if (a.suffix != b.suffix) return a.suffix > b.suffix;
        return a.file->name > b.file->name;
    });
    listing.runs.reserve(order.size());
    for (const Place& place : order) {
        IndexedFile& file = *place.file;
        if (file.run) {
            file.run->path = folder + file.name;
            listing.runs.push_back(std::move(*file.run));
        } else {
            listing.warnings.push_back("skipped " + folder + file.name + ": it " + file.problem);
        }
    }
    return listing;
}

bool shareBenchmarks(const SavedRun& a, const SavedRun& b) {
    return std::any_of(a.results.begin(), a.results.end(), [&](const SavedResult& first) {
        return std::any_of(b.results.begin(), b.results.end(),
                           [&](const SavedResult& second) { return first.title == second.title; });
    });
}

std::optional<std::size_t> newestCompleteRun(const std::vector<SavedRun>& runs) {
    for (std::size_t i = 0; i < runs.size(); ++i)
        if (!runs[i].stopped) return i;
    return std::nullopt;
}

std::optional<std::size_t> baselineRun(const std::vector<SavedRun>& runs, std::size_t after) {
    for (std::size_t i = after + 1; i < runs.size(); ++i)
        if (!runs[i].stopped && shareBenchmarks(runs[i], runs[after])) return i;
    return std::nullopt;
}

} // namespace quarbel
