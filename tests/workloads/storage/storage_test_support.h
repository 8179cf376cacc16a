// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/workload_context.h"
#include "support/unsynced_pages.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace quarbel::storage::testing {

constexpr std::int64_t kMiB = 1'048'576;

inline std::vector<std::string> scratchEntries(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        std::string name = entry.path().filename().string();
        if (name.starts_with("Quarbel-")) names.push_back(std::move(name));
    }
    return names;
}

// The single scratch directory currently in `root`, or "" when there is not exactly one.
inline std::string onlyScratchDirectory(const std::string& root) {
    const auto entries = scratchEntries(root);
    return entries.size() == 1 ? root + "/" + entries.front() : std::string();
}

class ScopedTemporaryRoot {
  public:
    explicit ScopedTemporaryRoot(const std::string& value) {
        if (const char* previous = std::getenv("TMPDIR")) previous_ = previous;
        ::setenv("TMPDIR", value.c_str(), 1);
    }
    ~ScopedTemporaryRoot() {
        if (previous_)
            ::setenv("TMPDIR", previous_->c_str(), 1);
        else
            ::unsetenv("TMPDIR");
    }
    ScopedTemporaryRoot(const ScopedTemporaryRoot&) = delete;
    ScopedTemporaryRoot& operator=(const ScopedTemporaryRoot&) = delete;

  private:
    std::optional<std::string> previous_;
};

class TestDirectory {
  public:
    TestDirectory() {
        if (::mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
    }
    ~TestDirectory() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_ = "/tmp/quarbel-storage-test-XXXXXX";
};

// A tmpfs mounted at `where` (created if needed) and unmounted at the end; needs CAP_SYS_ADMIN.
class TmpfsMount {
  public:
    TmpfsMount(const std::string& where, std::int64_t sizeBytes, bool readOnly) : where_(where) {
        if (::geteuid() != 0) return;
        std::error_code ignored;
        std::filesystem::create_directories(where, ignored);
        const std::string options = "size=" + std::to_string(sizeBytes) + ",mode=0755";
        const unsigned long flags = MS_NOSUID | MS_NODEV | (readOnly ? MS_RDONLY : 0);
        mounted_ = ::mount("tmpfs", where.c_str(), "tmpfs", flags, options.c_str()) == 0;
    }
    ~TmpfsMount() {
        if (mounted_) ::umount2(where_.c_str(), MNT_DETACH);
    }
    TmpfsMount(const TmpfsMount&) = delete;
    TmpfsMount& operator=(const TmpfsMount&) = delete;
    bool mounted() const { return mounted_; }

  private:
    std::string where_;
    bool mounted_ = false;
};

inline void writeFile(const std::string& path, std::size_t bytes) {
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
}

// Records every progress report and runs `onReport` (on the workload's thread) after
// recording it; the hook may cancel the token.
class RecordingSink : public ProgressSink {
  public:
    void report(const ProgressReport& progress) noexcept override {
        units.push_back(progress.unitsDone);
        phases.push_back(progress.phase);
        unitName = std::string(progress.unit.name);
        if (onReport) onReport(progress);
    }

    std::vector<std::int64_t> units; // unitsDone of each report, in order
    std::vector<int> phases;
    std::string unitName; // of the last report
    std::function<void(const ProgressReport&)> onReport;
};

inline WorkloadContext contextWith(const CancellationToken& token, RecordingSink& sink) {
    return {&token, &sink, std::nullopt, 1.0};
}

inline bool fileSystemAcceptsDirectIO(const std::string& directory) {
    const std::string probe = directory + "/direct-io-probe";
    const int fd = ::open(probe.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    if (fd < 0) return false;
    const int flags = ::fcntl(fd, F_GETFL);
    const bool accepted = flags >= 0 && ::fcntl(fd, F_SETFL, flags | O_DIRECT) == 0;
    ::close(fd);
    ::unlink(probe.c_str());
    return accepted;
}

using quarbel::test::pageCacheShowsUnsyncedPages;
using quarbel::test::unsyncedPages;

} // namespace quarbel::storage::testing
