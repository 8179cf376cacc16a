// SPDX-License-Identifier: Apache-2.0
#include "run/run_clock.h"

#include <algorithm>

namespace quarbel {

RunClock::RunClock(std::function<QDateTime()> now, std::function<void()> onTick)
    : now_(std::move(now)), onTick_(std::move(onTick)), lastTick_(now_()) {
    timer_.setInterval(kIntervalMs);
    QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
}

void RunClock::start(double targetSeconds) {
    startedAt_ = now_();
    lastTick_ = startedAt_;
    targetSeconds_ = targetSeconds;
    timer_.start(); // restarts the period of a clock that was ticking
}

void RunClock::stop() {
    timer_.stop();
    startedAt_ = QDateTime();
    targetSeconds_ = 0;
    lastTick_ = now_();
}

void RunClock::tick() {
    lastTick_ = now_();
    if (onTick_) onTick_();
}

double RunClock::elapsed() const {
    if (!startedAt_.isValid()) return 0;
    const double elapsed = static_cast<double>(startedAt_.msecsTo(lastTick_)) / 1000.0;
    return elapsed > 0 ? elapsed : 0;
}

double RunClock::progress() const {
    if (!(targetSeconds_ > 0)) return 0;
    return std::min(elapsed() / targetSeconds_, 1.0);
}

} // namespace quarbel
