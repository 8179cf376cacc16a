// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/html_export.h"

#include "results/markup_text.h"
#include "ui/cards/card_fonts.h"
#include "ui/cards/line_chart.h"
#include "ui/cards/trace_chart.h"

#include <QBuffer>
#include <QPainter>
#include <QSvgGenerator>

#include <algorithm>
#include <cstdio>

namespace quarbel::cards {
namespace {

constexpr QSize kChartSize(560, 180);
constexpr QSize kTraceSize(560, 150);

// The page's own dark colours, those of its style sheet below.
ChartPalette pagePalette() {
    ChartPalette palette = cardChartPalette();
    palette.panel = QColor(0x18, 0x1b, 0x22);
    palette.text = QColor(0xe8, 0xea, 0xf0);
    palette.secondary = QColor(0x7f, 0x8a, 0xa3);
    palette.muted = QColor(0x9a, 0xa3, 0xb5);
    palette.border = QColor(0x3a, 0x3f, 0x4c);
    palette.warning = QColor(0xf5, 0xa5, 0x24);
    return palette;
}

const QColor kBarColor(0xf5, 0xa5, 0x24);
const QColor kLineColor(0x2e, 0xc4, 0xe8);

QString q(const std::string& text) { return QString::fromStdString(text); }

std::string chartSvg(const LineChart& chart, const ChartPalette& palette) {
    return svgElement(kChartSize, chart.title, [&](QPainter& painter, const QRectF& box) {
        paintLineChart(painter, box, chart, palette);
    });
}

std::string cpuOf(const RunReport& report) {
    for (const auto& [label, value] : report.system)
        if (label == "CPU") return value;
    return {};
}

std::string modeOf(const RunReport& report) {
    return std::string(report.accuracyMode ? "accuracy" : "standard") + (report.quick ? ", quick" : "");
}

} // namespace

std::string svgElement(QSize size, const QString& title,
                       const std::function<void(QPainter&, const QRectF&)>& paint) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(size);
    generator.setViewBox(QRect(QPoint(0, 0), size));
    generator.setTitle(title);
    {
        QPainter painter(&generator);
        paint(painter, QRectF(QPointF(0, 0), size));
    }
    std::string svg = buffer.data().toStdString();
    // Inside HTML: no XML declaration, and the size in CSS pixels rather than millimetres.
    svg.erase(0, std::min(svg.find("<svg"), svg.size()));
    const std::size_t open = svg.find('>');
    const std::string head = "<svg width=\"" + std::to_string(size.width()) + "\" height=\"" +
                             std::to_string(size.height()) + "\" viewBox=\"0 0 " +
                             std::to_string(size.width()) + " " + std::to_string(size.height()) +
                             "\" xmlns=\"http://www.w3.org/2000/svg\" version=\"1.2\" role=\"img\">";
    if (open != std::string::npos) svg.replace(0, open + 1, head);
    return svg;
}

