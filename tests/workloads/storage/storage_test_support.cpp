// SPDX-License-Identifier: Apache-2.0
#include "storage_test_support.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quarbel::storage::testing {
namespace {

// The system call number of cachestat, the same on every architecture.
constexpr long kCachestat = 451;

} // namespace

std::vector<std::string> scratchEntries(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("Quarbel-", 0) == 0) names.push_back(name);
    }
    return names;
}

ScopedTemporaryRoot::ScopedTemporaryRoot(const std::string& value) {
    if (const char* previous = std::getenv("TMPDIR")) {
        hadValue_ = true;
        previous_ = previous;
    }
    ::setenv("TMPDIR", value.c_str(), 1);
}

ScopedTemporaryRoot::~ScopedTemporaryRoot() {
    if (hadValue_) {
        ::setenv("TMPDIR", previous_.c_str(), 1);
    } else {
        ::unsetenv("TMPDIR");
    }
}

TestDirectory::TestDirectory() {
    std::string pattern = "/tmp/quarbel-storage-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
    path_ = pattern;
}

TestDirectory::~TestDirectory() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
}

TmpfsMount::TmpfsMount(const std::string& where, std::int64_t sizeBytes, bool readOnly) : where_(where) {
    if (::geteuid() != 0) {
        skipReason_ = "mounting a tmpfs needs root";
        return;
    }
    std::error_code ignored;
    std::filesystem::create_directories(where, ignored);
    const std::string options = "size=" + std::to_string(sizeBytes) + ",mode=0755";
    unsigned long flags = MS_NOSUID | MS_NODEV;
    if (readOnly) flags |= MS_RDONLY;
    if (::mount("tmpfs", where.c_str(), "tmpfs", flags, options.c_str()) != 0) {
        skipReason_ = std::string("cannot mount a tmpfs here: ") + std::strerror(errno);
        return;
    }
    mounted_ = true;
}

TmpfsMount::~TmpfsMount() {
    if (mounted_) ::umount2(where_.c_str(), MNT_DETACH);
}

ReadOnlyDirectory::ReadOnlyDirectory(const std::string& where) : path_(where) {
    if (::geteuid() == 0) {
        mount_ = std::make_unique<TmpfsMount>(where, 1'048'576, true);
        if (!mount_->mounted()) {
            skipReason_ = mount_->skipReason();
            return;
        }
        refusal_ = EROFS;
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(where, error);
    if (error || ::chmod(where.c_str(), 0500) != 0) {
        skipReason_ = "cannot make a read-only directory at " + where;
        return;
    }
    refusal_ = EACCES;
}

void writeFile(const std::string& path, std::size_t bytes) {
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
}

std::int64_t allocatedBytes(const std::string& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return 0;
    return static_cast<std::int64_t>(info.st_blocks) * 512;
}

bool lockIsFree(const std::string& directory) {
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool free = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    ::close(fd);
    return free;
}

void RecordingSink::report(const ProgressReport& progress) noexcept {
    units.push_back(progress.unitsDone);
    phases.push_back(progress.phase);
    unitName = std::string(progress.unit.name);
    if (onReport) onReport(progress);
}

WorkloadContext contextWith(const CancellationToken& token, RecordingSink& sink) {
    WorkloadContext context;
    context.cancellation = &token;
    context.progress = &sink;
    return context;
}

bool fileSystemAcceptsDirectIO(const std::string& directory) {
    const std::string probe = directory + "/direct-io-probe";
    const int fd = ::open(probe.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    if (fd < 0) return false;
    const int flags = ::fcntl(fd, F_GETFL);
    const bool accepted = flags >= 0 && ::fcntl(fd, F_SETFL, flags | O_DIRECT) == 0;
    ::close(fd);
    ::unlink(probe.c_str());
    return accepted;
}

std::string onlyScratchDirectory(const std::string& root) {
    const auto entries = scratchEntries(root);
    return entries.size() == 1 ? root + "/" + entries.front() : std::string();
}

std::optional<std::uint64_t> unsyncedPages(const std::string& path) {
    struct {
        std::uint64_t offset = 0, length = 0; // to the end of the file
    } range;
    struct {
        std::uint64_t cached, dirty, writeback, evicted, recentlyEvicted;
    } state{};
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    const long result = ::syscall(kCachestat, fd, &range, &state, 0);
    ::close(fd);
    if (result != 0) return std::nullopt;
    return state.dirty + state.writeback;
}

bool syncIsVisible(const std::string& directory) {
    const std::string probe = directory + "/sync-probe";
    writeFile(probe, 65'536);
    const auto before = unsyncedPages(probe);
    const int fd = ::open(probe.c_str(), O_WRONLY | O_CLOEXEC);
    const bool synced = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0) ::close(fd);
    const auto after = unsyncedPages(probe);
    ::unlink(probe.c_str());
    return synced && before.value_or(0) > 0 && after == 0u;
}

double megabytesPerSecondOf(const std::string& value, const std::string& unit) {
    const double number = std::strtod(value.c_str(), nullptr);
    return unit == "GB/s" ? number * 1024.0 : number;
}

} // namespace quarbel::storage::testing
