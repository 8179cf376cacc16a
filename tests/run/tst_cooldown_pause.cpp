// SPDX-License-Identifier: Apache-2.0
#include "run/cooldown_pause.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

using namespace quarbel;

namespace {
struct Pause {
    std::optional<double> celsius;
    double seconds = 100;
    std::vector<std::string> finished;
    CooldownPause pause{[this] { return celsius; },
                        [this] { return seconds; },
                        {[] {}, [this](const std::string& line) { finished.push_back(line); }}};
};
} // namespace

TEST(CooldownPause, WaitsUntilTheCpuIsBackNearIdleOrTheGapHasPassed) {
    const struct {
        CooldownSetting setting;
        std::optional<double> idle, start, later, last;
        const char *startText, *laterText, *line;
    } cases[] = {// clang-format off
        {{}, 45, 62, 50, 47,
         "Cooling down: 62 °C → 45 °C", "Cooling down: 50 °C → 45 °C", "Cooled down to 47 °C in 5 s"},
        {{CooldownSetting::Mode::fixed, 10}, {}, {}, {}, {},
         "Cooling down: 10 s left", "Cooling down: 8 s left", "Waited 10 s"}};
    // clang-format on
    for (const auto& c : cases) {
        Pause p;
        p.celsius = c.start;
        ASSERT_TRUE(p.pause.start(CooldownWait(c.setting, c.idle))) << c.startText;
        EXPECT_EQ(p.pause.text(), c.startText);
        p.celsius = c.later;
        p.seconds += 2;
        p.pause.tick();
        EXPECT_EQ(p.pause.text(), c.laterText);
        p.celsius = c.last;
        p.seconds += c.setting.mode == CooldownSetting::Mode::fixed ? 8 : 3; // the fixed gap has passed
        ASSERT_TRUE(test::processEventsUntil([&] { return !p.finished.empty(); })) << "the timer polls";
        EXPECT_EQ(p.finished, std::vector<std::string>{c.line});
        EXPECT_EQ(p.pause.text(), "");
        EXPECT_FALSE(p.pause.waiting());
    }
}