std::string exportHtml(const std::vector<ExportedRun>& runs) {
    std::vector<const ExportedRun*> byStart;
    for (const auto& run : runs)
        byStart.push_back(&run);
    std::stable_sort(byStart.begin(), byStart.end(), [](const ExportedRun* a, const ExportedRun* b) {
        return a->report.startedAt < b->report.startedAt;
    });
    const ChartPalette palette = pagePalette();

    std::string html = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Quarbel results</title>
<style>
body{font-family:Inter,system-ui,sans-serif;background:#111318;color:#e8eaf0;margin:24px}
h1{font-size:22px}h2{font-size:17px;margin-top:28px}
table{border-collapse:collapse;font-size:13px}th,td{padding:4px 8px;border-bottom:1px solid #2a2e38;text-align:left}
th{color:#9aa3b5}td.n{text-align:right;font-variant-numeric:tabular-nums}
.charts{display:flex;flex-wrap:wrap;gap:12px}svg text{font-family:Inter,system-ui,sans-serif}
.trace{display:flex;align-items:center;gap:16px}.note{color:#9aa3b5;font-size:12px}
</style></head><body>
<h1>Quarbel results</h1>
)";
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "<p>%zu run%s.</p>\n", runs.size(), runs.size() == 1 ? "" : "s");
    html += buffer;

    // A report file goes by its file name under the axis; the table below has the whole path.
    const auto runLabel = [](const ExportedRun& run) {
        QString name = q(run.name.substr(run.name.find_last_of('/') + 1));
        if (name.endsWith(QStringLiteral(".json"))) name.chop(5);
        return name;
    };
    html += "<h2>Charts</h2><div class=\"charts\">\n";
    LineChart global{QStringLiteral("Global score per run"), kBarColor, {}, LineChart::Style::bars};
    for (const auto* run : byStart)
        global.points.push_back({runLabel(*run), run->report.globalScore});
    html += chartSvg(global, palette) + "\n";
    // Each benchmark in the order it first appears, its scores over the runs that have it.
    std::vector<BenchmarkID> benchmarks;
    for (const auto* run : byStart)
        for (const auto& entry : run->report.results)
            if (std::find(benchmarks.begin(), benchmarks.end(), entry.id) == benchmarks.end())
                benchmarks.push_back(entry.id);
    for (BenchmarkID id : benchmarks) {
        LineChart chart{
            q(std::string(title(id)) + " (points, 95 % interval)"), kLineColor, {}, LineChart::Style::line};
        for (const auto* run : byStart)
            for (const auto& entry : run->report.results)
                if (entry.id == id && entry.outcome.status == OutcomeStatus::ok) {
                    const auto& u = entry.statistics.uncertainty;
                    chart.points.push_back({runLabel(*run), entry.outcome.score,
                                            u ? entry.outcome.score * u->ci95Percent() / 100 : 0, false,
                                            entry.statistics.noisy});
                }
        if (!chart.points.empty()) html += chartSvg(chart, palette) + "\n";
    }

    constexpr const char* kHeadings[] = {"Run",       "Started (UTC)", "CPU",      "Mode",
                                         "Benchmark", "Status",        "Score",    "95 %",
                                         "Primary",   "Secondary",     "Duration", "Noisy"};
    html += "</div>\n<h2>Results</h2>\n<table><thead><tr>";
    for (const char* heading : kHeadings)
        html += std::string("<th>") + heading + "</th>";
    html += "</tr></thead><tbody>\n";
    for (const auto* run : byStart)
        for (const auto& entry : run->report.results) {
            const BenchmarkOutcome& o = entry.outcome;
            auto td = [](const std::string& text, bool numeric = false) {
                return std::string(numeric ? "<td class=\"n\">" : "<td>") + escapedMarkup(text) + "</td>";
            };
            html += "<tr>" + td(run->name) + td(isoTimestamp(run->report.startedAt)) +
                    td(cpuOf(run->report)) + td(modeOf(run->report)) + td(std::string(title(entry.id))) +
                    td(std::string(rawValue(o.status))) + td(entry.scoreText, true) +
                    td(uncertaintyText(entry.statistics.uncertainty), true) +
                    td(o.primary.label + " " + cardValue(o.primary)) +
                    td(o.secondary ? o.secondary->label + " " + cardValue(*o.secondary) : "") +
                    td(entry.durationText, true) + td(entry.statistics.noisy ? "yes" : "") + "</tr>\n";
            const SensorTrace& trace = entry.statistics.trace;
            if (trace.empty()) continue;
            const QString traceTitle = q(std::string(title(entry.id)) + ": sensors while it ran");
            html += "<tr><td colspan=\"" + std::to_string(std::size(kHeadings)) + "\"><div class=\"trace\">" +
                    svgElement(kTraceSize, traceTitle, [&](QPainter& painter, const QRectF& box) {
                        paintTraceChart(painter, box, trace, palette);
                    });
            if (!entry.statistics.traceSummary.empty())
                html += "<span class=\"note\">" + escapedMarkup(entry.statistics.traceSummary) + "</span>";
            html += "</div></td></tr>\n";
        }
    html += "</tbody></table>\n<p class=\"note\">Made by Quarbel " +
            escapedMarkup(runs.empty() ? std::string() : runs.front().report.appVersion) +
            ". Everything in this page is in this file.</p>\n</body></html>\n";
    return html;
}

} // namespace quarbel::cards
