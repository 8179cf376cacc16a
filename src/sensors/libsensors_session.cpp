// SPDX-License-Identifier: Apache-2.0
#include "sensors/libsensors_session.h"

#include <cstdlib>
#include <mutex>
#include <sensors/sensors.h>

namespace quarbel::libsensors {
namespace {

struct State {
    std::mutex mutex;
    bool initialised = false; // sensors_init succeeded and no sensors_cleanup since
    bool unusable = false;    // initialisation failed, or the process is exiting
    bool cleanupRegistered = false;
};

// Never destroyed: a background read may still run while the process exits.
State& state() {
    static auto* const instance = new State;
    return *instance;
}

void cleanUpAtExit() {
    State& s = state();
    // A read still running on another thread keeps the library; what it holds stays reachable.
    std::unique_lock lock(s.mutex, std::try_to_lock);
    if (!lock.owns_lock()) return;
    if (s.initialised) sensors_cleanup();
    s.initialised = false;
    s.unusable = true;
}

// Whether the library is ready, initialising it as `scan` asks. Called with the lock held.
// A failed initialisation is not tried again: a broken configuration file would otherwise
// have its errors printed on every reading.
bool ready(State& s, Scan scan) {
    if (s.unusable) return false;
    if (s.initialised && scan == Scan::cached) return true;
    if (s.initialised) sensors_cleanup();
    s.initialised = sensors_init(nullptr) == 0;
    if (!s.initialised) {
        sensors_cleanup(); // frees whatever the failed attempt had built
        s.unusable = true;
        return false;
    }
    if (!s.cleanupRegistered) s.cleanupRegistered = std::atexit(cleanUpAtExit) == 0;
    return true;
}

std::vector<Temperature> temperaturesOf(const sensors_chip_name* name) {
    std::vector<Temperature> temperatures;
    int featureIndex = 0;
    // Features the configuration ignores are skipped by libsensors itself.
    while (const sensors_feature* feature = sensors_get_features(name, &featureIndex)) {
        if (feature->type != SENSORS_FEATURE_TEMP) continue;
        const sensors_subfeature* input =
            sensors_get_subfeature(name, feature, SENSORS_SUBFEATURE_TEMP_INPUT);
        if (input == nullptr) continue;
        const sensors_subfeature* critical =
            sensors_get_subfeature(name, feature, SENSORS_SUBFEATURE_TEMP_CRIT);
        char* label = sensors_get_label(name, feature);
        temperatures.push_back({feature->name, label != nullptr ? label : feature->name, input->number,
                                critical != nullptr ? critical->number : -1});
        std::free(label);
    }
    return temperatures;
}

} // namespace

std::optional<std::vector<Chip>> temperatureChips(Scan scan) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    if (!ready(s, scan)) return std::nullopt;
    std::vector<Chip> chips;
    int chipIndex = 0;
    while (const sensors_chip_name* name = sensors_get_detected_chips(nullptr, &chipIndex)) {
        Chip chip{name->prefix != nullptr ? name->prefix : "", name->bus.type,      name->bus.nr, name->addr,
                  name->path != nullptr ? name->path : "",     temperaturesOf(name)};
        if (!chip.temperatures.empty()) chips.push_back(std::move(chip));
    }
    return chips;
}

std::optional<double> readValue(const Chip& chip, int number) {
    // libsensors finds the chip by prefix, bus and address, and reads the file under path.
    std::string prefix = chip.prefix;
    std::string path = chip.path;
    const sensors_chip_name name{prefix.data(), {chip.busType, chip.busNumber}, chip.address, path.data()};
    State& s = state();
    std::lock_guard lock(s.mutex);
    if (!ready(s, Scan::cached)) return std::nullopt;
    double value = 0;
    if (sensors_get_value(&name, number, &value) != 0) return std::nullopt;
    return value;
}

} // namespace quarbel::libsensors
