// SPDX-License-Identifier: Apache-2.0
#include "results/report_file.h"

#include "results/regular_file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace quarbel {
namespace {

constexpr int kMostLinks = 40; // as the kernel's own limit on links in one lookup

std::string errorText(int errorNumber) { return std::strerror(errorNumber); }

std::string directoryOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string fileNameOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string joined(const std::string& directory, const std::string& name) {
    return directory == "/" ? "/" + name : directory + "/" + name;
}

// A short fixed-length name, so that the temporary file fits wherever the report does.
std::string temporaryPattern(const std::string& directory) { return joined(directory, ".quarbel-XXXXXX"); }

// The working directory, or empty with errno set (it may have been removed).
std::string workingDirectory() {
    std::string buffer(PATH_MAX, '\0');
    if (::getcwd(buffer.data(), buffer.size()) == nullptr) return {};
    buffer.resize(std::strlen(buffer.c_str()));
    // A directory outside this process's root comes back as "(unreachable)...".
    if (buffer.front() != '/') {
        errno = ENOENT;
        return {};
    }
    return buffer;
}

std::string realPath(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) return {};
    std::string text(resolved);
    std::free(resolved);
    return text;
}

// `path` does not exist, though it may be a symbolic link to nothing: the path that
// creating it through the links would create.
std::variant<std::string, int> followDanglingLinks(std::string path) {
    for (int hop = 0; hop < kMostLinks; ++hop) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
        std::string target(PATH_MAX, '\0');
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return errno;
        target.resize(static_cast<std::size_t>(length));
        path = target.starts_with('/') ? target : joined(directoryOf(path), target);
    }
    return ELOOP;
}

} // namespace

std::variant<ReportTarget, std::string> resolveReportTarget(const std::string& option,
                                                            const std::string& argument) {
    if (argument.empty()) return option + " needs a file name, or - for standard output";
    if (argument == "-") return ReportTarget{true, {}, 0};
    const std::string prefix = option + " " + argument + ": ";

    std::string path = argument;
    if (!path.starts_with('/')) {
        const std::string cwd = workingDirectory();
        if (cwd.empty()) return prefix + "the working directory cannot be found (" + errorText(errno) + ")";
        path = joined(cwd, path);
    }

    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode))
            return option + " " + argument + " is " + fileKindText(status.st_mode) + ", not a regular file";
        path = realPath(path);
        if (path.empty()) return prefix + errorText(errno);
    } else if (errno == ENOENT) {
        auto created = followDanglingLinks(path);
        if (const int* error = std::get_if<int>(&created)) return prefix + errorText(*error);
        const std::string& newFile = std::get<std::string>(created);
        const std::string name = fileNameOf(newFile);
        if (name.empty() || name == "." || name == "..") return prefix + "not a file name";
        const std::string directory = realPath(directoryOf(newFile));
        if (directory.empty()) {
            if (errno == ENOENT) return prefix + "directory " + directoryOf(newFile) + " does not exist";
            return prefix + errorText(errno);
        }
        path = joined(directory, name);
    } else {
        return prefix + errorText(errno);
    }

    // The final write creates its temporary file beside the report: prove it can.
    std::string probe = temporaryPattern(directoryOf(path));
    const int fd = ::mkostemp(probe.data(), O_CLOEXEC);
    if (fd < 0)
        return prefix + "cannot create a file in " + directoryOf(path) + " (" + errorText(errno) + ")";
    ::close(fd);
    ::unlink(probe.c_str());

    const mode_t mask = ::umask(0);
    ::umask(mask);
    return ReportTarget{false, path, static_cast<mode_t>(0666 & ~mask)};
}

namespace {

// `text` in a new temporary file in `directory` with `mode` (and the owner of `owner`, where
// given and allowed), synced and closed. Its path, or empty with the reason in `problem`.
std::string writeTemporary(const std::string& directory, const std::string& target, mode_t mode,
                           const struct stat* owner, const std::string& text, std::string& problem,
                           bool sync = true) {
    std::string temporary = temporaryPattern(directory);
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        problem = "cannot create a temporary file in " + directory + ": " + errorText(errno);
        return {};
    }
    const auto fail = [&](int errorNumber) {
        ::close(fd);
        ::unlink(temporary.c_str());
        problem = "cannot write " + target + ": " + errorText(errorNumber);
        return std::string();
    };
    if (owner != nullptr && (owner->st_uid != ::geteuid() || owner->st_gid != ::getegid())) {
        [[maybe_unused]] const int ignored = ::fchown(fd, owner->st_uid, owner->st_gid);
    }
    if (::fchmod(fd, mode) != 0) return fail(errno);
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(fd, text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return fail(errno);
        written += static_cast<std::size_t>(n);
    }
    if (sync && ::fsync(fd) != 0) return fail(errno);
    if (::close(fd) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        problem = "cannot write " + target + ": " + errorText(error);
        return {};
    }
    return temporary;
}

