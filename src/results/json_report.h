// The JSON form of a run report, written after a run and read back by `quarbel card`.
#pragma once

#include "results/run_report.h"

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

} // namespace quarbel
