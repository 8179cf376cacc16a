// Runs exported for other tools and people: CSV and Markdown tables with the raw values
// (slice rates included), the reports themselves as one JSON document, and one
// self-contained HTML page with the table and charts drawn as inline SVG (no scripts, nothing
// fetched).
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
// Charts: each run's global score, and each benchmark's score over the runs in the order of
// their start, with its 95 % interval.
std::string exportHtml(const std::vector<ExportedRun>& runs);

// What names a run in every export, whenever and wherever it is exported: its machine's
// identity and its start, "3fa2c1d0e9b87a65-2026-11-23T14:15:02Z" ("unknown-…" for reports
// from before runs named their machine).
std::string stableRunId(const RunReport& report);

} // namespace quarbel
