// SPDX-License-Identifier: Apache-2.0
// `quarbel import FILE...`: reports from other machines added to this machine's history.
#pragma once

#include <string>
#include <vector>

namespace quarbel::cli {

// Every file is read and checked before anything is written: one that is not a report
// (corrupt, truncated, larger than 50 MB, of a schema this version does not know) refuses the
// whole import with exit 2 and leaves the history as it was. A report already in the
// history, or named twice, is skipped with a line; nothing in the history is replaced.
// Returns 0, 1 when the history cannot be written, or 2.
int importCommand(const std::vector<std::string>& files);

} // namespace quarbel::cli
