// SPDX-License-Identifier: Apache-2.0
#include "results/run_export.h"

#include "sensors/system_snapshot.h"

#include "model/number_format.h"
#include "results/json_report.h"

#include <nlohmann/json.hpp>

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
                                    "slice_rates",
                                    "efficiency_domain",
                                    "energy_joules",
                                    "average_watts",
                                    "peak_watts",
                                    "points_per_joule",
                                    "trace_summary",
                                    "start_celsius"};

std::vector<std::string> rowCells(const ExportedRun& run, const ReportEntry& entry) {
    const BenchmarkOutcome& o = entry.outcome;
    const ResultStatistics& s = entry.statistics;
    const bool ok = o.status == OutcomeStatus::ok;
    const MeasurementLine none;
    const MeasurementLine& second = o.secondary ? *o.secondary : none;
    const std::optional<GpuExecution>& gpu = o.gpu;
    const std::string machineId = run.report.machine ? run.report.machine->machineId : std::string();
    const EnergyMeasurement* energy = efficiencyOf(entry);
    const auto efficiency = energy && ok ? pointsPerJoule(o.score, *energy) : std::nullopt;
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
            sliceRatesText(s),
            energy ? std::string(rawValue(energy->domain)) : "",
            energy ? number(energy->joules, 3) : "",
            energy ? number(energy->averageWatts, 3) : "",
            energy ? number(energy->peakWatts, 3) : "",
            optionalNumber(efficiency, 6),
            s.traceSummary,
            optionalNumber(s.startCelsius, 1)};
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

std::string stableRunId(const RunReport& report) {
    const std::string machine =
        report.machine && !report.machine->machineId.empty() ? report.machine->machineId : "unknown";
    return machine + "-" + isoTimestamp(report.startedAt);
}

} // namespace quarbel
