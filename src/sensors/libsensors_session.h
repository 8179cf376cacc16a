// SPDX-License-Identifier: Apache-2.0
// The hwmon chips as lm-sensors' libsensors sees them: its chip names, the labels, ignore
// and compute lines of /etc/sensors3.conf and /etc/sensors.d applied.
//
// libsensors keeps one process-wide state that is not thread-safe; every function here
// takes the same lock around it. The library is initialised on first use, rescanned on
// request (a driver loaded or reloaded) and cleaned up when the process exits, so that
// nothing it allocates outlives the process unaccounted for. The chips handed out are
// copies, valid across rescans: a chip that went away just stops giving values.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quarbel::libsensors {

// One temperature of a chip.
struct Temperature {
    std::string name;  // the kernel's channel name, e.g. "temp1"
    std::string label; // the configured label, else the driver's, else `name`
    int input = -1;    // subfeature number of the reading
    int critical = -1; // subfeature number of the critical mark; -1 when the chip has none
};

struct Chip {
    std::string prefix; // e.g. "k10temp"
    short busType = 0;
    short busNumber = 0;
    int address = 0;
    std::string path; // the chip's sysfs folder
    std::vector<Temperature> temperatures;
};

enum class Scan {
    cached, // the chips found when the library was last (re)initialised
    fresh,  // initialise again first, finding drivers loaded since
};

// The detected chips that report at least one temperature, or nothing when libsensors
// cannot be initialised (or was cleaned up at exit).
std::optional<std::vector<Chip>> temperatureChips(Scan scan);

// The value of subfeature `number` of `chip` (degrees Celsius for temperatures), with the
// configured compute line applied; nothing when it cannot be read.
std::optional<double> readValue(const Chip& chip, int number);

} // namespace quarbel::libsensors
