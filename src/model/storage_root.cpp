// SPDX-License-Identifier: Apache-2.0
#include "model/storage_root.h"

#include <cstdlib>

namespace quarbel {

std::string storageRootDirectory() {
    std::string root = "/tmp";
    for (const char* name : {"QUARBEL_STORAGE_DIR", "TMPDIR"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') {
            root = value;
            break;
        }
    }
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    return root;
}

} // namespace quarbel
