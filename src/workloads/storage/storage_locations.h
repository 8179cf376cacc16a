// SPDX-License-Identifier: Apache-2.0
// Where the storage benchmarks can write: the mounted file systems with their free space, for
// `quarbel devices`, and the check of a folder chosen with `run --storage-dir`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct MountedFilesystem {
    std::string mountPoint;
    std::string type;            // "ext4", "xfs", "tmpfs", ...
    std::string source;          // "/dev/nvme0n1p2"
    std::uint64_t freeBytes = 0; // available to this user
    std::uint64_t totalBytes = 0;
    bool readOnly = false;
    bool operator==(const MountedFilesystem&) const = default;
};

// The file systems that hold files (not /proc, /sys, cgroups and the like), from the
// mountinfo text given, in its order; sizes by statvfs of each mount point.
std::vector<MountedFilesystem> mountedFilesystems(const std::string& mountinfoText);
// The same for this process's /proc/self/mountinfo.
std::vector<MountedFilesystem> mountedFilesystems();

// Why `directory` cannot hold the storage benchmarks' scratch folder (missing, not a folder,
// not writable), or nullopt when it can.
std::optional<std::string> storageDirectoryProblem(const std::string& directory);

} // namespace quarbel
