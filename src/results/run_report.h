// SPDX-License-Identifier: Apache-2.0
// One record of a finished (or stopped) run that every output reads: the terminal
// table, the JSON file and the result cards. Numbers are turned
// into text here and nowhere else.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "results/result_statistics.h"
#include "sensors/machine_condition.h"
#include "sensors/machine_identity.h"
#include "sensors/system_manifest.h"
#include "sensors/temperature.h"

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quarbel {

struct ReportEntry {
    BenchmarkID id;
    BenchmarkOutcome outcome;
    std::string scoreText;                  // empty unless the outcome is ok
    std::string durationText;               // seconds with two decimals, e.g. "15.02 s"
    TemperatureSnapshot temperatureAtEnd;   // read when the benchmark ended; all absent when unknown
    bool accuracyMode = false;              // the outcome is the median pass of Accuracy Mode
    std::optional<double> stabilityPercent; // last fifth's rate over the first fifth's
    std::optional<double> spreadPercent;    // Accuracy Mode's spread of pass scores
    ResultStatistics statistics;            // the score's interval, its slices and the interference
};

struct RunReport {
    std::string appName;
    std::string appVersion;
    bool accuracyMode = false;
    bool quick = false;
    SystemTimePoint startedAt{};
    SystemTimePoint finishedAt{};
    std::vector<std::pair<std::string, std::string>> system; // (label, value) rows
    std::vector<ReportEntry> results;                        // benchmarks of the run that have an outcome
    std::optional<RunSummary> summary;                       // absent when the run was stopped
    double globalScore = 0;
    std::vector<std::string> log;
    std::optional<MachineCondition> condition; // the machine as the run started
    std::vector<std::string> throttleSigns;    // seen while it ran
    std::vector<std::string> badges;           // short remarks for results and cards
    std::optional<MachineIdentity> machine;    // absent in reports from before runs named it
    SystemManifest manifest;                   // empty in reports from before runs carried it
};

// "98.7 %" for a stability, with " (throttling)" below kThrottlingStabilityPercent.
std::string stabilityText(double percent);

// One entry with its texts made; no temperatures, not from Accuracy Mode.
ReportEntry makeReportEntry(BenchmarkID id, BenchmarkOutcome outcome);

// The entries of `ids` that hold an outcome, in run order.
std::vector<ReportEntry> reportEntries(const BenchmarkRows& rows, std::span<const BenchmarkID> ids);

// "2026-11-22T21:04:05Z": UTC, whole seconds.
std::string isoTimestamp(SystemTimePoint time);

// Whether the benchmark's work runs on a GPU (Vulkan or OpenCL), so that its efficiency is
// judged by the GPU's energy where that was measured.
bool runsOnGpu(BenchmarkID id);

// The measurement the result's efficiency is judged by (efficiencyMeasurement); null when none.
const EnergyMeasurement* efficiencyOf(const ReportEntry& entry);

// Points per joule with three significant digits or more: "57.7", "1234", "0.0312".
std::string pointsPerJouleText(double value);

// What the sensors saw under a result's row: "Sensors: steady · CPU package 31.2 J, 20.8 W
// average, 57.7 pts/J", "Sensors: another process took 1.4 cores · energy not measured: a
// virtual machine exposes no power sensors". Empty for a result without trace or energy.
std::string sensorsText(const ReportEntry& entry);

// Rows of text cells (a header row first) for a fixed-width terminal table.
std::vector<std::vector<std::string>> resultTableCells(const RunReport& report);

// The cells laid out with two blanks between columns, one line per row.
std::string renderTable(const std::vector<std::vector<std::string>>& cells);

} // namespace quarbel
