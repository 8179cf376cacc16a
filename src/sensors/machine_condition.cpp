// SPDX-License-Identifier: Apache-2.0
#include "sensors/machine_condition.h"

#include "sensors/hwmon_reader.h"
#include "sensors/sysfs_text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <thread>
#include <unistd.h>

namespace quarbel {
namespace {

bool isNumber(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "cpu12" and the like, not "cpufreq" or "cpuidle".
bool isCpuDirectory(std::string_view name) { return name.starts_with("cpu") && isNumber(name.substr(3)); }

std::vector<std::string> cpuDirectories(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/devices/system/cpu";
    std::vector<std::string> paths;
    for (const auto& name : sysfs::directoryEntries(root))
        if (isCpuDirectory(name)) paths.push_back(root + "/" + name);
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> governorsOf(const ConditionLocations& locations) {
    std::vector<std::string> governors;
    for (const auto& cpu : cpuDirectories(locations)) {
        std::string governor = sysfs::readLine(cpu + "/cpufreq/scaling_governor");
        if (!governor.empty() && std::find(governors.begin(), governors.end(), governor) == governors.end())
            governors.push_back(std::move(governor));
    }
    std::sort(governors.begin(), governors.end());
    return governors;
}

// On battery when a battery discharges and no mains supply is online. Machines without any
// power-supply entry (most desktops and servers, containers) report nothing.
std::optional<bool> onBatteryOf(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/class/power_supply";
    bool anySupply = false, mainsOnline = false, discharging = false;
    for (const auto& name : sysfs::directoryEntries(root)) {
        const std::string type = sysfs::readLine(root + "/" + name + "/type");
        if (type == "Mains" || type == "USB") {
            anySupply = true;
            mainsOnline = mainsOnline || sysfs::readLine(root + "/" + name + "/online") == "1";
        } else if (type == "Battery") {
            // Peripherals (mice, headsets) report batteries of their own with scope "Device".
            if (sysfs::readLine(root + "/" + name + "/scope") == "Device") continue;
            anySupply = true;
            discharging = discharging || sysfs::readLine(root + "/" + name + "/status") == "Discharging";
        }
    }
    if (!anySupply) return std::nullopt;
    return discharging && !mainsOnline;
}

std::optional<double> loadAverageOf(const ConditionLocations& locations) {
    const std::string line = sysfs::readLine(locations.procRoot + "/loadavg");
    double value = 0;
    if (std::sscanf(line.c_str(), "%lf", &value) != 1) return std::nullopt;
    return value;
}

// The name and user + system ticks of one /proc/PID/stat line. The name is between the
// first "(" and the last ")", since a program may put either in its own name.
std::optional<std::pair<std::string, std::uint64_t>> parseProcessStat(std::string_view text) {
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    std::string name(text.substr(open + 1, close - open - 1));
    // After the name: state (field 3) ... utime (14) and stime (15).
    unsigned long long utime = 0, stime = 0;
    const std::string rest(text.substr(close + 1));
    if (std::sscanf(rest.c_str(), " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &utime, &stime) !=
        2)
        return std::nullopt;
    return std::pair{std::move(name), static_cast<std::uint64_t>(utime + stime)};
}

// Integer arithmetic, not printf: a desktop process runs under the user's numeric locale, and
// the condition text must read "2.40" under every one of them.
std::string gigahertz(long long kHz) {
    const long long hundredths = (kHz + 5000) / 10000;
    const long long fraction = hundredths % 100;
    return std::to_string(hundredths / 100) + (fraction < 10 ? ".0" : ".") + std::to_string(fraction);
}

} // namespace

double MachineCondition::otherProcessCores() const {
    double total = 0;
    for (const auto& process : busyProcesses)
        total += process.cores;
    return total;
}

ProcessTicks readProcessTicks(const ConditionLocations& locations) {
    ProcessTicks sample;
    sample.at = std::chrono::steady_clock::now();
    for (const auto& name : sysfs::directoryEntries(locations.procRoot)) {
        if (!isNumber(name)) continue;
        const auto text = sysfs::readText(locations.procRoot + "/" + name + "/stat", 4096);
        if (!text) continue; // the process ended meanwhile
        if (auto parsed = parseProcessStat(*text)) sample.ticks[std::stoi(name)] = std::move(*parsed);
    }
    return sample;
}

std::vector<BusyProcess> busyProcessesBetween(const ProcessTicks& before, const ProcessTicks& after,
                                              int ownPid, long ticksPerSecond) {
    const double seconds = std::chrono::duration<double>(after.at - before.at).count();
    std::vector<BusyProcess> busy;
    if (!(seconds > 0) || ticksPerSecond <= 0) return busy;
    for (const auto& [pid, entry] : after.ticks) {
        const auto earlier = before.ticks.find(pid);
        // A pid seen only once, or reused by another program, has no interval to measure.
        if (pid == ownPid || earlier == before.ticks.end() || earlier->second.first != entry.first) continue;
        if (entry.second < earlier->second.second) continue;
        const double cores = static_cast<double>(entry.second - earlier->second.second) /
                             static_cast<double>(ticksPerSecond) / seconds;
        if (cores >= kListedProcessCores) busy.push_back({pid, entry.first, cores});
    }
    std::sort(busy.begin(), busy.end(), [](const auto& a, const auto& b) { return a.cores > b.cores; });
    return busy;
}

MachineCondition readMachineCondition(const ConditionLocations& locations) {
    MachineCondition condition;
    condition.governors = governorsOf(locations);
    condition.onBattery = onBatteryOf(locations);
    condition.loadAverage = loadAverageOf(locations);
    return condition;
}

MachineCondition sampleMachineCondition(const ConditionLocations& locations,
                                        std::chrono::milliseconds interval) {
    const ProcessTicks before = readProcessTicks(locations);
    std::this_thread::sleep_for(interval);
    const ProcessTicks after = readProcessTicks(locations);
    MachineCondition condition = readMachineCondition(locations);
    condition.busyProcesses =
        busyProcessesBetween(before, after, static_cast<int>(::getpid()), ::sysconf(_SC_CLK_TCK));
    return condition;
}

ThrottleSample readThrottleSample(const ConditionLocations& locations) {
    ThrottleSample sample;
    for (const auto& cpu : cpuDirectories(locations)) {
        const auto kHz = sysfs::parseInteger(sysfs::readLine(cpu + "/cpufreq/scaling_cur_freq"));
        if (kHz && *kHz > 0)
            sample.highestFrequencyKHz = std::max(sample.highestFrequencyKHz.value_or(0), *kHz);
    }
    sample.sensorsAtCritical = sensorsAtCriticalTemperature(locations.sysRoot + "/class/hwmon");
    return sample;
}

void ThrottleWatch::observe(const ThrottleSample& sample) {
    for (const auto& sensor : sample.sensorsAtCritical) {
        if (std::find(criticalNoted_.begin(), criticalNoted_.end(), sensor) != criticalNoted_.end()) continue;
        criticalNoted_.push_back(sensor);
        signs_.push_back(sensor + " at its critical temperature");
    }
    if (!sample.highestFrequencyKHz) return;
    const long long now = *sample.highestFrequencyKHz;
    if (highestKHz_ && !frequencyNoted_ &&
        static_cast<double>(now) < kFrequencyDropFraction * static_cast<double>(*highestKHz_)) {
        frequencyNoted_ = true;
        signs_.push_back("CPU frequency fell from " + gigahertz(*highestKHz_) + " to " + gigahertz(now) +
                         " GHz");
    }
    highestKHz_ = std::max(highestKHz_.value_or(0), now);
    lowestKHz_ = lowestKHz_ ? std::min(*lowestKHz_, now) : now;
    ++frequencySamples_;
}

std::optional<double> ThrottleWatch::frequencyDropPercent() const {
    if (frequencySamples_ < 2 || !highestKHz_ || !lowestKHz_ || *highestKHz_ <= 0) return std::nullopt;
    return 100.0 * (1.0 - static_cast<double>(*lowestKHz_) / static_cast<double>(*highestKHz_));
}

std::vector<std::string> conditionBadges(const MachineCondition& condition, bool throttlingSeen) {
    std::vector<std::string> badges;
    if (condition.onBattery == true) badges.push_back("on battery");
    for (const auto& governor : condition.governors)
        if (governor != "performance") badges.push_back(governor + " governor");
    if (condition.otherProcessCores() > kBusyMachineCores) badges.push_back("busy machine");
    if (throttlingSeen) badges.push_back("throttling seen");
    return badges;
}

} // namespace quarbel
