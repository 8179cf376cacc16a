// SPDX-License-Identifier: Apache-2.0
// Bringing the machine back to idle before each benchmark, so that a result does not depend
// on how hot the one before it left the CPU: a wait until the package temperature is back near
// the idle one measured as the run started (with a cap), a fixed gap, or none.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace quarbel {

struct CooldownSetting {
    enum class Mode { automatic, fixed, off };
    Mode mode = Mode::automatic;
    double seconds = 0; // the gap of a fixed cooldown
    bool operator==(const CooldownSetting&) const = default;
};

// "auto", a number of seconds (0: none); otherwise the problem, e.g.
// "--cooldown must be auto or a number of seconds from 0 to 600, not 'soon'".
std::variant<CooldownSetting, std::string> parseCooldown(std::string_view text);

// The setting a run uses when none was asked for: automatic for full runs, none for quick ones.
CooldownSetting defaultCooldown(bool quick);

// A temperature this close to the idle one counts as idle.
inline constexpr double kCooldownMarginCelsius = 3.0;
// An automatic wait never lasts longer than this.
inline constexpr double kCooldownCapSeconds = 120.0;

class CooldownWait {
  public:
    // `idleCelsius`: the CPU as the run started; none without a CPU temperature sensor.
    CooldownWait(CooldownSetting setting, std::optional<double> idleCelsius);

    // Whether to wait (longer) before the next benchmark, `waited` seconds into the wait, with
    // the CPU at `celsius` now.
    bool keepWaiting(double waited, std::optional<double> celsius) const;
    // "Cooling down: 62 °C → 45 °C", or "Cooling down: 12 s left" for a fixed gap.
    std::string text(double waited, std::optional<double> celsius) const;
    // Why an automatic wait cannot be made ("no CPU temperature sensor"); empty when it can.
    std::string unavailableReason() const;

  private:
    CooldownSetting setting_;
    std::optional<double> idleCelsius_;
};

} // namespace quarbel
