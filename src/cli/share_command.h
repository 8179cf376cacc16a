// SPDX-License-Identifier: Apache-2.0
// `quarbel share RUN [--out FILE]`: one HTML page that anybody can open in a browser, with the
// run's tables, charts, sensor traces and system, and its report inside for `quarbel import`.
#pragma once

#include <optional>
#include <string>

namespace quarbel::cli {

// RUN is a report file or a number from 'quarbel history'. Without --out the page is written
// here as quarbel-run-<start, UTC>.html. Returns 0, 1 when the page cannot be written, or 2.
int shareCommand(const std::string& run, const std::optional<std::string>& outPath);

} // namespace quarbel::cli
