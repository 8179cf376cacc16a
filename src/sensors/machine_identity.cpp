// SPDX-License-Identifier: Apache-2.0
#include "sensors/machine_identity.h"

#include "model/storage_root.h"
#include "sensors/sysfs_text.h"

#include <openssl/evp.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace quarbel {
namespace {

std::string scratchParentOf(const std::string& given) {
    return given.empty() ? storageRootDirectory() : given;
}

// The block device holding `path` by its device numbers in sysfs; a partition names its
// disk's model. "tmpfs" for memory, the file system's magic otherwise.
std::string storageDeviceOf(const std::string& root, const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return {};
    struct statfs fs {};
    if (::statfs(path.c_str(), &fs) == 0 && fs.f_type == TMPFS_MAGIC) return "tmpfs";
    const std::string link = root + "/sys/dev/block/" + std::to_string(major(info.st_dev)) + ":" +
                             std::to_string(minor(info.st_dev));
    std::error_code error;
    const std::filesystem::path device = std::filesystem::canonical(link, error);
    if (error) return {};
    std::string name = device.filename().string();
    std::string model = sysfs::readLine((device / "device/model").string());
    if (model.empty() && std::filesystem::exists(device / "partition", error))
        model = sysfs::readLine((device.parent_path() / "device/model").string());
    return model.empty() ? name : name + " (" + model + ")";
}

} // namespace

std::string hashedMachineId(const std::string& machineIdText) {
    const std::string_view id = sysfs::trimmed(machineIdText);
    if (id.empty()) return {};
    const std::string salted = "quarbel:" + std::string(id);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(salted.data(), salted.size(), digest, &length, EVP_sha256(), nullptr) != 1 || length < 8)
        return {};
    char hex[17];
    for (int i = 0; i < 8; ++i)
        std::snprintf(hex + 2 * i, 3, "%02x", digest[i]);
    return hex;
}

MachineIdentity readMachineIdentity(const std::string& rootDirectory, const std::string& scratchParent) {
    MachineIdentity identity;
    char host[256] = {};
    if (::gethostname(host, sizeof host - 1) == 0) identity.hostName = host;
    std::string id = sysfs::readLine(rootDirectory + "/etc/machine-id");
    if (id.empty()) id = sysfs::readLine(rootDirectory + "/var/lib/dbus/machine-id");
    identity.machineId = hashedMachineId(id);
    utsname names{};
    if (::uname(&names) == 0) identity.kernel = names.release;
    identity.storageDevice = storageDeviceOf(rootDirectory, scratchParentOf(scratchParent));
    return identity;
}

} // namespace quarbel