// A new or renamed entry reaches the disk with its directory.
void syncDirectory(const std::string& directory) {
    if (const int dir = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
}

// Gives the complete file `temporary` the name `path` unless something has it already:
// a hard link fails rather than replace, whoever made the other file and whenever. On a
// file system without hard links the name is claimed by creating it exclusively, then the
// file is renamed over that claim. EEXIST when the name is taken.
int claimName(const std::string& temporary, const std::string& path) {
    if (::link(temporary.c_str(), path.c_str()) == 0) {
        ::unlink(temporary.c_str());
        return 0;
    }
    if (errno != EPERM && errno != ENOTSUP && errno != EOPNOTSUPP && errno != EMLINK) return errno;
    const int claim = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (claim < 0) return errno;
    ::close(claim);
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(path.c_str());
        return error;
    }
    return 0;
}

// Gives `temporary` the first of `names` that is free in `directory`. `error` is 0 when
// `path` is its name now, EEXIST when every name is taken, else what failed at `path`.
struct Claim {
    std::string path;
    int error = EEXIST;
};
Claim claimFirstFreeName(const std::string& temporary, const std::string& directory,
                         const ReportNames& names) {
    Claim claim;
    for (int i = 0; i < names.count; ++i) {
        claim.path = joined(directory, names.at(i));
        claim.error = claimName(temporary, claim.path);
        if (claim.error != EEXIST) return claim;
    }
    return claim;
}

} // namespace

ReportWrite writeReportFile(const ReportTarget& target, const std::string& text) {
    const std::string directory = directoryOf(target.path);
    // An existing report keeps its permission bits and, where allowed, its owner.
    mode_t mode = target.newFileMode;
    struct stat existing {};
    const bool replacing = ::stat(target.path.c_str(), &existing) == 0 && S_ISREG(existing.st_mode);
    if (replacing) mode = existing.st_mode & 07777;
    std::string problem;
    const std::string temporary =
        writeTemporary(directory, target.path, mode, replacing ? &existing : nullptr, text, problem);
    if (temporary.empty()) return {problem, {}};
    if (::rename(temporary.c_str(), target.path.c_str()) != 0)
        return {"cannot replace " + target.path + ": " + errorText(errno), temporary};
    syncDirectory(directory);
    return {};
}

std::string ReportNames::at(int index) const {
    return index == 0 ? stem + ".json" : stem + "-" + std::to_string(index + 1) + ".json";
}

NewReportFile writeNewReportFile(const std::string& directory, const ReportNames& names, mode_t mode,
                                 const std::string& text) {
    std::string problem;
    const std::string temporary =
        writeTemporary(directory, joined(directory, names.at(0)), mode, nullptr, text, problem);
    if (temporary.empty()) return {{}, problem};
    const Claim claim = claimFirstFreeName(temporary, directory, names);
    if (claim.error != 0) {
        ::unlink(temporary.c_str());
        if (claim.error == EEXIST) return {{}, "every name for the report in " + directory + " is taken"};
        return {{}, "cannot write " + claim.path + ": " + errorText(claim.error)};
    }
    syncDirectory(directory);
    return {claim.path, {}};
}

NewReportBatch writeNewReportFiles(const std::string& directory, const std::vector<NewReport>& reports,
                                   mode_t mode) {
    NewReportBatch batch;
    std::vector<std::string> temporaries;
    const auto rollBack = [&](std::string problem) {
        for (const std::string& path : temporaries)
            ::unlink(path.c_str());
        for (const std::string& path : batch.paths)
            ::unlink(path.c_str());
        syncDirectory(directory);
        return NewReportBatch{{}, std::move(problem)};
    };
    for (const NewReport& report : reports) {
        std::string problem;
        const std::string temporary = writeTemporary(directory, joined(directory, report.names.at(0)), mode,
                                                     nullptr, report.text, problem, /*sync=*/false);
        if (temporary.empty()) return rollBack(problem);
        temporaries.push_back(temporary);
    }
    // One flush of the file system for the whole batch rather than one per file: the files
    // are complete on the disk before any of them takes its name.
    const int dir = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int synced = dir >= 0 ? ::syncfs(dir) : -1;
    const int syncError = errno;
    if (dir >= 0) ::close(dir);
    if (synced != 0) return rollBack("cannot write to " + directory + ": " + errorText(syncError));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        const Claim claim = claimFirstFreeName(temporaries[i], directory, reports[i].names);
        if (claim.error == EEXIST) return rollBack("every name for a report in " + directory + " is taken");
        if (claim.error != 0) return rollBack("cannot write " + claim.path + ": " + errorText(claim.error));
        batch.paths.push_back(claim.path);
        temporaries[i].clear(); // now the report itself
    }
    syncDirectory(directory);
    return batch;
}

} // namespace quarbel
