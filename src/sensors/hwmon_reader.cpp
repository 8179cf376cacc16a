// SPDX-License-Identifier: Apache-2.0
#include "sensors/hwmon_reader.h"

#include "sensors/plausible_temperature.h"
#include "sensors/sysfs_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sys/stat.h>

namespace quarbel {
namespace {

std::string normalisedName(std::string_view name) {
    std::string result(sysfs::trimmed(name));
    for (char& c : result) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (c == '-') c = '_';
    }
    return result;
}

bool fileExists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

// The number N of "<prefix>N<suffix>", or nothing when `name` has another shape.
std::optional<int> numberBetween(std::string_view name, std::string_view prefix, std::string_view suffix) {
    if (!name.starts_with(prefix) || !name.ends_with(suffix)) return std::nullopt;
    if (name.size() <= prefix.size() + suffix.size()) return std::nullopt;
    const auto digits = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    if (!std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    const auto value = sysfs::parseInteger(digits);
    if (!value || *value > 1'000'000) return std::nullopt;
    return static_cast<int>(*value);
}

// Entries named "<prefix>N", in ascending N, so that discovery is stable across calls.
std::vector<std::string> numberedEntries(const std::string& directory, std::string_view prefix,
                                         std::string_view suffix = {}) {
    std::vector<std::pair<int, std::string>> numbered;
    for (auto& name : sysfs::directoryEntries(directory))
        if (const auto n = numberBetween(name, prefix, suffix)) numbered.emplace_back(*n, std::move(name));
    std::sort(numbered.begin(), numbered.end());
    std::vector<std::string> names;
    for (auto& entry : numbered)
        names.push_back(std::move(entry.second));
    return names;
}

// Label prefixes of the preferred tiers of a chip, most preferred first.
std::vector<std::vector<std::string_view>> preferredLabels(std::string_view chipName) {
    if (chipName == "coretemp") return {{"Package id", "Physical id"}};
    if (chipName == "k10temp" || chipName == "zenpower") return {{"Tdie"}, {"Tctl"}};
    if (chipName == "amdgpu") return {{"edge"}};
    if (chipName == "xe") return {{"pkg"}};
    return {};
}

struct RankedInput {
    int rank;
    SensorInput input;
};

// One tier per preferred rank present, then the tier of all inputs.
std::vector<std::vector<SensorInput>> tiersOf(const std::vector<RankedInput>& inputs) {
    std::vector<int> ranks;
    for (const auto& input : inputs)
        if (input.rank != kUnpreferredSensorRank) ranks.push_back(input.rank);
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    std::vector<std::vector<SensorInput>> tiers;
    for (const int rank : ranks) {
        auto& tier = tiers.emplace_back();
        for (const auto& input : inputs)
            if (input.rank == rank) tier.push_back(input.input);
    }
    auto& all = tiers.emplace_back();
    for (const auto& input : inputs)
        all.push_back(input.input);
    return tiers;
}

void addHwmonChips(const std::string& root, SensorPlan& plan) {
    for (const auto& entry : numberedEntries(root, "hwmon")) {
        // Older drivers keep their attributes in the device directory, not in hwmonN.
        std::string directory = root + "/" + entry;
        if (!fileExists(directory + "/name")) directory += "/device";
        const std::string chipName = normalisedName(sysfs::readLine(directory + "/name"));
        const auto kind = classifySensorName(chipName);
        if (!kind) continue;

        std::vector<RankedInput> inputs;
        for (const auto& input : numberedEntries(directory, "temp", "_input")) {
            const std::string base = input.substr(0, input.size() - std::string_view("_input").size());
            const auto role = classifySensor(chipName, sysfs::readLine(directory + "/" + base + "_label"));
            inputs.push_back({role->rank, {directory + "/" + input}});
        }
        if (inputs.empty()) continue;
        plan.chips.push_back({chipName, *kind, tiersOf(inputs), std::nullopt});
    }
}

// The CPU and GPU chips libsensors finds; false when it cannot be used or finds no chip.
bool addLibsensorsChips(SensorPlan& plan) {
    const auto chips = libsensors::temperatureChips(libsensors::Scan::fresh);
    if (!chips || chips->empty()) return false;
    for (const auto& chip : *chips) {
        const std::string chipName = normalisedName(chip.prefix);
        const auto kind = classifySensorName(chipName);
        if (!kind) continue;
        std::vector<RankedInput> inputs;
        for (const auto& temperature : chip.temperatures)
            inputs.push_back({classifySensor(chipName, temperature.label)->rank, {{}, temperature.input}});
        plan.chips.push_back({chipName, *kind, tiersOf(inputs), chip});
    }
    return true;
}

void addThermalZones(const std::string& root, bool wantCPU, bool wantGPU, SensorPlan& plan) {
    for (const auto& entry : numberedEntries(root, "thermal_zone")) {
        const std::string directory = root + "/" + entry;
        const std::string zoneName = normalisedName(sysfs::readLine(directory + "/type"));
        const auto kind = classifySensorName(zoneName);
        if (!kind || (*kind == SensorKind::cpu && !wantCPU) || (*kind == SensorKind::gpu && !wantGPU))
            continue;
        plan.chips.push_back({zoneName, *kind, {{{directory + "/temp"}}}, std::nullopt});
    }
}

std::optional<double> readMillidegrees(const std::string& path) {
    const auto text = sysfs::readText(path, 64);
    if (!text) return std::nullopt;
    const auto millidegrees = sysfs::parseInteger(*text);
    if (!millidegrees) return std::nullopt;
    return static_cast<double>(*millidegrees) / 1000.0;
}

std::optional<double> readInput(const SensorChip& chip, const SensorInput& input) {
    if (chip.libsensorsChip) return libsensors::readValue(*chip.libsensorsChip, input.subfeature);
    return readMillidegrees(input.path);
}

bool readsSystemSensors(const std::string& hwmonRoot) { return hwmonRoot == kSystemHwmonRoot; }

std::vector<std::string> libsensorsAtCritical(const std::vector<libsensors::Chip>& chips) {
    std::vector<std::string> names;
    for (const auto& chip : chips)
        for (const auto& temperature : chip.temperatures) {
            if (temperature.critical < 0) continue;
            const auto critical = libsensors::readValue(chip, temperature.critical);
            const auto input = libsensors::readValue(chip, temperature.input);
            if (critical && input && *critical > 0 && *input >= *critical)
                names.push_back(chip.prefix + " " + temperature.name);
        }
    return names;
}

std::vector<std::string> sysfsAtCritical(const std::string& hwmonRoot) {
    std::vector<std::string> names;
    std::vector<std::string> chips = sysfs::directoryEntries(hwmonRoot);
    std::sort(chips.begin(), chips.end());
    for (const auto& chip : chips) {
        const std::string directory = hwmonRoot + "/" + chip;
        std::vector<std::string> files = sysfs::directoryEntries(directory);
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            if (!file.starts_with("temp") || !file.ends_with("_crit")) continue;
            const std::string channel = file.substr(0, file.size() - 5);
            const auto critical = sysfs::parseInteger(sysfs::readLine(directory + "/" + file));
            const auto input = sysfs::parseInteger(sysfs::readLine(directory + "/" + channel + "_input"));
            if (critical && input && *critical > 0 && *input >= *critical)
                names.push_back(sysfs::readLine(directory + "/name") + " " + channel);
        }
    }
    return names;
}

void keepHighest(std::optional<double>& best, double candidate) {
    if (!best || candidate > *best) best = candidate;
}

} // namespace

