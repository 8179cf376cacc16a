// SPDX-License-Identifier: Apache-2.0
#include "results/run_report.h"

#include "model/number_format.h"
#include "model/stability.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace quarbel {
namespace {

// Display width of UTF-8 text: counts code points, enough for the texts we print.
std::size_t displayWidth(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string lineText(const MeasurementLine& line) { return line.label + " " + cardValue(line); }

// Why the energy the result would be judged by was not measured: the reason given for the
// GPU's of a GPU benchmark, the CPU package's of any other, else for whichever domain is missing.
std::string absenceText(const ReportEntry& entry) {
    const auto& missing = entry.statistics.energy.missing;
    const PowerDomain wanted = runsOnGpu(entry.id) ? PowerDomain::gpu : PowerDomain::cpuPackage;
    const auto found = std::find_if(missing.begin(), missing.end(),
                                    [&](const EnergyAbsence& a) { return a.domain == wanted; });
    return "energy not measured: " + (found != missing.end() ? found->reason : missing.front().reason);
}

} // namespace

ReportEntry makeReportEntry(BenchmarkID id, BenchmarkOutcome outcome) {
    std::string score = outcome.status == OutcomeStatus::ok ? scoreText(outcome.score) : "";
    std::string duration = format(outcome.duration, 2) + " s";
    ReportEntry entry;
    entry.id = id;
    entry.outcome = std::move(outcome);
    entry.scoreText = std::move(score);
    entry.durationText = std::move(duration);
    return entry;
}

std::vector<ReportEntry> reportEntries(const BenchmarkRows& rows, std::span<const BenchmarkID> ids) {
    std::vector<ReportEntry> entries;
    for (BenchmarkID id : ids)
        if (const auto& outcome = rows[id].outcome) entries.push_back(makeReportEntry(id, *outcome));
    return entries;
}

std::string stabilityText(double percent) {
    return format(percent, 1) + " %" + (percent < kThrottlingStabilityPercent ? " (throttling)" : "");
}

std::string isoTimestamp(SystemTimePoint time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return buffer;
}

bool runsOnGpu(BenchmarkID id) {
    switch (id) {
    case BenchmarkID::metalVisual:
    case BenchmarkID::metalCompute:
    case BenchmarkID::openCLCompute:
    case BenchmarkID::rawMetalDecode: return true;
    default: return false;
    }
}

const EnergyMeasurement* efficiencyOf(const ReportEntry& entry) {
    return efficiencyMeasurement(entry.statistics.energy, runsOnGpu(entry.id));
}

std::string pointsPerJouleText(double value) {
    const double magnitude = std::abs(value);
    const int decimals = magnitude >= 100 ? 0 : magnitude >= 10 ? 1 : magnitude >= 1 ? 2 : 4;
    return format(value, decimals);
}

std::string sensorsText(const ReportEntry& entry) {
    const ResultStatistics& s = entry.statistics;
    std::string energy;
    if (const EnergyMeasurement* m = efficiencyOf(entry)) {
        energy = std::string(powerDomainLabel(m->domain)) + " " + format(m->joules, 1) + " J, " +
                 format(m->averageWatts, 1) + " W average";
        const auto efficiency = pointsPerJoule(entry.outcome.score, *m);
        if (entry.outcome.status == OutcomeStatus::ok && efficiency)
            energy += ", " + pointsPerJouleText(*efficiency) + " pts/J";
    } else if (!s.energy.missing.empty()) {
        energy = absenceText(entry);
    }
    if (s.traceSummary.empty() && energy.empty()) return {};
    const char* between = !s.traceSummary.empty() && !energy.empty() ? " \u00b7 " : "";
    return "Sensors: " + s.traceSummary + between + energy;
}

std::vector<std::vector<std::string>> resultTableCells(const RunReport& report) {
    std::vector<std::vector<std::string>> cells;
    cells.push_back({"Benchmark", "Status", "Score", "Primary", "Secondary", "Duration"});
    for (const auto& entry : report.results) {
        std::string name(title(entry.id));
        if (report.quick) name += " (quick)";
        if (entry.statistics.noisy) name += " (noisy machine)";
        std::string score = entry.scoreText.empty() ? "-" : entry.scoreText;
        if (const std::string interval = uncertaintyText(entry.statistics.uncertainty);
            !interval.empty() && !entry.scoreText.empty())
            score += " " + interval;
        cells.push_back({std::move(name), std::string(rawValue(entry.outcome.status)), std::move(score),
                         lineText(entry.outcome.primary),
                         entry.outcome.secondary ? lineText(*entry.outcome.secondary) : "-",
                         entry.durationText});
    }
    return cells;
}

std::string renderTable(const std::vector<std::vector<std::string>>& cells) {
    std::vector<std::size_t> widths;
    for (const auto& row : cells) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    std::string out;
    for (const auto& row : cells) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size()) line.append(widths[i] - displayWidth(row[i]) + 2, ' ');
        }
        out += line + "\n";
    }
    return out;
}

} // namespace quarbel
