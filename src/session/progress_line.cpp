// SPDX-License-Identifier: Apache-2.0
#include "session/progress_line.h"

#include "model/number_format.h"

#include <algorithm>
#include <cmath>

namespace quarbel::session {

std::string rateText(const ProgressState& state) {
    const auto rate = liveRate(state.unitsDone, state.workSeconds, state.unit);
    if (!rate) return {};
    return format(rate->value, rate->value >= 100 ? 0 : 1) + " " + rate->unit;
}

std::string progressLine(const ProgressState& state, int barWidth) {
    const double fraction = std::clamp(state.fraction, 0.0, 1.0);
    const int filled = static_cast<int>(std::lround(fraction * barWidth));
    std::string line(state.title);
    line += "  " + format(state.elapsedSeconds, 1) + "/" +
            format(state.targetSeconds, state.targetSeconds < 10 ? 1 : 0) + " s [";
    line.append(static_cast<std::size_t>(filled), '#');
    line.append(static_cast<std::size_t>(barWidth - filled), '.');
    line += "]";
    const std::string rate = rateText(state);
    if (!rate.empty()) line += "  " + rate;
    return line;
}

} // namespace quarbel::session
