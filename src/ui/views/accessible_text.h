// SPDX-License-Identifier: Apache-2.0
// What a screen reader says for each painted view: pure functions of the values the
// views paint, so that the spoken words follow the screen's and can be checked without
// an assistive technology.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"

#include <QString>

#include <optional>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

struct ComparisonTable;
class SystemPanel;
class TrendView;

// A sidebar row's state after its title: "Not run", "Running", "Done, 1234.5 points", "Skipped", "Failed".
QString spokenRowState(const BenchmarkRowState& row);

// The selected benchmark's result as the result panel shows it: "1234.5 Quarbel points,
// ± 1.3 % (95 % interval). Rounds per second: 812.4. Duration: 1.52 s.", or "Running now",
// "Not run yet", "Skipped: <reason>".
QString spokenResult(const BenchmarkStore& store, BenchmarkID id);

// The live stage: the status line of the running benchmark, its pass, or the cool-down wait.
QString spokenStageStatus(const BenchmarkStore& store);
// Under the progress bar: "12.3 / 15 s, 1234.5 rounds/s".
QString spokenProgressDetail(const BenchmarkStore& store);
// The run's progress in whole percent, 0 ... 100.
int progressPercent(const BenchmarkStore& store);

// The run header's state: "Ready", "Running CPU Single-Core, 12.3 / 15 s", "Cooling down before ...".
QString spokenRunState(const BenchmarkStore& store);

// The system panel: its rows, then the temperatures; "Reading system facts" until the rows came.
QString spokenSystem(const BenchmarkStore& store, const SystemPanel& panel);

// The global score dial: "1234.5 Quarbel points, 3 of 13 complete".
QString spokenGlobalScore(const BenchmarkStore& store);

// The last run's summary: total score, counts, elapsed time and peak temperatures; empty
// when no run has ended.
QString spokenRunSummary(const BenchmarkStore& store);

// The trend charts: the caption, then per benchmark its runs and its first and latest score.
QString spokenTrend(const TrendView& view);
// The comparison table: both runs, then per benchmark both scores, the change and the verdict.
QString spokenComparison(const ComparisonTable& table);

} // namespace quarbel::ui
