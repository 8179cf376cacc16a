// SPDX-License-Identifier: Apache-2.0
#include "results/regular_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel {
namespace {

std::string sizeText(std::uintmax_t bytes) {
    if (bytes % 1'000'000 == 0) return std::to_string(bytes / 1'000'000) + " MB";
    return std::to_string(bytes) + " bytes";
}

} // namespace

const char* fileKindText(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISFIFO(mode)) return "a named pipe";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a plain file";
}

FileText readRegularFile(const std::string& path, std::uintmax_t largestBytes) {
    // Non-blocking, so that opening a named pipe with no writer returns at once; a terminal
    // never becomes this process's controlling one.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    FileText result;
    const auto fail = [&result](FileText::Problem kind, std::string reason) {
        result.kind = kind;
        result.reason = std::move(reason);
        result.problem = kind == FileText::Problem::unreadable ? "cannot be read: " + result.reason
                         : kind == FileText::Problem::notAFile ? "is " + result.reason + ", not a file"
                                                               : "is larger than " + result.reason;
    };
    if (fd < 0) {
        fail(FileText::Problem::unreadable, std::strerror(errno));
        return result;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        fail(FileText::Problem::unreadable, std::strerror(errno));
    } else if (!S_ISREG(info.st_mode)) {
        fail(FileText::Problem::notAFile, fileKindText(info.st_mode));
    } else if (static_cast<std::uintmax_t>(info.st_size) > largestBytes) {
        fail(FileText::Problem::tooLarge, sizeText(largestBytes));
    } else {
        // The size is only a hint (the file may grow while it is read): the limit holds
        // whatever the reads return.
        result.text.reserve(static_cast<std::size_t>(info.st_size));
        char buffer[65536];
        for (;;) {
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                fail(FileText::Problem::unreadable, std::strerror(errno));
                break;
            }
            if (n == 0) break;
            if (result.text.size() + static_cast<std::size_t>(n) > largestBytes) {
                fail(FileText::Problem::tooLarge, sizeText(largestBytes));
                break;
            }
            result.text.append(buffer, static_cast<std::size_t>(n));
        }
    }
    ::close(fd);
    if (!result.problem.empty()) result.text.clear();
    return result;
}

} // namespace quarbel
