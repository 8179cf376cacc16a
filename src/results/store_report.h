// SPDX-License-Identifier: Apache-2.0
// The report of the store's current (or last) run, as the command line, the JSON file,
// the cards and the history read it.
#pragma once

#include "results/run_report.h"
#include "run/benchmark_store.h"

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quarbel {

struct ReportFrame {
    std::span<const BenchmarkID> ids; // the benchmarks of the run, in run order
    bool accuracy = false;
    bool quick = false;
    SystemTimePoint startedAt{};
    std::vector<std::pair<std::string, std::string>> system; // (label, value) rows
    std::vector<std::string> log;
};

RunReport reportFromStore(const BenchmarkStore& store, ReportFrame frame);

// The machine's system rows as (label, value) pairs, for ReportFrame::system.
std::vector<std::pair<std::string, std::string>> systemRowPairs();

} // namespace quarbel
