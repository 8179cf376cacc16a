// SPDX-License-Identifier: Apache-2.0
// Reading a file that should hold a report or an index: opened once, without waiting on a
// named pipe or a device, read only when it is a regular file, and never beyond a size.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace quarbel {

struct FileText {
    enum class Problem { none, unreadable, notAFile, tooLarge };
    std::string text;
    Problem kind = Problem::none;
    std::string reason; // the system's error, the kind of file ("a named pipe") or the limit ("50 MB")
    // Empty when `text` is the whole file; else a phrase that follows the file's name:
    // "cannot be read: …", "is a named pipe, not a file", "is larger than 50 MB".
    std::string problem;
};

FileText readRegularFile(const std::string& path, std::uintmax_t largestBytes);

// "a directory", "a named pipe", "a character device", … for what is not a regular file.
const char* fileKindText(mode_t mode);

} // namespace quarbel
