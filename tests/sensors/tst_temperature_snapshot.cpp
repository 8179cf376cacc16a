// SPDX-License-Identifier: Apache-2.0
#include "sensors/temperature.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace quarbel;

TEST(TemperatureText, RoundsLikePrintfWithDegreeSign) {
    EXPECT_EQ(temperatureText(47.5), "48 \u00B0C");
    EXPECT_EQ(temperatureText(46.5), "46 \u00B0C"); // half to even
    EXPECT_EQ(temperatureText(-1.0), "-1 \u00B0C");
    EXPECT_EQ(temperatureText(std::nullopt), "Unavailable");
}

TEST(TemperatureSnapshot, ChannelsFollowTheFlags) {
    const auto now = std::chrono::system_clock::now();
    const TemperatureSnapshot both = makeTemperatureSnapshot({51.0, 43.5, 1, 1}, now);
    EXPECT_EQ(std::tuple(both.cpuCelsius, both.gpuCelsius, both.updatedAt), std::tuple(51.0, 43.5, now));

    const TemperatureSnapshot none = makeTemperatureSnapshot({0, 0, 0, 0}, now);
    EXPECT_EQ(std::tuple(none.cpuCelsius, none.gpuCelsius, none.updatedAt),
              std::tuple(std::optional<double>(), std::optional<double>(), now));
    EXPECT_NE(none, TemperatureSnapshot::unavailable); // only the time differs
    EXPECT_EQ(TemperatureSnapshot::unavailable.updatedAt, std::nullopt);
}
