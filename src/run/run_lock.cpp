// SPDX-License-Identifier: Apache-2.0
#include "run/run_lock.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr std::string_view kSuffix = ".lock";

std::string lockName(std::string_view prefix, pid_t pid) {
    return std::string(prefix) + std::to_string(pid) + std::string(kSuffix);
}

// The pid in "run-<pid>.lock", or 0 for any other name.
pid_t pidOfLockName(std::string_view prefix, std::string_view name) {
    if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) return 0;
    const std::string_view digits = name.substr(prefix.size(), name.size() - prefix.size() - kSuffix.size());
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    return error == std::errc() && end == digits.data() + digits.size() && pid > 0 ? pid : 0;
}

// The directory, made when missing, opened only when it is a real directory of this user:
// another user's directory could hide runs or collect our files. -1 with the reason in
// `problem` otherwise.
int openPrivateDirectory(const std::string& directory, std::string& problem) {
    const auto fail = [&](const std::string& why) {
        problem = "cannot use " + directory + ": " + why;
        return -1;
    };
    if (directory.empty()) return fail("no folder");
    if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) return fail(std::strerror(errno));
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOTDIR || errno == ELOOP) return fail("it is not a folder");
        return fail(std::strerror(errno));
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || info.st_uid != ::geteuid()) {
        ::close(fd);
        return fail("it belongs to another user");
    }
    return fd;
}

// Whether `path` still names the file open as `fd`: a process with the same pid may have
// put a file of its own there since.
bool namesOpenFile(const std::string& path, int fd) {
    struct stat open {
    }, named{};
    return ::fstat(fd, &open) == 0 && ::lstat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

} // namespace

std::string RunLock::defaultDirectory() {
    const char* chosen = std::getenv("QUARBEL_RUN_LOCK_DIR");
    if (chosen != nullptr && chosen[0] == '/') return chosen;
    return "/tmp/quarbel-" + std::to_string(::geteuid());
}

std::vector<RunLock::OtherRun> RunLock::marksIn(int directoryFd, const std::string& directory,
                                                std::string_view kind, bool clearLeftOvers) {
    // Every other process's file: locked means its run goes on; unlocked, it was left by a
    // process that ended (and goes, where asked).
    std::vector<OtherRun> runs;
    DIR* entries = ::fdopendir(::dup(directoryFd));
    if (entries == nullptr) return runs;
    while (const dirent* entry = ::readdir(entries)) {
        const pid_t pid = pidOfLockName(kind, entry->d_name);
        if (pid == 0 || pid == ::getpid()) continue;
        const int other = ::openat(directoryFd, entry->d_name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
        if (other < 0) continue;
        if (::flock(other, LOCK_SH | LOCK_NB) != 0) {
            // "pid\nbenchmark\n", the second line once the run has named its benchmark.
            char buffer[256] = {};
            const ssize_t n = ::pread(other, buffer, sizeof buffer - 1, 0);
            const std::string text(buffer, n > 0 ? static_cast<std::size_t>(n) : 0);
            const auto first = text.find('\n');
            const auto second = first == std::string::npos ? first : text.find('\n', first + 1);
            runs.push_back(
                {pid, second == std::string::npos ? "" : text.substr(first + 1, second - first - 1)});
        } else if (const std::string path = directory + "/" + entry->d_name;
                   clearLeftOvers && namesOpenFile(path, other)) {
            ::unlink(path.c_str());
        }
        ::close(other);
    }
    ::closedir(entries);
    std::sort(runs.begin(), runs.end(), [](const OtherRun& a, const OtherRun& b) { return a.pid < b.pid; });
    return runs;
}

RunLock::RunLock(const std::string& directory, std::string_view kind) : kind_(kind) {
    const int directoryFd = openPrivateDirectory(directory, problem_);
    if (directoryFd < 0) return;
    const pid_t self = ::getpid();

    // The file is locked before it takes its name, so that no other process ever sees it
    // unlocked and removes it as left over.
    const std::string name = lockName(kind_, self);
    const std::string fresh = name + ".new";
    fd_ = ::openat(directoryFd, fresh.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd_ < 0) problem_ = "cannot mark the run in " + directory + ": " + std::strerror(errno);
    if (fd_ >= 0) {
        const std::string pid = std::to_string(self) + "\n";
        if (::flock(fd_, LOCK_EX | LOCK_NB) != 0 || ::write(fd_, pid.data(), pid.size()) < 0 ||
            ::renameat(directoryFd, fresh.c_str(), directoryFd, name.c_str()) != 0) {
            problem_ = "cannot mark the run in " + directory + ": " + std::strerror(errno);
            ::unlinkat(directoryFd, fresh.c_str(), 0);
            ::close(fd_);
            fd_ = -1;
        } else {
            path_ = directory + "/" + name;
        }
    }

    for (const OtherRun& other : marksIn(directoryFd, directory, kind_, /*clearLeftOvers=*/true))
        otherRuns_.push_back(other.pid);
    ::close(directoryFd);
}

void RunLock::setBenchmark(const std::string& title) {
    if (fd_ < 0) return;
    const std::string text = std::to_string(::getpid()) + "\n" + title + "\n";
    if (::pwrite(fd_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) return;
    [[maybe_unused]] const int ignored = ::ftruncate(fd_, static_cast<off_t>(text.size()));
}

std::vector<RunLock::OtherRun> RunLock::runsIn(const std::string& directory, std::string_view kind) {
    const int directoryFd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directoryFd < 0) return {};
    auto runs = marksIn(directoryFd, directory, kind, /*clearLeftOvers=*/false);
    ::close(directoryFd);
    return runs;
}

RunLock::~RunLock() {
    if (fd_ < 0) return;
    if (namesOpenFile(path_, fd_)) ::unlink(path_.c_str());
    ::close(fd_); // releases the lock
}

std::string concurrentRunWarning(const std::vector<pid_t>& otherRuns) {
    if (otherRuns.empty()) return {};
    if (otherRuns.size() == 1)
        return "Another Quarbel run is in progress (pid " + std::to_string(otherRuns.front()) +
               "): both runs' results will be skewed.";
    std::string pids;
    for (const pid_t pid : otherRuns)
        pids += (pids.empty() ? "" : ", ") + std::to_string(pid);
    return "Other Quarbel runs are in progress (pids " + pids +
           "): all their results and this run's will be skewed.";
}

std::string otherRunsText(const std::vector<RunLock::OtherRun>& otherRuns) {
    std::string runs;
    for (const RunLock::OtherRun& run : otherRuns)
        runs += (runs.empty() ? "" : "; ") + ("pid " + std::to_string(run.pid)) +
                (run.benchmark.empty() ? "" : ", on " + run.benchmark);
    return runs;
}

std::string runsBesideThisWarning(const std::vector<RunLock::OtherRun>& otherRuns) {
    const std::string runs = otherRunsText(otherRuns);
    if (runs.empty()) return {};
    return (otherRuns.size() == 1 ? "Another Quarbel run is going on beside this one ("
                                  : "Other Quarbel runs are going on beside this one (") +
           runs + "): the results of both are skewed.";
}

std::string unmarkedRunWarning(const RunLock& lock) {
    if (lock.held()) return {};
    return "Another Quarbel run at the same time would not be noticed: " + lock.problem() + ".";
}

} // namespace quarbel
