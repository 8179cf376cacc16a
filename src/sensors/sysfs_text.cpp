// SPDX-License-Identifier: Apache-2.0
#include "sensors/sysfs_text.h"

#include <cerrno>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace quarbel::sysfs {

std::optional<std::string> readText(const std::string& path, std::size_t limit) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    std::string text;
    char buffer[4096];
    bool failed = false;
    while (text.size() < limit) {
        const ssize_t got = ::read(fd, buffer, sizeof(buffer));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failed = true; // sensors that are asleep or gone answer EIO or ENODATA
        if (got <= 0) break;
        text.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    if (failed) return std::nullopt;
    if (text.size() > limit) text.resize(limit);
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::string readLine(const std::string& path) {
    const auto text = readText(path, 4096);
    if (!text) return {};
    std::string_view view = *text;
    view = view.substr(0, view.find('\n'));
    return std::string(trimmed(view));
}

std::optional<long long> parseInteger(std::string_view text) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || text.empty()) return std::nullopt;
    return value;
}

std::vector<std::string> directoryEntries(const std::string& path) {
    std::vector<std::string> names;
    DIR* dir = ::opendir(path.c_str());
    if (dir == nullptr) return names;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
    ::closedir(dir);
    return names;
}

} // namespace quarbel::sysfs
