// SPDX-License-Identifier: Apache-2.0
// The private scratch directory every storage test works in, the guard that removes it on
// every way out of the test, and the removal that both share with the reclaiming of
// directories an interrupted run left behind.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quarbel::storage {

// QUARBEL_STORAGE_DIR, else $TMPDIR, else "/tmp" (storageRootDirectory()).
std::string temporaryRoot();

// A random (version 4) UUID in its 36-character text form, upper-case hexadecimal.
std::string makeUUIDText();

// Whether `name` is exactly "Quarbel-" + 8-4-4-4-12 upper-case hexadecimal digits.
bool isScratchDirectoryName(std::string_view name);

// `directory` + "/" + `name`, without doubling the slash of the root directory.
std::string joinPath(const std::string& directory, std::string_view name);

// Creates `path` and every missing parent with mode 0700. Returns 0, or the errno of the
// step that failed; then the directories it created are removed again.
int createDirectories(const std::string& path);

// Removes everything inside the directory open at `directoryFd`. Symbolic links are
// removed, never followed, and it never descends into another mounted file system.
// Adds st_blocks * 512 of every removed non-directory to `bytesRemoved`. Returns 0 or the
// first errno met; entries that vanish meanwhile (another remover) are not an error.
// Async-signal-safe.
int removeDirectoryContents(int directoryFd, std::int64_t& bytesRemoved) noexcept;

// Owns one scratch directory for the lifetime of a test. Not copyable or movable; used
// on one thread. While it holds a directory, that directory is locked (flock, exclusive,
// on a descriptor of the directory itself) so that no reclaim removes it, and
// removeActiveScratchDirectories() can find it.
class ScratchDirectory {
  public:
    ScratchDirectory() = default;
    ~ScratchDirectory() { remove(); }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    // Makes "Quarbel-<UUID>" (mode 0700) under temporaryRoot(), creating a missing root,
    // and locks it. Returns 0, or the errno of the failure; then nothing of it exists.
    int create();

    // The path of `name` inside the directory.
    std::string filePath(std::string_view name) const { return joinPath(path_, name); }

    const std::string& path() const { return path_; }

    // Removes the directory and everything in it; errors are ignored. It stays findable
    // by removeActiveScratchDirectories() until it is gone. Idempotent.
    void remove() noexcept;

  private:
    // Takes the lock of the directory just made; 0, kVanished or errno.
    int lockNewDirectory();
    // Lets go of the lock, the registry entry and the path without touching the disk.
    void forget() noexcept;

    static constexpr int kVanished = -1;

    std::string path_;
    int lockFd_ = -1;
    int slot_ = -1; // index in the registry of active directories, -1 when not registered
};

} // namespace quarbel::storage
