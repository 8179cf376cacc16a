// SPDX-License-Identifier: Apache-2.0
#include "workloads/storage/posix_io.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace quarbel::storage {

int FileDescriptor::close() noexcept {
    if (fd_ < 0) return 0;
    const int result = ::close(fd_);
    fd_ = -1;
    // EINTR from close still releases the descriptor on Linux; it is not a data error.
    if (result != 0 && errno != EINTR) return errno;
    return 0;
}

std::string errorText(int errorNumber) { return std::strerror(errorNumber); }

int createEmptyFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return errno;
    ::close(fd);
    return 0;
}

int openExisting(const std::string& path, int accessFlags) {
    return ::open(path.c_str(), accessFlags | O_NOFOLLOW | O_CLOEXEC);
}

int writeAll(int fd, const std::byte* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (written == 0) return EIO;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

int positionedWriteAll(int fd, const std::byte* data, std::size_t size, std::int64_t offset) {
    while (size > 0) {
        const ssize_t written = ::pwrite(fd, data, size, static_cast<off_t>(offset));
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (written == 0) return EIO;
        data += written;
        offset += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

ssize_t readUpTo(int fd, std::byte* data, std::size_t size) {
    std::size_t got = 0;
    while (got < size) {
        const ssize_t result = ::read(fd, data + got, size - got);
        if (result < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (result == 0) break;
        got += static_cast<std::size_t>(result);
    }
    return static_cast<ssize_t>(got);
}

} // namespace quarbel::storage
