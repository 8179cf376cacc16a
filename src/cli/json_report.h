// The JSON form of a run report.
#pragma once

#include "ui/run_report.h"

#include <string>

namespace quarbel::cli {

// The report as JSON text (schema 1), pretty-printed.
std::string jsonReportText(const RunReport& report);

} // namespace quarbel::cli
