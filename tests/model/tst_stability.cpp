// SPDX-License-Identifier: Apache-2.0
#include "model/stability.h"

#include <gtest/gtest.h>

#include <vector>

using namespace quarbel;

namespace {

// `rate(t)` units per second, reported every `step` seconds for `seconds`.
template <typename Rate> std::vector<ProgressPoint> steadyReports(double seconds, double step, Rate rate) {
    std::vector<ProgressPoint> series;
    double units = 0;
    for (double t = step; t <= seconds + 1e-9; t += step) {
        units += rate(t) * step;
        series.push_back({t, static_cast<std::int64_t>(units)});
    }
    return series;
}

} // namespace

TEST(Stability, ComparesTheLastFifthWithTheFirst) {
    const struct {
        const char* name;
        std::vector<ProgressPoint> series;
        std::optional<double> expected;
    } cases[] = {
        {"steady", steadyReports(15, 0.25, [](double) { return 1000.0; }), 100.0},
        {"halves its pace after 10 s",
         steadyReports(15, 0.25, [](double t) { return t <= 10 ? 1000.0 : 500.0; }), 50.0},
        {"warms up in its first second",
         steadyReports(10, 0.5, [](double t) { return t <= 1 ? 500.0 : 1000.0; }), 100.0 / 0.75},
        // Reports at 1, 2, 3, 4 and 10 s: the last fifth (8-10 s) is interpolated within
        // the 4-10 s interval, the first fifth (0-2 s) read exactly.
        {"sparse reports", {{1, 100}, {2, 200}, {3, 300}, {4, 400}, {10, 700}}, 100.0 * 100 / 200},
        {"four reports are too few", {{1, 1}, {2, 2}, {3, 3}, {4, 4}}, std::nullopt},
        {"no work in the first fifth", {{1, 0}, {2, 0}, {3, 0}, {4, 1}, {5, 2}}, std::nullopt},
        {"counts start again (a new pass)", {{1, 10}, {2, 20}, {3, 5}, {4, 15}, {5, 25}}, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(stabilityPercent(c.series).value_or(-1), c.expected.value_or(-1), 0.5) << c.name;
}
