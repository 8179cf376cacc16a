// SPDX-License-Identifier: Apache-2.0
// The JSON form of a run report, written after a run and read back by `quarbel card`.
#pragma once

#include "results/run_report.h"

#include <cstdint>
#include <string>
#include <variant>

namespace quarbel {

// The report as JSON text (schema 1), pretty-printed.
std::string jsonReportText(const RunReport& report);

// A report read back from its JSON text, for turning a saved run into result cards.
// Reports written before a result carried "accuracyMode" and "temperatureAtEnd" are
// accepted: the run's mode stands in for the first, the temperatures are unavailable.
// Returns a one-line description of the first problem for text that is not a report.
std::variant<RunReport, std::string> parseJsonReport(const std::string& text);

// The largest report file read back: a real report is well under a megabyte, so anything
// larger is refused before it is loaded into memory.
inline constexpr std::uintmax_t kLargestReportBytes = 50'000'000;

// The report in the file at `path`, opened once and read only when it is a regular file of at
// most kLargestReportBytes. Returns the one-line problem ("REPORT is a named pipe, not a JSON
// report", "cannot read REPORT: ...", "REPORT is not a Quarbel JSON report: ...").
std::variant<RunReport, std::string> readJsonReportFile(const std::string& path);

// The same from a file's text already read; `path` names it in the problem.
std::variant<RunReport, std::string> parseJsonReportFrom(const std::string& path, const std::string& text);

} // namespace quarbel
