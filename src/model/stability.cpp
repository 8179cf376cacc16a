// SPDX-License-Identifier: Apache-2.0
#include "model/stability.h"

namespace quarbel {
namespace {

// Units done at `time`, on straight lines between reports (and from the start at 0, 0).
double unitsAt(std::span<const ProgressPoint> series, double time) {
    ProgressPoint previous{};
    for (const auto& point : series) {
        if (point.elapsedSeconds >= time) {
            const double span = point.elapsedSeconds - previous.elapsedSeconds;
            if (!(span > 0)) return static_cast<double>(point.unitsDone);
            const double fraction = (time - previous.elapsedSeconds) / span;
            return static_cast<double>(previous.unitsDone) +
                   fraction * static_cast<double>(point.unitsDone - previous.unitsDone);
        }
        previous = point;
    }
    return static_cast<double>(previous.unitsDone);
}

} // namespace

std::optional<double> stabilityPercent(std::span<const ProgressPoint> series) {
    if (series.size() < static_cast<std::size_t>(kMinimumStabilityReports)) return std::nullopt;
    ProgressPoint previous{};
    for (const auto& point : series) {
        if (point.elapsedSeconds < previous.elapsedSeconds || point.unitsDone < previous.unitsDone)
            return std::nullopt;
        previous = point;
    }
    const double total = series.back().elapsedSeconds;
    if (!(total > 0)) return std::nullopt;
    const double fifth = total / 5.0;
    const double first = unitsAt(series, fifth);
    const double last = static_cast<double>(series.back().unitsDone) - unitsAt(series, total - fifth);
    if (!(first > 0)) return std::nullopt;
    return 100.0 * last / first;
}

} // namespace quarbel
