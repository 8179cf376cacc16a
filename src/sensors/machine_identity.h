// SPDX-License-Identifier: Apache-2.0
// Which machine a report comes from, so that reports gathered from a fleet can be told
// apart: the host's name, a stable identifier that does not give away /etc/machine-id, the
// kernel and the storage device the storage benchmarks write to.
#pragma once

#include <string>

namespace quarbel {

struct MachineIdentity {
    std::string hostName;
    // The first 16 hexadecimal digits of SHA-256("quarbel:" + /etc/machine-id): stable for
    // the installation, useless for finding the machine's own identifier. Empty when the
    // system has none.
    std::string machineId;
    std::string kernel;        // the kernel release, e.g. "6.1.0-18-amd64"
    std::string storageDevice; // under the scratch directory, e.g. "nvme0n1 (Samsung SSD 980)" or "tmpfs"
    bool operator==(const MachineIdentity&) const = default;
};

// `rootDirectory` prefixes every path read (tests point it at a fake tree); the storage
// device is the one holding `scratchParent` ($TMPDIR, else /tmp).
MachineIdentity readMachineIdentity(const std::string& rootDirectory = {},
                                    const std::string& scratchParent = {});

// The application-specific identifier of a machine-id text (trimmed); empty for empty text.
std::string hashedMachineId(const std::string& machineIdText);

} // namespace quarbel
