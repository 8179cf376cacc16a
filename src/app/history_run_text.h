// SPDX-License-Identifier: Apache-2.0
// How Run History names a kept run in its list, its chooser and its tables: when it started,
// what it held and how it ended. Kept apart from the window so that the comparison and trend
// tables, the list and the tests all read a run the same way.
#pragma once

#include "results/run_history.h"

#include <QString>

#include <optional>
#include <string>

namespace quarbel::app {

// The change from `before` to `after` of a score ratio in percent: "+4.2 %", "−12.0 %",
// "0.0 %"; "-" without a ratio.
QString changeText(const std::optional<double>& ratio);

// What a run held: "Full suite", or its benchmarks' titles ("CPU Single-Core, Memory Stream").
QString benchmarksText(const SavedRun& run);

// How it ended: "332865 pts · quick · Accuracy Mode", "Stopped before its end · quick", or
// "Skipped" when no benchmark could run on the machine.
QString outcomeText(const SavedRun& run);

// "2026-11-23T14:15:02Z" -> "23.11.26 15:15" for a German user: local time, in the user's
// format. A stamp that does not parse is shown as written.
QString startedText(const SavedRun& run);

// A benchmark's title as a report keeps it, in the user's language.
QString titleText(const std::string& title);

} // namespace quarbel::app
