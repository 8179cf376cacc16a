// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/shared_page.h"

#include "results/markup_text.h"
#include "results/shared_report.h"
#include "ui/cards/html_export.h"

namespace quarbel::cards {
namespace {

// The machine the run was made on: its system facts and manifest, as a table for the page.
std::string systemSection(const RunReport& report) {
    std::string rows;
    const auto row = [&rows](const std::string& label, const std::string& value) {
        if (!value.empty())
            rows += "<tr><th>" + escapedMarkup(label) + "</th><td>" + escapedMarkup(value) + "</td></tr>\n";
    };
    for (const auto& [label, value] : report.system)
        row(label, value);
    for (const ManifestField& field : report.manifest)
        row(field.label, field.value);
    if (rows.empty()) return {};
    return "<h2>System</h2>\n<table>\n" + rows + "</table>\n";
}

std::string withSection(std::string page, const std::string& section) {
    const auto at = page.rfind("<p class=\"note\">Made by");
    const auto body = page.rfind("</body>");
    page.insert(at != std::string::npos ? at : body != std::string::npos ? body : page.size(), section);
    return page;
}

} // namespace

std::string sharedPage(const std::string& path, const std::string& reportText, RunReport report) {
    const std::string system = systemSection(report);
    return embedReport(withSection(exportHtml({{path, std::move(report)}}), system), reportText);
}

} // namespace quarbel::cards
