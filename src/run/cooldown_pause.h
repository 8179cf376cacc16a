// SPDX-License-Identifier: Apache-2.0
// The pause before a benchmark while the machine cools: it polls the CPU temperature four
// times a second until the run's CooldownWait says enough, keeping a line on how far it has
// got for the window. A stop cancels it without going on to the next benchmark.
#pragma once

#include "run/cooldown.h"

#include <QTimer>

#include <functional>
#include <optional>
#include <string>

namespace quarbel {

class CooldownPause {
  public:
    static constexpr int kPollMs = 250;

    struct Hooks {
        std::function<void()> textChanged;
        std::function<void(const std::string& line)> finished; // the wait ended; the line to log
    };

    // `cpuCelsius` reads the CPU now (none without a sensor); `seconds` is a monotonic clock.
    CooldownPause(std::function<std::optional<double>()> cpuCelsius, std::function<double()> seconds,
                  Hooks hooks);

    // Starts waiting as `wait` says; false, and nothing changes, when it need not wait at all.
    bool start(const CooldownWait& wait);
    // One poll (the timer's): the text moves on, or the pause ends and `finished` is called.
    void tick();
    // Ends a pause without calling `finished`; whether one was going on.
    bool cancel();

    bool waiting() const { return timer_.isActive(); }
    // "Cooling down: 62 °C → 45 °C" while waiting, else empty.
    const std::string& text() const { return text_; }

  private:
    void end();
    void setText(std::string text);

    std::function<std::optional<double>()> cpuCelsius_;
    std::function<double()> seconds_;
    Hooks hooks_;
    QTimer timer_;
    std::optional<CooldownWait> wait_;
    double startedAt_ = 0;
    std::string text_;
};

} // namespace quarbel
