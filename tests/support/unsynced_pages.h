// SPDX-License-Identifier: Apache-2.0
// Whether a file's data has reached the disk, asked of the page cache.
#pragma once

#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace quarbel::test {

// Pages of `path` in the page cache that are not yet on the disk (dirty or being written
// back); none where the kernel cannot say (cachestat, system call 451 everywhere, came with
// Linux 6.5).
inline std::optional<std::uint64_t> unsyncedPages(const std::string& path) {
    struct {
        std::uint64_t offset = 0, length = 0; // to the end of the file
    } range;
    struct {
        std::uint64_t cached, dirty, writeback, evicted, recentlyEvicted;
    } state{};
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    const long result = ::syscall(451, fd, &range, &state, 0);
    ::close(fd);
    if (result != 0) return std::nullopt;
    return state.dirty + state.writeback;
}

// Whether unsyncedPages() can tell here: a file just written shows unsynced pages, and none
// after its fsync (tmpfs and kernels before 6.5 cannot say).
inline bool pageCacheShowsUnsyncedPages(const std::string& probe) {
    const int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    const std::string block(65'536, 'q');
    const bool written = ::write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
    const auto before = unsyncedPages(probe);
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    const bool tells = written && synced && before.value_or(0) > 0 && unsyncedPages(probe) == 0u;
    ::unlink(probe.c_str());
    return tells;
}

} // namespace quarbel::test
