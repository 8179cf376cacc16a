// SPDX-License-Identifier: Apache-2.0
// Reclaiming the scratch directories of runs that ended without removing them (a kill, a
// crash, a power cut), and telling the user how much space that gave back.
#include "model/number_format.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_workloads.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel {
namespace {

std::mutex gNoticeMutex;
std::function<void(const std::string&)> gNoticeSink;

// Names in the directory at `rootFd` that have the form of a scratch directory.
std::vector<std::string> scratchNamesIn(int rootFd) {
    std::vector<std::string> names;
    const int listingFd = ::dup(rootFd);
    if (listingFd < 0) return names;
    DIR* listing = ::fdopendir(listingFd);
    if (listing == nullptr) {
        ::close(listingFd);
        return names;
    }
    while (const dirent* entry = ::readdir(listing)) {
        if (storage::isScratchDirectoryName(entry->d_name)) names.emplace_back(entry->d_name);
    }
    ::closedir(listing);
    return names;
}

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// What happened to one candidate.
enum class Reclaim { skipped, removed, failed };

Reclaim reclaimOne(int rootFd, const char* name, std::int64_t& bytes, int& error) {
    using storage::FileDescriptor;
    struct stat named {};
    // Only real directories of this user: a symbolic link or a file of that name is not ours.
    if (::fstatat(rootFd, name, &named, AT_SYMLINK_NOFOLLOW) != 0) return Reclaim::skipped;
    if (!S_ISDIR(named.st_mode) || named.st_uid != ::geteuid()) return Reclaim::skipped;

    FileDescriptor directory(::openat(rootFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!directory.isOpen()) {
        error = errno;
        return error == ENOENT ? Reclaim::skipped : Reclaim::failed;
    }
    struct stat opened {};
    if (::fstat(directory.get(), &opened) != 0 || !sameFile(opened, named)) return Reclaim::skipped;
    // A run in progress holds the lock for the directory's whole life.
    if (::flock(directory.get(), LOCK_EX | LOCK_NB) != 0) {
        error = errno;
        return error == EWOULDBLOCK ? Reclaim::skipped : Reclaim::failed;
    }
    // Ours now. A run that made it an instant ago and waits for the lock finds it gone and
    // picks another name.
    error = storage::removeDirectoryContents(directory.get(), bytes);
    if (error != 0) return Reclaim::failed;
    struct stat stillNamed {};
    if (::fstatat(rootFd, name, &stillNamed, AT_SYMLINK_NOFOLLOW) != 0 || !sameFile(stillNamed, opened)) {
        return Reclaim::skipped; // renamed away meanwhile: not ours to chase
    }
    if (::unlinkat(rootFd, name, AT_REMOVEDIR) != 0) {
        error = errno;
        return error == ENOENT ? Reclaim::skipped : Reclaim::failed;
    }
    return Reclaim::removed;
}

} // namespace

ReclaimReport reclaimStaleScratchDirectories(const std::string& root) {
    ReclaimReport report;
    const storage::FileDescriptor rootFd(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!rootFd.isOpen()) return report;
    for (const std::string& name : scratchNamesIn(rootFd.get())) {
        int error = 0;
        switch (reclaimOne(rootFd.get(), name.c_str(), report.bytesGivenBack, error)) {
        case Reclaim::skipped: break;
        case Reclaim::removed: ++report.directoriesRemoved; break;
        case Reclaim::failed: report.failures.push_back({storage::joinPath(root, name), error}); break;
        }
    }
    return report;
}

std::string reclaimNotice(const ReclaimReport& report, const std::string& root) {
    std::string text;
    if (report.directoriesRemoved > 0) {
        const std::string given =
            report.bytesGivenBack < kMebibyte ? "less than 1 MB" : formatBytes(report.bytesGivenBack);
        text = "Removed " + std::to_string(report.directoriesRemoved) +
               (report.directoriesRemoved == 1 ? " scratch directory" : " scratch directories") +
               " left by an interrupted run in " + root + " (" + given + " given back).";
    }
    for (const ReclaimFailure& failure : report.failures) {
        if (!text.empty()) text += '\n';
        text += "Could not remove the scratch directory " + failure.path +
                " left by an interrupted run: " + storage::errorText(failure.error) + ".";
    }
    return text;
}

void setScratchNoticeSink(std::function<void(const std::string&)> sink) {
    const std::lock_guard lock(gNoticeMutex);
    gNoticeSink.swap(sink); // the previous sink is destroyed outside the lock
}

ReclaimReport reclaimStaleScratchDirectoriesAndNotify() {
    const std::string root = storage::temporaryRoot();
    ReclaimReport report = reclaimStaleScratchDirectories(root);
    const std::string notice = reclaimNotice(report, root);
    if (notice.empty()) return report;
    std::function<void(const std::string&)> sink;
    {
        const std::lock_guard lock(gNoticeMutex);
        sink = gNoticeSink;
    }
    if (sink) sink(notice);
    return report;
}

} // namespace quarbel
