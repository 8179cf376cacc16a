// SPDX-License-Identifier: Apache-2.0
#include "results/history_index.h"

#include "results/regular_file.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr std::string_view kHeader = "quarbel-history-index 1";
// Far beyond the index of any real history (about 300 bytes a run).
constexpr std::uintmax_t kLargestIndexBytes = 2'000'000'000;
constexpr char kField = '\t';
constexpr char kResult = '\x1e';      // between results
constexpr char kResultField = '\x1f'; // between a result's own fields

// Separators and line breaks cannot occur inside a field.
std::string clean(const std::string& text) {
    std::string out = text;
    for (char& c : out)
        if (c == kField || c == '\n' || c == '\r' || c == kResult || c == kResultField) c = ' ';
    return out;
}

std::string number(double value) {
    char text[40];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

template <class T> bool parse(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        parts.push_back(
            text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

std::string resultText(const SavedResult& r) {
    const auto& u = r.statistics.uncertainty;
    std::string text = clean(r.id) + kResultField + clean(r.title) + kResultField + clean(r.status) +
                       kResultField + number(r.score) + kResultField +
                       (r.spreadPercent ? number(*r.spreadPercent) : "") + kResultField;
    if (u)
        text += std::to_string(u->samples) + "," + number(u->relativeStandardError) + "," +
                number(u->degreesOfFreedom);
    return text + kResultField + (r.statistics.noisy ? "1" : "0");
}

bool readResult(std::string_view text, SavedResult& r) {
    const auto f = split(text, kResultField);
    if (f.size() != 7) return false;
    r.id = f[0];
    r.title = f[1];
    r.status = f[2];
    if (!parse(f[3], r.score)) return false;
    if (!f[4].empty() && !parse(f[4], r.spreadPercent.emplace())) return false;
    if (!f[5].empty()) {
        const auto u = split(f[5], ',');
        RateUncertainty& value = r.statistics.uncertainty.emplace();
        if (u.size() != 3 || !parse(u[0], value.samples) || !parse(u[1], value.relativeStandardError) ||
            !parse(u[2], value.degreesOfFreedom))
            return false;
    }
    r.statistics.noisy = f[6] == "1";
    return true;
}

std::string lineOf(const IndexedFile& file) {
    std::string line = clean(file.name) + kField + std::to_string(file.size) + kField +
                       std::to_string(file.modifiedNanoseconds) + kField;
    if (!file.run) return line + "bad" + kField + clean(file.problem);
    const SavedRun& r = *file.run;
    line += std::string("ok") + kField + clean(r.startedAt) + kField + clean(r.version) + kField +
            clean(r.mode) + kField + (r.quick ? "1" : "0") + kField + (r.stopped ? "1" : "0") + kField +
            clean(r.title) + kField + number(r.runScore) + kField + number(r.globalScore) + kField +
            clean(r.machine) + kField + clean(r.machineId) + kField + clean(r.hostName) + kField;
    for (std::size_t i = 0; i < r.results.size(); ++i)
        line.append(i == 0 ? 0 : 1, kResult).append(resultText(r.results[i]));
    return line;
}

bool readLine(std::string_view line, IndexedFile& file, bool withResults) {
    const auto f = split(line, kField);
    if (f.size() < 5) return false;
    file.name = f[0];
    if (!parse(f[1], file.size) || !parse(f[2], file.modifiedNanoseconds)) return false;
    if (f[3] == "bad") {
        file.problem = f[4];
        return f.size() == 5;
    }
    if (f[3] != "ok" || f.size() != 16) return false;
    SavedRun& r = file.run.emplace();
    r.startedAt = f[4];
    r.version = f[5];
    r.mode = f[6];
    r.quick = f[7] == "1";
    r.stopped = f[8] == "1";
    r.title = f[9];
    if (!parse(f[10], r.runScore) || !parse(f[11], r.globalScore)) return false;
    r.machine = f[12];
    r.machineId = f[13];
    r.hostName = f[14];
    if (withResults && !f[15].empty())
        for (const auto& text : split(f[15], kResult))
            if (!readResult(text, r.results.emplace_back())) return false;
    return true;
}

} // namespace

std::string historyIndexPath(const std::string& directory) {
    // Beside the folder, not in it: the folder holds reports and nothing else.
    std::string path = directory;
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path + ".index";
}

std::unordered_map<std::string, IndexedFile> readHistoryIndex(const std::string& path, bool withResults,
                                                              std::string* unusable) {
    std::unordered_map<std::string, IndexedFile> files;
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return {}; // none yet
    const FileText index = readRegularFile(path, kLargestIndexBytes);
    if (!index.problem.empty()) {
        if (unusable != nullptr) *unusable = index.problem;
        return {};
    }
    std::string_view rest = index.text;
    const std::size_t headerEnd = rest.find('\n');
    if (headerEnd == std::string_view::npos || rest.substr(0, headerEnd) != kHeader) return {};
    rest.remove_prefix(headerEnd + 1);
    files.reserve(static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '\n')));
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        if (end == std::string_view::npos) return {}; // cut short: rebuild it
        IndexedFile file;
        if (!readLine(rest.substr(0, end), file, withResults)) return {};
        files[file.name] = std::move(file);
        rest.remove_prefix(end + 1);
    }
    return files;
}

bool writeHistoryIndex(const std::string& path, const std::vector<IndexedFile>& files) {
    std::string text(kHeader);
    text += '\n';
    for (const IndexedFile& file : files)
        text += lineOf(file) + '\n';
    const std::string temporary = path + ".tmp-" + std::to_string(::getpid());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(fd, text.data() + written, text.size() - written);
        if (n <= 0) break;
        written += static_cast<std::size_t>(n);
    }
    const bool ok =
        ::close(fd) == 0 && written == text.size() && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!ok) ::unlink(temporary.c_str());
    return ok;
}

} // namespace quarbel
