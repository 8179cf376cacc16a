// SPDX-License-Identifier: Apache-2.0
// Reading the small text files of /proc and /sys. Plain POSIX calls: these files are
// read every few seconds while workloads run, so the helpers avoid streams and locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel::sysfs {

// The whole file (up to `limit` bytes), or nothing when it cannot be opened or read.
std::optional<std::string> readText(const std::string& path, std::size_t limit = 65536);

// `text` without blanks, tabs and line breaks at either end.
std::string_view trimmed(std::string_view text);

// The file's first line, trimmed; empty text when the file cannot be read.
std::string readLine(const std::string& path);

// A whole decimal integer (optionally signed, surrounded by white space), as sysfs
// writes millidegrees; nothing for any other text.
std::optional<long long> parseInteger(std::string_view text);

// The names in directory `path` other than "." and "..", in no particular order; empty
// when the directory cannot be read.
std::vector<std::string> directoryEntries(const std::string& path);

} // namespace quarbel::sysfs
