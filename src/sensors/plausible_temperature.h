// SPDX-License-Identifier: Apache-2.0
// The one rule every temperature source shares: a value outside this window is a
// broken or unconnected sensor, never a real die temperature.
#pragma once

#include <cmath>

namespace quarbel {

// True when `celsius` is finite and strictly between -40 and 140 degrees Celsius.
inline bool isPlausibleTemperature(double celsius) {
    return std::isfinite(celsius) && celsius > -40.0 && celsius < 140.0;
}

} // namespace quarbel
