// SPDX-License-Identifier: Apache-2.0
#include "run/cooldown_pause.h"

#include "model/number_format.h"

namespace quarbel {

CooldownPause::CooldownPause(std::function<std::optional<double>()> cpuCelsius,
                             std::function<double()> seconds, Hooks hooks)
    : cpuCelsius_(std::move(cpuCelsius)), seconds_(std::move(seconds)), hooks_(std::move(hooks)) {
    timer_.setInterval(kPollMs);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
}

bool CooldownPause::start(const CooldownWait& wait) {
    const auto celsius = cpuCelsius_();
    if (!wait.keepWaiting(0, celsius)) return false;
    wait_ = wait;
    startedAt_ = seconds_();
    setText(wait.text(0, celsius));
    timer_.start();
    return true;
}

void CooldownPause::tick() {
    if (!wait_) return;
    const double waited = seconds_() - startedAt_;
    const auto celsius = cpuCelsius_();
    if (wait_->keepWaiting(waited, celsius)) {
        setText(wait_->text(waited, celsius));
        return;
    }
    end();
    if (hooks_.finished)
        hooks_.finished(celsius ? "Cooled down to " + format(*celsius, 0) + " \u00b0C in " +
                                      format(waited, 0) + " s"
                                : "Waited " + format(waited, 0) + " s");
}

bool CooldownPause::cancel() {
    const bool waiting = wait_.has_value();
    end();
    return waiting;
}

void CooldownPause::end() {
    timer_.stop();
    wait_.reset();
    setText({});
}

void CooldownPause::setText(std::string text) {
    if (text == text_) return;
    text_ = std::move(text);
    if (hooks_.textChanged) hooks_.textChanged();
}

} // namespace quarbel
