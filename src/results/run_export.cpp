#include "results/run_export.h"

#include "sensors/system_snapshot.h"

#include "model/number_format.h"
#include "results/json_report.h"
#include "results/markup_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>

namespace quarbel {
namespace {

std::string number(double value, int decimals) { return format(value, decimals); }

std::string cpuOf(const RunReport& report) {
    for (const auto& [label, value] : report.system)
        if (label == "CPU") return value;
    return {};
}

// A manifest field of the run, empty in reports from before manifests.
std::string manifestValue(const RunReport& report, std::string_view key) {
    for (const auto& field : report.manifest)
        if (field.key == key) return field.value;
    return {};
}

std::string gpuOf(const RunReport& report) {
    for (const auto& [label, value] : report.system)
        if (label == kGpuRowLabel || label == "Metal GPU") return value;
    return {};
}

std::string modeOf(const RunReport& report) {
    return std::string(report.accuracyMode ? "accuracy" : "standard") + (report.quick ? ", quick" : "");
}

std::string sliceRatesText(const ResultStatistics& statistics) {
    std::string text;
    for (const auto& slice : statistics.slices) {
        if (!text.empty()) text += ' ';
        text += number(slice.slice.rate(), 6);
    }
    return text;
}

std::string optionalNumber(const std::optional<double>& value, int decimals) {
    return value ? number(*value, decimals) : std::string();
}

// The cells of one benchmark of one run, in the order of kColumns.
constexpr const char* kColumns[] = {"run",
                                    "host",
                                    "machine_id",
                                    "started_at",
                                    "cpu",
                                    "version",
                                    "mode",
                                    "benchmark",
                                    "title",
                                    "status",
                                    "score",
                                    "ci95_percent",
                                    "primary_label",
                                    "primary_value",
                                    "primary_unit",
                                    "secondary_label",
                                    "secondary_value",
                                    "secondary_unit",
                                    "duration_s",
                                    "stability_percent",
                                    "noisy",
                                    "steal_percent",
                                    "other_cpu_percent",
                                    "passes",
                                    "gpu_memory",
                                    "gpu_bytes_copied",
                                    "gpu_workgroup_size",
                                    "gpu_dispatches_per_submission",
                                    "gpu_busy_fraction",
                                    "gpu_device",
                                    "opencl_device",
                                    "storage_dir",
                                    "slice_rates"};

std::vector<std::string> rowCells(const ExportedRun& run, const ReportEntry& entry) {
    const BenchmarkOutcome& o = entry.outcome;
    const ResultStatistics& s = entry.statistics;
    const bool ok = o.status == OutcomeStatus::ok;
    const MeasurementLine none;
    const MeasurementLine& second = o.secondary ? *o.secondary : none;
    const std::optional<GpuExecution>& gpu = o.gpu;
    const std::string machineId = run.report.machine ? run.report.machine->machineId : std::string();
    return {stableRunId(run.report),
            run.report.machine ? run.report.machine->hostName : std::string(),
            machineId,
            isoTimestamp(run.report.startedAt),
            cpuOf(run.report),
            run.report.appVersion,
            modeOf(run.report),
            std::string(rawValue(entry.id)),
            std::string(title(entry.id)),
            std::string(rawValue(o.status)),
            ok ? number(o.score, 2) : "",
            s.uncertainty ? number(s.uncertainty->ci95Percent(), 2) : "",
            o.primary.label,
            o.primary.value,
            o.primary.unit,
            second.label,
            second.value,
            second.unit,
            number(o.duration, 3),
            optionalNumber(entry.stabilityPercent, 1),
            s.noisy ? "1" : "0",
            s.interference ? number(s.interference->stealPercent, 2) : "",
            s.interference ? number(s.interference->otherCpuPercent, 2) : "",
            std::to_string(s.passes),
            gpu && gpu->placement ? std::string(rawValue(*gpu->placement)) : "",
            gpu ? std::to_string(gpu->bytesCopied) : "",
            gpu && gpu->groupSize > 0 ? std::to_string(gpu->groupSize) : "",
            gpu ? std::to_string(gpu->dispatchesPerSubmission) : "",
            gpu && gpu->busyFraction ? number(*gpu->busyFraction, 4) : "",
            gpuOf(run.report),
            manifestValue(run.report, "openclDriver"),
            manifestValue(run.report, "storageDirectory"),
            sliceRatesText(s)};
}

// A cell a spreadsheet would run as a formula (a host or CPU name from an imported report
// that starts with "=", "+", "-" or "@") is kept as text; numbers stay numbers.
std::string spreadsheetSafe(const std::string& text) {
    if (text.empty() || std::string_view("=+-@\t\r").find(text.front()) == std::string_view::npos)
        return text;
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    if (end != nullptr && *end == '\0') return text;
    return "'" + text;
}

std::string csvField(const std::string& cell) {
    const std::string text = spreadsheetSafe(cell);
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

std::string markdownCell(const std::string& cell) {
    const std::string text = spreadsheetSafe(cell);
    std::string out;
    for (char c : text) {
        if (c == '|') out += '\\';
        out += c == '\n' ? ' ' : c;
    }
    return out;
}

// A point of a chart: its label under the axis, the value and its interval (+/- in the
// value's units, 0 for none).
struct ChartPoint {
    std::string label;
    double value = 0;
    double plusMinus = 0;
};

// A small chart of `points` left to right: bars, or a line with dots and interval whiskers.
std::string svgChart(const std::string& title, const std::vector<ChartPoint>& points, bool bars) {
    constexpr double kWidth = 560, kHeight = 180, kLeft = 70, kRight = 12, kTop = 28, kBottom = 34;
    double top = 0;
    for (const auto& p : points)
        top = std::max(top, p.value + p.plusMinus);
    if (!(top > 0)) top = 1;
    const double plotWidth = kWidth - kLeft - kRight, plotHeight = kHeight - kTop - kBottom;
    const double step = plotWidth / static_cast<double>(std::max<std::size_t>(points.size(), 1));
    auto x = [&](std::size_t i) { return kLeft + step * (static_cast<double>(i) + 0.5); };
    auto y = [&](double v) { return kTop + plotHeight * (1 - v / top); };
    char buffer[256];
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 560 180\" width=\"560\" "
                      "height=\"180\" role=\"img\"><title>" +
                      escapedMarkup(title) + "</title>";
    svg += "<text x=\"8\" y=\"18\" class=\"t\">" + escapedMarkup(title) + "</text>";
    std::snprintf(buffer, sizeof buffer,
                  "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" class=\"axis\"/>"
                  "<text x=\"%.1f\" y=\"%.1f\" class=\"v\" text-anchor=\"end\">%s</text>"
                  "<text x=\"%.1f\" y=\"%.1f\" class=\"v\" text-anchor=\"end\">0</text>",
                  kLeft, kTop + plotHeight, kWidth - kRight, kTop + plotHeight, kLeft - 6, kTop + 4,
                  escapedMarkup(scoreText(top)).c_str(), kLeft - 6, kTop + plotHeight);
    svg += buffer;
    std::string line;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const ChartPoint& p = points[i];
        if (bars) {
            const double w = std::min(step * 0.7, 48.0);
            std::snprintf(buffer, sizeof buffer,
                          "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" class=\"bar\"/>",
                          x(i) - w / 2, y(p.value), w, kTop + plotHeight - y(p.value));
            svg += buffer;
        } else {
            std::snprintf(buffer, sizeof buffer, "%s%.1f,%.1f", line.empty() ? "" : " ", x(i), y(p.value));
            line += buffer;
            if (p.plusMinus > 0) {
                std::snprintf(buffer, sizeof buffer,
                              "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" class=\"ci\"/>", x(i),
                              y(p.value + p.plusMinus), x(i), y(std::max(p.value - p.plusMinus, 0.0)));
                svg += buffer;
            }
            std::snprintf(buffer, sizeof buffer, "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"3.5\" class=\"dot\"/>",
                          x(i), y(p.value));
            svg += buffer;
        }
        // Label every run while they fit, else about twelve of them.
        const std::size_t every = std::max<std::size_t>(1, points.size() / 12);
        if (i % every == 0) {
            std::snprintf(buffer, sizeof buffer,
                          "<text x=\"%.1f\" y=\"%.1f\" class=\"v\" text-anchor=\"middle\">", x(i),
                          kHeight - 14);
            // A report file goes by its file name; the table below has the whole path.
            std::string label = p.label.substr(p.label.find_last_of('/') + 1);
            if (label.size() > 22) label = label.substr(0, 21) + "…";
            svg += buffer + escapedMarkup(label) + "</text>";
        }
    }
    if (!line.empty()) svg += "<polyline points=\"" + line + "\" class=\"line\"/>";
    return svg + "</svg>\n";
}

} // namespace

std::optional<ExportFormat> exportFormatNamed(const std::string& name) {
    static const std::map<std::string, ExportFormat> kNames = {{"csv", ExportFormat::csv},
                                                               {"md", ExportFormat::markdown},
                                                               {"html", ExportFormat::html},
                                                               {"json", ExportFormat::json},
                                                               {"openmetrics", ExportFormat::openMetrics}};
    const auto it = kNames.find(name);
    if (it == kNames.end()) return std::nullopt;
    return it->second;
}

std::string exportCsv(const std::vector<ExportedRun>& runs) {
    std::string out;
    for (const char* column : kColumns)
        out += std::string(out.empty() ? "" : ",") + column;
    out += "\r\n";
    for (const auto& run : runs)
        for (const auto& entry : run.report.results) {
            std::string line;
            for (const auto& cell : rowCells(run, entry))
                line.append(line.empty() ? "" : ",").append(csvField(cell));
            out += line + "\r\n";
        }
    return out;
}

std::string exportMarkdown(const std::vector<ExportedRun>& runs) {
    std::string out = "|";
    std::string rule = "|";
    for (const char* column : kColumns) {
        out += std::string(" ") + column + " |";
        rule += " --- |";
    }
    out += "\n" + rule + "\n";
    for (const auto& run : runs)
        for (const auto& entry : run.report.results) {
            out += "|";
            for (const auto& cell : rowCells(run, entry))
                out.append(" ").append(markdownCell(cell)).append(" |");
            out += "\n";
        }
    return out;
}

std::string exportJson(const std::vector<ExportedRun>& runs) {
    nlohmann::ordered_json document = {{"schema", 1}, {"runs", nlohmann::ordered_json::array()}};
    for (const auto& run : runs) {
        auto report = nlohmann::ordered_json::parse(jsonReportText(run.report));
        report["name"] = run.name;
        document["runs"].push_back(std::move(report));
    }
    return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string exportHtml(const std::vector<ExportedRun>& runs) {
    std::vector<const ExportedRun*> byStart;
    for (const auto& run : runs)
        byStart.push_back(&run);
    std::stable_sort(byStart.begin(), byStart.end(), [](const ExportedRun* a, const ExportedRun* b) {
        return a->report.startedAt < b->report.startedAt;
    });

    std::string html = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Quarbel results</title>
<style>
body{font-family:Inter,system-ui,sans-serif;background:#111318;color:#e8eaf0;margin:24px}
h1{font-size:22px}h2{font-size:17px;margin-top:28px}
table{border-collapse:collapse;font-size:13px}th,td{padding:4px 8px;border-bottom:1px solid #2a2e38;text-align:left}
th{color:#9aa3b5}td.n{text-align:right;font-variant-numeric:tabular-nums}
.charts{display:flex;flex-wrap:wrap;gap:12px}svg{background:#181b22;border-radius:8px}
.t{fill:#e8eaf0;font-size:13px;font-weight:600}.v{fill:#9aa3b5;font-size:10px}
.axis{stroke:#3a3f4c}.bar{fill:#f5a524}.line{fill:none;stroke:#2ec4e8;stroke-width:2}
.dot{fill:#2ec4e8}.ci{stroke:#7f8aa3;stroke-width:1.5}
</style></head><body>
<h1>Quarbel results</h1>
)";
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "<p>%zu run%s.</p>\n", runs.size(), runs.size() == 1 ? "" : "s");
    html += buffer;

    html += "<h2>Charts</h2><div class=\"charts\">\n";
    std::vector<ChartPoint> global;
    for (const auto* run : byStart)
        global.push_back({run->name, run->report.globalScore, 0});
    html += svgChart("Global score per run", global, true);
    // Each benchmark in the order it first appears, its scores over the runs that have it.
    std::vector<BenchmarkID> benchmarks;
    for (const auto* run : byStart)
        for (const auto& entry : run->report.results)
            if (std::find(benchmarks.begin(), benchmarks.end(), entry.id) == benchmarks.end())
                benchmarks.push_back(entry.id);
    for (BenchmarkID id : benchmarks) {
        std::vector<ChartPoint> points;
        for (const auto* run : byStart)
            for (const auto& entry : run->report.results)
                if (entry.id == id && entry.outcome.status == OutcomeStatus::ok) {
                    const auto& u = entry.statistics.uncertainty;
                    points.push_back({run->name, entry.outcome.score,
                                      u ? entry.outcome.score * u->ci95Percent() / 100 : 0});
                }
        if (!points.empty())
            html += svgChart(std::string(title(id)) + " (points, 95 % interval)", points, false);
    }
    html += "</div>\n<h2>Results</h2>\n<table><thead><tr>";
    for (const char* column : {"Run", "Started (UTC)", "CPU", "Mode", "Benchmark", "Status", "Score", "95 %",
                               "Primary", "Secondary", "Duration", "Noisy"})
        html += std::string("<th>") + column + "</th>";
    html += "</tr></thead><tbody>\n";
    for (const auto* run : byStart)
        for (const auto& entry : run->report.results) {
            const auto cells = rowCells(*run, entry);
            const BenchmarkOutcome& o = entry.outcome;
            auto td = [](const std::string& text, bool numeric = false) {
                return std::string(numeric ? "<td class=\"n\">" : "<td>") + escapedMarkup(text) + "</td>";
            };
            html += "<tr>" + td(run->name) + td(cells[1]) + td(cells[2]) + td(cells[4]) + td(cells[6]) +
                    td(cells[7]) + td(entry.scoreText, true) +
                    td(uncertaintyText(entry.statistics.uncertainty), true) +
                    td(o.primary.label + " " + cardValue(o.primary)) +
                    td(o.secondary ? o.secondary->label + " " + cardValue(*o.secondary) : "") +
                    td(entry.durationText, true) + td(entry.statistics.noisy ? "yes" : "") + "</tr>\n";
        }
    html += "</tbody></table>\n<p class=\"v\">Made by Quarbel " +
            escapedMarkup(runs.empty() ? std::string() : runs.front().report.appVersion) +
            ". Everything in this page is in this file.</p>\n</body></html>\n";
    return html;
}

std::string stableRunId(const RunReport& report) {
    const std::string machine =
        report.machine && !report.machine->machineId.empty() ? report.machine->machineId : "unknown";
    return machine + "-" + isoTimestamp(report.startedAt);
}

} // namespace quarbel
