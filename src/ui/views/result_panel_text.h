// SPDX-License-Identifier: Apache-2.0
// The words of the result panel, apart from how it lays them out: the running benchmark's
// explanation, the score's interval and the detail under it.
#pragma once

#include "model/catalogue.h"

#include <QString>

#include <optional>

namespace quarbel {
struct BenchmarkEndState;
struct BenchmarkOutcome;
struct MachineCondition;
} // namespace quarbel

namespace quarbel::ui {

// What the benchmark does and how long one pass takes, shown while it runs.
QString resultExplanation(BenchmarkID id);

// "± 1.3 % (95 % interval)", naming the passes when the interval comes from several, and
// saying so when it is too wide to compare with; empty without an interval.
QString resultIntervalText(const BenchmarkEndState& end);

// The workload's detail, then what disturbed a noisy result, how a GPU benchmark used its
// device and which run-to-run floor the interval added.
QString resultDetail(const BenchmarkOutcome& outcome, const BenchmarkEndState& end,
                     const std::optional<MachineCondition>& atStart);

} // namespace quarbel::ui
