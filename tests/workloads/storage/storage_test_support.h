// SPDX-License-Identifier: Apache-2.0
// Helpers for the storage tests: a private temporary root per test (TMPDIR points at it),
// small tmpfs mounts for out-of-space and read-only cases, and a progress sink that can
// stop the workload at a chosen point.
#pragma once

#include "model/workload_context.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quarbel::storage::testing {

// Names in `directory` that start with "Quarbel-" (empty when the directory is missing).
std::vector<std::string> scratchEntries(const std::string& directory);

// Sets TMPDIR for its lifetime and restores the previous value afterwards.
class ScopedTemporaryRoot {
  public:
    explicit ScopedTemporaryRoot(const std::string& value);
    ~ScopedTemporaryRoot();
    ScopedTemporaryRoot(const ScopedTemporaryRoot&) = delete;
    ScopedTemporaryRoot& operator=(const ScopedTemporaryRoot&) = delete;

  private:
    bool hadValue_ = false;
    std::string previous_;
};

// A fresh directory under /tmp, removed with its contents at the end.
class TestDirectory {
  public:
    TestDirectory();
    ~TestDirectory();
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

// A tmpfs mounted at `where` (created if needed) and unmounted at the end. Needs root
// (CAP_SYS_ADMIN); when mounting fails, mounted() is false and skipReason() says why.
class TmpfsMount {
  public:
    TmpfsMount(const std::string& where, std::int64_t sizeBytes, bool readOnly);
    ~TmpfsMount();
    TmpfsMount(const TmpfsMount&) = delete;
    TmpfsMount& operator=(const TmpfsMount&) = delete;
    bool mounted() const { return mounted_; }
    const std::string& skipReason() const { return skipReason_; }

  private:
    std::string where_;
    bool mounted_ = false;
    std::string skipReason_;
};

// A directory at `where` in which this process cannot create anything: a read-only tmpfs
// when running as root (root ignores permission bits), else a directory of mode 0500.
class ReadOnlyDirectory {
  public:
    explicit ReadOnlyDirectory(const std::string& where);
    bool available() const { return refusal_ != 0; }
    const std::string& skipReason() const { return skipReason_; }
    int refusal() const { return refusal_; } // errno of a creation inside it
    const std::string& path() const { return path_; }

  private:
    std::string path_;
    std::unique_ptr<TmpfsMount> mount_;
    int refusal_ = 0;
    std::string skipReason_;
};

// Writes `bytes` bytes of 'x' to a new file.
void writeFile(const std::string& path, std::size_t bytes);

// st_blocks * 512 of `path` itself (a link is not followed); 0 when it does not exist.
std::int64_t allocatedBytes(const std::string& path);

// Whether a new open file description could take the directory's flock now.
bool lockIsFree(const std::string& directory);

// Records every progress report and runs `onReport` (on the workload's thread) after
// recording it; the hook may cancel the token.
class RecordingSink : public ProgressSink {
  public:
    void report(const ProgressReport& progress) noexcept override;

    std::vector<std::int64_t> units; // unitsDone of each report, in order
    std::vector<int> phases;         // the phase of each report, in order
    std::string unitName;            // the unit of the last report
    std::function<void(const ProgressReport&)> onReport;
};

// A context wired to `token` and `sink`.
WorkloadContext contextWith(const CancellationToken& token, RecordingSink& sink);

// Whether a regular file in `directory` accepts O_DIRECT through fcntl.
bool fileSystemAcceptsDirectIO(const std::string& directory);

// The single scratch directory currently in `root`, or "" when there is not exactly one.
std::string onlyScratchDirectory(const std::string& root);

// Pages of `path` in the page cache that are not yet on the disk (dirty or being written
// back); none where the kernel cannot say (cachestat came with Linux 6.5).
std::optional<std::uint64_t> unsyncedPages(const std::string& path);

// Whether a write to a file in `directory` shows as unsynced pages until an fsync, so that
// unsyncedPages can tell a synced file from one that is not (not so on tmpfs).
bool syncIsVisible(const std::string& directory);

// A measurement value in MB/s from its text and unit ("1.50" "GB/s" -> 1536).
double megabytesPerSecondOf(const std::string& value, const std::string& unit);

} // namespace quarbel::storage::testing
