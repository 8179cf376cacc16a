// SPDX-License-Identifier: Apache-2.0
#include "run/cooldown.h"

#include "model/number_format.h"

#include <charconv>
#include <cmath>

namespace quarbel {
namespace {
constexpr double kMostFixedSeconds = 600;
}

std::variant<CooldownSetting, std::string> parseCooldown(std::string_view text) {
    if (text == "auto") return CooldownSetting{};
    double seconds = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc{} || end != text.data() + text.size() || !(seconds >= 0) ||
        seconds > kMostFixedSeconds)
        return "--cooldown must be auto or a number of seconds from 0 to 600, not '" + std::string(text) +
               "'";
    if (seconds == 0) return CooldownSetting{CooldownSetting::Mode::off, 0};
    return CooldownSetting{CooldownSetting::Mode::fixed, seconds};
}

CooldownSetting defaultCooldown(bool quick) {
    return quick ? CooldownSetting{CooldownSetting::Mode::off, 0} : CooldownSetting{};
}

CooldownWait::CooldownWait(CooldownSetting setting, std::optional<double> idleCelsius)
    : setting_(setting), idleCelsius_(idleCelsius) {}

bool CooldownWait::keepWaiting(double waited, std::optional<double> celsius) const {
    switch (setting_.mode) {
    case CooldownSetting::Mode::off: return false;
    case CooldownSetting::Mode::fixed: return waited < setting_.seconds;
    case CooldownSetting::Mode::automatic:
        if (!idleCelsius_ || !celsius || waited >= kCooldownCapSeconds) return false;
        return *celsius > *idleCelsius_ + kCooldownMarginCelsius;
    }
    return false;
}

std::string CooldownWait::text(double waited, std::optional<double> celsius) const {
    if (setting_.mode == CooldownSetting::Mode::fixed)
        return "Cooling down: " + format(std::max(0.0, std::ceil(setting_.seconds - waited)), 0) + " s left";
    if (!celsius || !idleCelsius_) return "Cooling down";
    return "Cooling down: " + format(*celsius, 0) + " \u00b0C \u2192 " + format(*idleCelsius_, 0) +
           " \u00b0C";
}

std::string CooldownWait::unavailableReason() const {
    if (setting_.mode == CooldownSetting::Mode::automatic && !idleCelsius_)
        return "no CPU temperature sensor";
    return {};
}

} // namespace quarbel
