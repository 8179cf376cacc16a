// SPDX-License-Identifier: Apache-2.0
// `quarbel export RUN... --format csv|md|html|json|openmetrics [--out FILE]`.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quarbel::cli {

// Runs are history numbers or report files. Writes to standard output, or replaces FILE
// atomically. Returns the exit status: 2 for a run that cannot be read, an unknown format or
// an unusable FILE (nothing written), 1 when the output cannot be written.
int exportCommand(const std::vector<std::string>& runs, const std::string& formatName,
                  const std::optional<std::string>& outPath);

} // namespace quarbel::cli
