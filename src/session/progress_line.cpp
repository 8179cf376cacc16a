#include "session/progress_line.h"

#include "model/number_format.h"

#include <algorithm>
#include <cmath>

namespace quarbel::session {

std::string rateText(const ProgressState& state) {
    if (state.unit.empty() || state.unitsDone <= 0 || !(state.workSeconds > 0)) return {};
    double rate = static_cast<double>(state.unitsDone) / state.workSeconds;
    std::string unit(state.unit);
    if (unit == "bytes") { // bytes read better as MB/s
        rate /= 1048576.0;
        unit = "MB";
    }
    return format(rate, rate >= 100 ? 0 : 1) + " " + unit + "/s";
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
