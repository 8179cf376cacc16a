// SPDX-License-Identifier: Apache-2.0
// What Run History's comparison and trend pages draw, worked out from kept runs alone: plain
// functions, apart from the window, so that they can be read and checked without one.
#pragma once

#include "results/run_history.h"
#include "ui/views/comparison_view.h"
#include "ui/views/trend_view.h"

#include <cstddef>
#include <vector>

namespace quarbel::app {

// The table of `before` against `after`, as the window shows it.
ui::ComparisonTable comparisonTable(const SavedRun& before, const SavedRun& after);

// The trend of each benchmark of `runs[selected]`: its ok scores over the complete runs of the
// same length (quick or full: their scores do not compare), oldest first, the newest `most`
// of them or, when the selected run is older, `most` around it; the selected run marked.
std::vector<ui::TrendSeries> trendSeries(const std::vector<SavedRun>& runs, std::size_t selected,
                                         std::size_t most = 40);

} // namespace quarbel::app
