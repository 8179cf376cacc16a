// The JSON form of a run report, written atomically.
#pragma once

#include "ui/run_report.h"

#include <string>

namespace quarbel::cli {

// The report as JSON text (schema 1), pretty-printed.
std::string jsonReportText(const RunReport& report);

// Writes `text` to `path` through a temporary file in the same directory and a rename,
// so a reader never sees half a file. Returns an error message, or empty on success.
std::string writeFileAtomically(const std::string& path, const std::string& text);

} // namespace quarbel::cli
