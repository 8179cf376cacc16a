// SPDX-License-Identifier: Apache-2.0
// The live line of the benchmark now running: title, elapsed against target, a bar
// and the rate of work units when the workload reports them.
#pragma once

#include "model/workload_context.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quarbel::session {

struct ProgressState {
    std::string_view title;
    double elapsedSeconds = 0;
    double targetSeconds = 0;
    double fraction = 0; // 0 ... 1
    std::int64_t unitsDone = 0;
    double workSeconds = 0; // the workload's own measured time for unitsDone
    ProgressUnit unit;      // no name when the workload reports nothing
};

// e.g. "CPU Single-Core   6.0/15 s [########............]  412.3 batches/s"
std::string progressLine(const ProgressState& state, int barWidth);

// The rate text ("412.3 batches/s"), or empty when there is no rate yet.
std::string rateText(const ProgressState& state);

} // namespace quarbel::session
