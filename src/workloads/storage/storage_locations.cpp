// SPDX-License-Identifier: Apache-2.0
#include "workloads/storage/storage_locations.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace quarbel {
namespace {

// File systems of the kernel's own state, not of files a benchmark could write.
bool isPseudo(const std::string& type) {
    static const char* const kPseudo[] = {
        "proc",    "sysfs",           "cgroup",     "cgroup2", "devpts",   "mqueue",     "debugfs",
        "tracefs", "securityfs",      "pstore",     "bpf",     "autofs",   "hugetlbfs",  "configfs",
        "fusectl", "binfmt_misc",     "efivarfs",   "nsfs",    "devtmpfs", "rpc_pipefs", "squashfs",
        "ramfs",   "fuse.gvfsd-fuse", "fuse.portal"};
    return std::find(std::begin(kPseudo), std::end(kPseudo), type) != std::end(kPseudo);
}

// Mountinfo escapes blanks and the like as \ooo.
std::string unescaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size()) {
            const std::string octal = text.substr(i + 1, 3);
            if (octal.find_first_not_of("01234567") == std::string::npos) {
                out += static_cast<char>(std::stoi(octal, nullptr, 8));
                i += 3;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

} // namespace

std::vector<MountedFilesystem> mountedFilesystems(const std::string& mountinfoText) {
    std::vector<MountedFilesystem> mounts;
    std::istringstream lines(mountinfoText);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::vector<std::string> parts;
        for (std::string field; fields >> field;)
            parts.push_back(field);
        const auto dash = std::find(parts.begin(), parts.end(), "-");
        if (parts.size() < 6 || dash == parts.end() || std::distance(dash, parts.end()) < 3) continue;
        MountedFilesystem mount;
        mount.mountPoint = unescaped(parts[4]);
        mount.type = *(dash + 1);
        mount.source = unescaped(*(dash + 2));
        mount.readOnly = ("," + parts[5] + ",").find(",ro,") != std::string::npos;
        if (isPseudo(mount.type) || mount.mountPoint.rfind("/proc", 0) == 0 ||
            mount.mountPoint.rfind("/sys", 0) == 0)
            continue;
        struct statvfs sizes {};
        if (::statvfs(mount.mountPoint.c_str(), &sizes) == 0) {
            mount.freeBytes = std::uint64_t{sizes.f_bavail} * sizes.f_frsize;
            mount.totalBytes = std::uint64_t{sizes.f_blocks} * sizes.f_frsize;
        }
        if (mount.totalBytes == 0) continue; // nothing to write to
        // A later mount on the same point hides the earlier one.
        std::erase_if(mounts, [&](const MountedFilesystem& m) { return m.mountPoint == mount.mountPoint; });
        mounts.push_back(std::move(mount));
    }
    return mounts;
}

std::vector<MountedFilesystem> mountedFilesystems() {
    std::ifstream file("/proc/self/mountinfo");
    std::stringstream text;
    text << file.rdbuf();
    return mountedFilesystems(text.str());
}

std::optional<std::string> storageDirectoryProblem(const std::string& directory) {
    if (directory.empty()) return "the storage folder is empty text";
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0) return directory + ": " + std::strerror(errno);
    if (!S_ISDIR(info.st_mode)) return directory + " is not a folder";
    if (::access(directory.c_str(), W_OK | X_OK) != 0)
        return directory + " is not writable: " + std::strerror(errno);
    return std::nullopt;
}

} // namespace quarbel
