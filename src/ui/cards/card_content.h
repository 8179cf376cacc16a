// What a result card shows, captured whole when the card is made: later changes of the
// run state do not reach a card already being rendered or saved.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "results/run_report.h"
#include "sensors/temperature.h"

#include <map>
#include <optional>
#include <set>
#include <string>
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
};

// The cards of a saved report: one per result, in run order.
std::vector<BenchmarkCardContent> benchmarkCards(const RunReport& report, SystemTimePoint generatedAt);

// The global card of a report; absent when the report has no summary (a stopped run).
// Benchmarks without a result in the report are "Not Run".
std::optional<SummaryCardContent> summaryCard(const RunReport& report, SystemTimePoint generatedAt);

} // namespace quarbel::cards
