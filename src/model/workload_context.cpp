// SPDX-License-Identifier: Apache-2.0
#include "model/workload_context.h"

#include <ctime>

namespace quarbel {

std::optional<LiveRate> liveRate(std::int64_t unitsDone, double elapsedSeconds, const ProgressUnit& unit) {
    if (unit.name.empty() || unitsDone <= 0 || !(elapsedSeconds > 0)) return std::nullopt;
    const double perSecond = static_cast<double>(unitsDone) / elapsedSeconds;
    if (unit.rateUnit.empty()) return LiveRate{perSecond, std::string(unit.name) + "/s"};
    return LiveRate{perSecond * unit.ratePerUnitPerSecond, std::string(unit.rateUnit)};
}

double monotonicSeconds() noexcept {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

} // namespace quarbel
