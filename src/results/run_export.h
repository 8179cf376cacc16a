// SPDX-License-Identifier: Apache-2.0
// Runs exported for other tools and people: CSV and Markdown tables with the raw values
// (slice rates, energy and what the sensors saw included) and the reports themselves as one JSON document.
// The HTML page, whose charts need QtGui, is made by the cards (ui/cards/html_export.h).
#pragma once

#include "results/run_report.h"

#include <string>
#include <vector>

namespace quarbel {

struct ExportedRun {
    std::string name; // how the run was named: its history number or its report file
    RunReport report;
};

enum class ExportFormat { csv, markdown, html, json, openMetrics };

// "csv", "md", "html", "json", "openmetrics"; nothing for any other text.
std::optional<ExportFormat> exportFormatNamed(const std::string& name);

// One row per benchmark of each run, runs in the order given.
std::string exportCsv(const std::vector<ExportedRun>& runs);
std::string exportMarkdown(const std::vector<ExportedRun>& runs);
std::string exportJson(const std::vector<ExportedRun>& runs);

// What names a run in every export, whenever and wherever it is exported: its machine's
// identity and its start, "3fa2c1d0e9b87a65-2026-11-23T14:15:02Z" ("unknown-…" for reports
// from before runs named their machine).
std::string stableRunId(const RunReport& report);

} // namespace quarbel