std::optional<SensorKind> classifySensorName(std::string_view rawName) {
    const std::string name = normalisedName(rawName);
    static constexpr std::array<std::string_view, 4> cpuChips = {"coretemp", "k10temp", "zenpower",
                                                                 "x86_pkg_temp"};
    static constexpr std::array<std::string_view, 5> gpuChips = {"amdgpu", "radeon", "nouveau", "i915", "xe"};
    if (std::find(cpuChips.begin(), cpuChips.end(), name) != cpuChips.end()) return SensorKind::cpu;
    if (std::find(gpuChips.begin(), gpuChips.end(), name) != gpuChips.end()) return SensorKind::gpu;
    const std::string_view view = name;
    if (view.find("gpu") != std::string_view::npos) return SensorKind::gpu;
    if (view.find("cpu") != std::string_view::npos) return SensorKind::cpu;
    // Arm SoCs: "soc_thermal", "bigcore0_thermal", "littlecore_thermal".
    if (view.ends_with("thermal") && (view.starts_with("soc") || view.find("core") != std::string_view::npos))
        return SensorKind::cpu;
    return std::nullopt;
}

std::optional<SensorRole> classifySensor(std::string_view chipName, std::string_view label) {
    const std::string name = normalisedName(chipName);
    const auto kind = classifySensorName(name);
    if (!kind) return std::nullopt;
    const auto preferred = preferredLabels(name);
    for (std::size_t rank = 0; rank < preferred.size(); ++rank)
        for (const std::string_view prefix : preferred[rank])
            if (sysfs::trimmed(label).starts_with(prefix)) return SensorRole{*kind, static_cast<int>(rank)};
    return SensorRole{*kind, kUnpreferredSensorRank};
}

