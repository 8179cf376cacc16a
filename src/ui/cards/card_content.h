// SPDX-License-Identifier: Apache-2.0
// What a result card shows, captured whole when the card is made: later changes of the
// run state do not reach a card already being rendered or saved.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/sensor_trace.h"
#include "results/run_report.h"
#include "sensors/temperature.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarbel::cards {

using HardwareRows = std::vector<std::pair<std::string, std::string>>; // (label, value)

// The single-benchmark card.
struct BenchmarkCardContent {
    BenchmarkID id = BenchmarkID::cpuInteger;
    BenchmarkOutcome outcome;
    TemperatureSnapshot temperature; // when the benchmark ended
    bool accuracyMode = false;       // the outcome is Accuracy Mode's median pass
    bool quick = false;              // budgets were divided by ten: not comparable
    SystemTimePoint generatedAt{};
    HardwareRows hardware;
    std::string appVersion;
    std::optional<double> stabilityPercent;     // last fifth's pace over the first fifth's
    std::optional<RateUncertainty> uncertainty; // the score's 95 % interval, when it has one
    bool noisy = false;                         // other work disturbed the machine while it ran
    std::string traceSummary{};                 // what the sensors showed while it ran
    std::optional<double> startCelsius{};       // the CPU as it started
    ResultEnergy energy{};                      // empty for a result from before energy was recorded
};

// The global card of a run.
struct SummaryCardContent {
    RunSummary summary;
    BenchmarkRows rows;     // all thirteen; those not run stay idle
    double globalScore = 0; // over every row, as the sidebar shows it
    bool quick = false;
    SystemTimePoint generatedAt{};
    HardwareRows hardware;
    std::string appVersion;
    std::vector<std::string> badges; // what made the run less trustworthy: "on battery", ...
    std::map<BenchmarkID, RateUncertainty> uncertainties; // of the scores that have an interval
    std::set<BenchmarkID> noisy;                          // measured while other work disturbed the machine
    ResultEnergy energy{};                                // the run's, as runEnergy sums it
};

// The texts a result shows about its sensors and energy, the same in the window and on the cards.

// Whether a result's efficiency is judged by the GPU's energy: that of the GPU benchmarks and
// of any other that ran its work on a GPU device.
bool judgedByGpu(BenchmarkID id, const BenchmarkOutcome& outcome);

// "Sensors: steady · started at 45 °C"; "Started at 45 °C" without a summary; empty when
// neither is known (a result from before the sensors were recorded).
std::string sensorsText(std::string_view traceSummary, std::optional<double> startCelsius);

struct EnergyLine {
    std::string text;
    bool measured = false; // else the line names a domain without a measurement, and why
};

// One line per power domain, the measured ones first: "CPU package 31.2 J · 20.8 W average ·
// 28.4 W peak · 57.7 pts/J", where the domain the efficiency is judged by adds the primary
// value per watt ("0.82 GFLOPS/W") when that value is a rate; then "GPU: a virtual machine
// exposes no power sensors".
std::vector<EnergyLine> energyLines(const ResultEnergy& energy, double score, const MeasurementLine& primary,
                                    bool judgedByGpu);

// The efficiency in one line: "57.7 pts/J · 20.8 W average (CPU package)", or "Energy: not
// measured (a virtual machine exposes no power sensors)"; empty without an energy record.
std::string efficiencyText(const ResultEnergy& energy, double score, bool judgedByGpu);

// A run's energy: each domain's joules summed over the results that measured it (its powers
// left at zero: they do not add up), and the domains that none measured, each with the first
// reason given.
ResultEnergy runEnergy(const std::vector<ResultEnergy>& results);

// "Energy over the run: CPU package 412 J · GPU 98.0 J", or "Energy not measured: <why>";
// empty when no result recorded its energy.
std::string runEnergyText(const ResultEnergy& run);

// The cards of a saved report: one per result, in run order.
std::vector<BenchmarkCardContent> benchmarkCards(const RunReport& report, SystemTimePoint generatedAt);

// The global card of a report; absent when the report has no summary (a stopped run).
// Benchmarks without a result in the report are "Not Run".
std::optional<SummaryCardContent> summaryCard(const RunReport& report, SystemTimePoint generatedAt);

} // namespace quarbel::cards
