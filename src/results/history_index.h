// SPDX-License-Identifier: Apache-2.0
// A cache of what the history folder's reports say, so that listing ten thousand runs does
// not parse ten thousand JSON files. The reports stay the record: the index holds one line
// per file, keyed by its name, size and modification time, and a file whose key changed is
// read again. An index that is missing, damaged or of another version is simply rebuilt.
#pragma once

#include "results/run_history.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace quarbel {

struct IndexedFile {
    std::string name; // within the history folder
    std::uintmax_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::optional<SavedRun> run; // what the listing needs of it; its path is left empty
    std::string problem;         // why it is not a report, when it is not
};

// The index file of a history folder: "runs.index" beside "runs".
std::string historyIndexPath(const std::string& directory);

// Its entries by file name; empty when it is missing or not an index of this version. With
// `withResults` false the runs come without their results. Only a regular file is read:
// anything else at `path` (a directory, a named pipe) is left unopened, and `unusable`, where
// given, says what it is.
std::unordered_map<std::string, IndexedFile>
readHistoryIndex(const std::string& path, bool withResults = true, std::string* unusable = nullptr);

// Replaces it atomically; false when it could not be written (the listing works without it).
bool writeHistoryIndex(const std::string& path, const std::vector<IndexedFile>& files);

} // namespace quarbel
