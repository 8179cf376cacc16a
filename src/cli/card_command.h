// SPDX-License-Identifier: Apache-2.0
// `quarbel card`: turns a saved JSON report into result cards, so that a run on a
// server without a display can be shared later.
#pragma once

#include <string>

namespace quarbel::cli {

// The whole `quarbel card REPORT --out DIR` command: exit 2 for a report that cannot be
// read or is not a report and for a directory that cannot be written, before any card.
int cardCommand(const std::string& reportPath, const std::string& outArgument, int& argc, char** argv);

} // namespace quarbel::cli
