// SPDX-License-Identifier: Apache-2.0
// Where the storage benchmarks make their scratch folder, and so which disk they measure.
#pragma once

#include <string>

namespace quarbel {

// QUARBEL_STORAGE_DIR (set by `run --storage-dir`), else $TMPDIR, else "/tmp", whichever is
// first set and not empty; trailing slashes dropped.
std::string storageRootDirectory();

} // namespace quarbel
