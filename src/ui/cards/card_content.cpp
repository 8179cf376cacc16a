// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/card_content.h"

#include "model/number_format.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace quarbel::cards {

namespace {

constexpr std::string_view kDot = " \u00b7 ";

// Three significant figures or so, never in exponent form: "0.82", "20.8", "412".
std::string compact(double value) {
    const double size = std::abs(value);
    return format(value, size >= 100 ? 0 : size >= 10 ? 1 : 2);
}

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\n");
    const auto last = text.find_last_not_of(" \t\n");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

// The primary value when it is a plain number of a rate (in "GB/s", "FPS", "IOPS", ...): the
// work per second that a watt buys is worth naming; that of a size or a count is not.
std::optional<double> primaryRate(const MeasurementLine& primary) {
    const std::string unit = trimmed(primary.unit);
    if (!unit.ends_with("/s") && !unit.ends_with("PS")) return std::nullopt;
    const char* begin = primary.value.c_str();
    char* end = nullptr;
    const double value = std::strtod(begin, &end);
    if (end == begin || *end != '\0' || !std::isfinite(value)) return std::nullopt;
    return value;
}

// The reason the domain a result is judged by went unmeasured, else the first reason given.
const EnergyAbsence* mainAbsence(const ResultEnergy& energy, PowerDomain preferred) {
    if (energy.missing.empty()) return nullptr;
    const auto found = std::find_if(energy.missing.begin(), energy.missing.end(),
                                    [&](const EnergyAbsence& a) { return a.domain == preferred; });
    return found != energy.missing.end() ? &*found : &energy.missing.front();
}

} // namespace

bool judgedByGpu(BenchmarkID id, const BenchmarkOutcome& outcome) {
    return category(id) == BenchmarkCategory::gpu || outcome.gpu.has_value();
}

std::string sensorsText(std::string_view traceSummary, std::optional<double> startCelsius) {
    const std::string start = startCelsius ? format(*startCelsius, 0) + " \u00b0C" : "";
    if (traceSummary.empty()) return start.empty() ? start : "Started at " + start;
    std::string text = "Sensors: " + std::string(traceSummary);
    if (!start.empty()) text += std::string(kDot) + "started at " + start;
    return text;
}

std::vector<EnergyLine> energyLines(const ResultEnergy& energy, double score, const MeasurementLine& primary,
                                    bool gpu) {
    std::vector<EnergyLine> lines;
    const EnergyMeasurement* judged = efficiencyMeasurement(energy, gpu);
    const auto rate = primaryRate(primary);
    for (const EnergyMeasurement& m : energy.measured) {
        std::string text = std::string(powerDomainLabel(m.domain)) + " " + compact(m.joules) + " J" +
                           std::string(kDot) + compact(m.averageWatts) + " W average" + std::string(kDot) +
                           compact(m.peakWatts) + " W peak";
        if (const auto perJoule = pointsPerJoule(score, m))
            text += std::string(kDot) + compact(*perJoule) + " pts/J";
        if (&m == judged && rate && m.averageWatts > 0) {
            // "GB/s" per watt reads as "GB/s per W"; "GFLOPS" as "GFLOPS/W".
            const std::string unit = trimmed(primary.unit);
            text += std::string(kDot) + compact(*rate / m.averageWatts) + " " + unit +
                    (unit.find('/') == std::string::npos ? "/W" : " per W");
        }
        lines.push_back({std::move(text), true});
    }
    for (const EnergyAbsence& a : energy.missing)
        lines.push_back({std::string(powerDomainLabel(a.domain)) + ": " + a.reason, false});
    return lines;
}

std::string efficiencyText(const ResultEnergy& energy, double score, bool gpu) {
    if (const EnergyMeasurement* m = efficiencyMeasurement(energy, gpu)) {
        std::string text =
            compact(m->averageWatts) + " W average (" + std::string(powerDomainLabel(m->domain)) + ")";
        if (const auto perJoule = pointsPerJoule(score, *m))
            text = compact(*perJoule) + " pts/J" + std::string(kDot) + text;
        return text;
    }
    const EnergyAbsence* absent = mainAbsence(energy, gpu ? PowerDomain::gpu : PowerDomain::cpuPackage);
    return absent ? "Energy: not measured (" + absent->reason + ")" : std::string();
}

ResultEnergy runEnergy(const std::vector<ResultEnergy>& results) {
    ResultEnergy run;
    for (const ResultEnergy& result : results)
        for (const EnergyMeasurement& m : result.measured) {
            const auto found = std::find_if(run.measured.begin(), run.measured.end(),
                                            [&](const EnergyMeasurement& r) { return r.domain == m.domain; });
            if (found == run.measured.end())
                run.measured.push_back({m.domain, m.source, m.joules, 0, 0});
            else
                found->joules += m.joules;
        }
    for (const ResultEnergy& result : results)
        for (const EnergyAbsence& a : result.missing) {
            const bool known = run.find(a.domain) != nullptr ||
                               std::any_of(run.missing.begin(), run.missing.end(),
                                           [&](const EnergyAbsence& r) { return r.domain == a.domain; });
            if (!known) run.missing.push_back(a);
        }
    return run;
}

std::string runEnergyText(const ResultEnergy& run) {
    if (run.measured.empty()) {
        const EnergyAbsence* absent = mainAbsence(run, PowerDomain::cpuPackage);
        return absent ? "Energy not measured: " + absent->reason : std::string();
    }
    std::string text = "Energy over the run:";
    for (std::size_t i = 0; i < run.measured.size(); ++i)
        text += (i == 0 ? " " : std::string(kDot)) + std::string(powerDomainLabel(run.measured[i].domain)) +
                " " + compact(run.measured[i].joules) + " J";
    return text;
}

std::vector<BenchmarkCardContent> benchmarkCards(const RunReport& report, SystemTimePoint generatedAt) {
    std::vector<BenchmarkCardContent> cards;
    for (const ReportEntry& entry : report.results)
        cards.push_back({entry.id, entry.outcome, entry.temperatureAtEnd, entry.accuracyMode, report.quick,
                         generatedAt, report.system, report.appVersion, entry.stabilityPercent,
                         entry.statistics.uncertainty, entry.statistics.noisy, entry.statistics.traceSummary,
                         entry.statistics.startCelsius, entry.statistics.energy});
    return cards;
}

std::optional<SummaryCardContent> summaryCard(const RunReport& report, SystemTimePoint generatedAt) {
    if (!report.summary) return std::nullopt;
    SummaryCardContent card{*report.summary,
                            {},
                            report.globalScore,
                            report.quick,
                            generatedAt,
                            report.system,
                            report.appVersion,
                            report.badges,
                            {},
                            {}};
    std::vector<ResultEnergy> energies;
    for (const ReportEntry& entry : report.results) {
        card.rows[entry.id] = {rowStateFor(entry.outcome.status), entry.outcome};
        if (entry.statistics.uncertainty) card.uncertainties[entry.id] = *entry.statistics.uncertainty;
        if (entry.statistics.noisy) card.noisy.insert(entry.id);
        energies.push_back(entry.statistics.energy);
    }
    card.energy = runEnergy(energies);
    return card;
}

} // namespace quarbel::cards
