// SPDX-License-Identifier: Apache-2.0
#include "model/trace_summary.h"

#include "model/number_format.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quarbel {
namespace {

std::optional<double> meanOf(const std::vector<float>& values, std::size_t begin, std::size_t end) {
    double sum = 0;
    int count = 0;
    for (std::size_t i = begin; i < std::min(end, values.size()); ++i)
        if (!std::isnan(values[i])) sum += values[i], ++count;
    if (count == 0) return std::nullopt;
    return sum / count;
}

std::optional<float> highestOf(const std::vector<float>& values) {
    std::optional<float> high;
    for (float v : values)
        if (!std::isnan(v)) high = std::max(high.value_or(v), v);
    return high;
}

// When the first of two samples running for which `holds` is true began: a power sample
// (`spans`) covers the time since the sample before it.
template <typename Holds>
std::optional<float> firstSustained(const SensorTrace& trace, std::size_t size, Holds holds, bool spans) {
    for (std::size_t i = 0; i + 1 < size; ++i)
        if (holds(i) && holds(i + 1)) return trace.seconds[spans && i > 0 ? i - 1 : i];
    return std::nullopt;
}

std::string seconds(float at) { return format(at, 1) + " s"; }

} // namespace

std::optional<double> clockDropPercent(const SensorTrace& trace) {
    const std::size_t n = trace.coreMHzMean.size();
    if (n < 4) return std::nullopt;
    const auto first = meanOf(trace.coreMHzMean, 0, n / 4), last = meanOf(trace.coreMHzMean, n - n / 4, n);
    if (!first || !last || !(*first > 0)) return std::nullopt;
    return (*first - *last) / *first * 100.0;
}

std::string traceSummary(const SensorTrace& trace) {
    if (trace.empty()) return {};
    std::vector<std::string> causes;
    const auto drop = clockDropPercent(trace);
    const std::string clocks =
        drop && *drop >= kClockDropPercent ? ", clocks \u2212" + format(*drop, 0) + " %" : std::string();

    if (trace.packageLimitWatts && trace.cpuWatts.size() == trace.seconds.size()) {
        const double limit = *trace.packageLimitWatts;
        const auto from = firstSustained(
            trace, trace.cpuWatts.size(),
            [&](std::size_t i) {
                return !std::isnan(trace.cpuWatts[i]) && trace.cpuWatts[i] >= kAtLimitFraction * limit;
            },
            true);
        if (from)
            causes.push_back("power-limited from " + seconds(*from) + " (package " + format(limit, 0) +
                             " W cap)");
    }
    if (trace.gpuThrottleReasons.size() == trace.seconds.size()) {
        const auto from = firstSustained(
            trace, trace.gpuThrottleReasons.size(),
            [&](std::size_t i) {
                return (trace.gpuThrottleReasons[i] & 0x84u) != 0; // a power cap or the power brake
            },
            false);
        if (from) causes.push_back("GPU power-limited from " + seconds(*from));
    }
    auto hottest = highestOf(trace.cpuCelsius);
    if (const auto core = highestOf(trace.coreCelsius)) hottest = std::max(hottest.value_or(*core), *core);
    const double hot = trace.criticalCelsius ? *trace.criticalCelsius - kHotMarginCelsius : kHotCelsius;
    const bool gpuThermal = std::any_of(trace.gpuThrottleReasons.begin(), trace.gpuThrottleReasons.end(),
                                        [](std::uint32_t r) { return (r & 0x60u) != 0; });
    if (trace.thermalThrottleEvents > 0 || (hottest && *hottest >= hot)) {
        causes.push_back(
            "thermal: " + (hottest ? format(*hottest, 0) + " \u00b0C" : std::string("throttled")) + clocks);
    } else if (gpuThermal) {
        causes.push_back("GPU thermal slowdown");
    }
    if (std::find(trace.onBattery.begin(), trace.onBattery.end(), 1) != trace.onBattery.end())
        causes.push_back("on battery");
    if (const auto others = meanOf(trace.otherCores, 1, trace.otherCores.size());
        others && *others >= kOtherCoresWorthNaming)
        causes.push_back("another process took " + format(*others, 1) + " cores");
    if (causes.empty() && drop && *drop >= kClockDropPercent)
        causes.push_back("clocks \u2212" + format(*drop, 0) + " % with no thermal or power limit seen");
    if (causes.empty()) return "steady";
    if (causes.size() > 2) causes.resize(2);
    return causes.size() == 1 ? causes[0] : causes[0] + "; " + causes[1];
}

} // namespace quarbel