SensorPlan discoverSensors(const SensorLocations& locations) {
    SensorPlan plan;
    if (!readsSystemSensors(locations.hwmonRoot) || !addLibsensorsChips(plan))
        addHwmonChips(locations.hwmonRoot, plan);
    const auto hasKind = [&plan](SensorKind kind) {
        return std::any_of(plan.chips.begin(), plan.chips.end(),
                           [kind](const SensorChip& chip) { return chip.kind == kind; });
    };
    const bool wantCPU = !hasKind(SensorKind::cpu);
    const bool wantGPU = !hasKind(SensorKind::gpu);
    if (wantCPU || wantGPU) addThermalZones(locations.thermalRoot, wantCPU, wantGPU, plan);
    return plan;
}

std::optional<double> readChipTemperature(const SensorChip& chip) {
    for (const auto& tier : chip.tiers) {
        std::optional<double> best;
        for (const auto& input : tier) {
            const auto value = readInput(chip, input);
            if (value && isPlausibleTemperature(*value)) keepHighest(best, *value);
        }
        if (best) return best;
    }
    return std::nullopt;
}

namespace {

// The reading and whether every chip of the plan gave a value.
std::pair<QLTemperatureReading, bool> readPlan(const SensorPlan& plan) {
    std::optional<double> cpu;
    std::optional<double> gpu;
    bool everyChipAnswered = true;
    for (const auto& chip : plan.chips) {
        const auto value = readChipTemperature(chip);
        if (!value) {
            everyChipAnswered = false;
            continue;
        }
        keepHighest(chip.kind == SensorKind::cpu ? cpu : gpu, *value);
    }
    QLTemperatureReading reading{0, 0, 0, 0};
    if (cpu) {
        reading.cpu = *cpu;
        reading.hasCPU = 1;
    }
    if (gpu) {
        reading.gpu = *gpu;
        reading.hasGPU = 1;
    }
    return {reading, everyChipAnswered};
}

} // namespace

QLTemperatureReading readSensorPlan(const SensorPlan& plan) { return readPlan(plan).first; }

std::vector<std::string> sensorsAtCriticalTemperature(const std::string& hwmonRoot) {
    if (readsSystemSensors(hwmonRoot)) {
        const auto chips = libsensors::temperatureChips(libsensors::Scan::cached);
        if (chips && !chips->empty()) return libsensorsAtCritical(*chips);
    }
    return sysfsAtCritical(hwmonRoot);
}

HwmonTemperatureReader::HwmonTemperatureReader(SensorLocations locations)
    : locations_(std::move(locations)) {}

std::optional<double> readHottestCore(const SensorChip& chip) {
    std::optional<double> hottest;
    for (std::size_t tier = 1; tier < chip.tiers.size(); ++tier)
        for (const auto& input : chip.tiers[tier])
            if (const auto value = readInput(chip, input); value && isPlausibleTemperature(*value))
                keepHighest(hottest, *value);
    return hottest;
}

std::optional<double> HwmonTemperatureReader::readHottestCpuCore() {
    std::lock_guard lock(mutex_);
    if (!plan_) return std::nullopt;
    std::optional<double> hottest;
    for (const auto& chip : plan_->chips)
        if (chip.kind == SensorKind::cpu)
            if (const auto value = readHottestCore(chip)) keepHighest(hottest, *value);
    return hottest;
}

QLTemperatureReading HwmonTemperatureReader::read() {
    std::lock_guard lock(mutex_);
    const bool fresh = !plan_.has_value();
    if (fresh) plan_ = discoverSensors(locations_);
    auto [reading, everyChipAnswered] = readPlan(*plan_);
    if (!everyChipAnswered && !fresh) {
        // A cached chip went quiet: hwmon numbers change when a driver reloads.
        plan_ = discoverSensors(locations_);
        reading = readPlan(*plan_).first;
    }
    // Nothing found yet: a sensor driver may still be loading, so look again next time.
    if (plan_->chips.empty()) plan_.reset();
    return reading;
}

} // namespace quarbel
