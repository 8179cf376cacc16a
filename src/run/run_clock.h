// SPDX-License-Identifier: Apache-2.0
// The display clock of the benchmark now running: when it started, how long it is meant to
// take and the time of the last tick. It ticks four times a second while a benchmark runs, so
// the views' elapsed time and progress bar move whether or not the workload reports.
#pragma once

#include <QDateTime>
#include <QTimer>

#include <functional>

namespace quarbel {

class RunClock {
  public:
    static constexpr int kIntervalMs = 250;

    // `now` reads the wall clock; `onTick` runs after each tick has taken the time.
    RunClock(std::function<QDateTime()> now, std::function<void()> onTick);

    // A benchmark starts now and is meant to take `targetSeconds`: the clock ticks.
    void start(double targetSeconds);
    // The benchmark or the run ended: no start, no target, no more ticks.
    void stop();
    // Takes the time, then calls `onTick` (the timer does this every period).
    void tick();

    bool ticking() const { return timer_.isActive(); }
    const QDateTime& startedAt() const { return startedAt_; }
    double targetSeconds() const { return targetSeconds_; }
    const QDateTime& lastTick() const { return lastTick_; }
    double elapsed() const;  // seconds from the start to the last tick; 0 before a start
    double progress() const; // elapsed over the target, 0 ... 1; 0 without a target

  private:
    std::function<QDateTime()> now_;
    std::function<void()> onTick_;
    QTimer timer_;
    QDateTime startedAt_;
    double targetSeconds_ = 0;
    QDateTime lastTick_;
};

} // namespace quarbel
