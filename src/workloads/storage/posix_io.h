// SPDX-License-Identifier: Apache-2.0
// Small POSIX file helpers shared by the storage tests: an owning descriptor, whole-buffer
// writes and filling reads that survive partial transfers and EINTR.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/types.h>

namespace quarbel::storage {

// Owns one file descriptor and closes it when destroyed (ignoring the result there).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    int get() const { return fd_; }

    // Closes now; returns 0 or the errno of a failed close. The descriptor is released
    // either way (Linux never leaves it open after close returns).
    int close() noexcept;

  private:
    int fd_ = -1;
};

// The system's text for an errno value, e.g. "No space left on device".
std::string errorText(int errorNumber);

// Creates an empty file with mode 0600, exclusively and without following a symbolic
// link. Returns 0 or errno.
int createEmptyFile(const std::string& path);

// Opens an existing file without following a symbolic link (O_CLOEXEC added).
int openExisting(const std::string& path, int accessFlags);

// Writes all `size` bytes at the current offset, resuming after partial writes and
// retrying EINTR. Returns 0 or errno (EIO when the system reports no progress).
int writeAll(int fd, const std::byte* data, std::size_t size);

// Like writeAll, at an absolute offset, leaving the file offset alone.
int positionedWriteAll(int fd, const std::byte* data, std::size_t size, std::int64_t offset);

// Reads until `size` bytes or end of file, retrying EINTR. Returns the byte count (0 at
// end of file) or -1 with errno set.
ssize_t readUpTo(int fd, std::byte* data, std::size_t size);

} // namespace quarbel::storage
