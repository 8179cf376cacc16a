// The private scratch directory every storage test works in, and the guard that removes
// it on every way out of the test.
#pragma once

#include <string>
#include <string_view>

namespace quarbel::storage {

// $TMPDIR when it is set and not empty, else "/tmp".
std::string temporaryRoot();

// A random (version 4) UUID in its 36-character text form, upper-case hexadecimal.
std::string makeUUIDText();

struct TemporaryDirectory {
    std::string path; // "<root>/Quarbel-<UUID>" on success
    int error = 0;    // errno of the failed creation, 0 on success
};

// Creates a new directory "Quarbel-<UUID>" with mode 0700 directly under temporaryRoot().
// A missing root is reported (ENOENT), not created, so that nothing is left behind that
// the test would not remove.
TemporaryDirectory makeTemporaryDirectory();

// Owns one scratch directory for the lifetime of a test. Not copyable or movable; used
// on one thread. While it holds a directory, removeActiveScratchDirectories() can find it.
class ScratchDirectory {
  public:
    ScratchDirectory() = default;
    ~ScratchDirectory() { remove(); }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    // Makes the directory; returns 0, or the errno of the failure (then nothing exists).
    int create();

    // The path of `name` inside the directory. The name is remembered so that the
    // signal-time removal can unlink the file before removing the directory.
    std::string filePath(std::string_view name);

    const std::string& path() const { return path_; }

    // Removes the directory and everything in it; errors are ignored. Idempotent.
    void remove() noexcept;

  private:
    std::string path_;
    int slot_ = -1; // index in the registry of active directories, -1 when not registered
};

} // namespace quarbel::storage
