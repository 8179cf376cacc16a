// SPDX-License-Identifier: Apache-2.0
// What the machine was doing around a run, read from /sys and /proc: the facts that make a
// result less trustworthy without making it wrong (a power-saving governor, a battery, other
// busy programs, throttling). They are shown beside results, never used to refuse a run.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct ConditionLocations {
    std::string sysRoot = "/sys";   // devices/system/cpu, class/power_supply, class/hwmon
    std::string procRoot = "/proc"; // loadavg and one directory per process
};

struct BusyProcess {
    int pid = 0;
    std::string name;
    double cores = 0; // CPU time over wall time while sampled
    bool operator==(const BusyProcess&) const = default;
};

// Processes other than ours using at least this share of a core are listed.
inline constexpr double kListedProcessCores = 0.25;
// Other processes together using more than this many cores make the machine "busy".
inline constexpr double kBusyMachineCores = 1.0;

struct MachineCondition {
    // The CPU frequency governors in use, e.g. {"performance"}; empty without cpufreq.
    std::vector<std::string> governors;
    std::optional<bool> onBattery;          // absent when the machine reports no power supply
    std::optional<double> loadAverage;      // one-minute load average
    std::vector<BusyProcess> busyProcesses; // busiest first
    bool operator==(const MachineCondition&) const = default;

    double otherProcessCores() const;
};

// Cumulative CPU ticks per process, read at one moment.
struct ProcessTicks {
    std::chrono::steady_clock::time_point at;
    std::map<int, std::pair<std::string, std::uint64_t>> ticks; // pid -> (name, user + system)
};

ProcessTicks readProcessTicks(const ConditionLocations& locations);

// Processes other than `ownPid` that used at least kListedProcessCores between two samples.
std::vector<BusyProcess> busyProcessesBetween(const ProcessTicks& before, const ProcessTicks& after,
                                              int ownPid, long ticksPerSecond);

// Governors, battery and load average now. Busy processes need two samples and are left
// empty here; `sampleMachineCondition` fills them.
MachineCondition readMachineCondition(const ConditionLocations& locations);

// `readMachineCondition` plus the busy processes over `interval` (blocks for it).
MachineCondition sampleMachineCondition(const ConditionLocations& locations = {},
                                        std::chrono::milliseconds interval = std::chrono::milliseconds(500));

// Signs of throttling seen while benchmarks ran, gathered from repeated samples.
struct ThrottleSample {
    std::optional<long long> highestFrequencyKHz; // the fastest CPU's current frequency
    std::vector<std::string> sensorsAtCritical;   // e.g. "k10temp temp1"
};

ThrottleSample readThrottleSample(const ConditionLocations& locations = {});

// A frequency this far below the highest seen in the same benchmark counts as a drop.
inline constexpr double kFrequencyDropFraction = 0.85;

class ThrottleWatch {
  public:
    // A new benchmark starts: frequencies are compared within one benchmark only, since
    // an idle gap between benchmarks lowers them legitimately.
    void beginBenchmark() {
        highestKHz_.reset();
        lowestKHz_.reset();
        frequencySamples_ = 0;
    }
    void observe(const ThrottleSample& sample);

    // How far the fastest CPU's frequency fell below its highest within the benchmark, in
    // percent; absent before two samples with a frequency.
    std::optional<double> frequencyDropPercent() const;

    // Short notes such as "k10temp temp1 at its critical temperature", "CPU frequency fell
    // from 3.50 to 2.10 GHz"; each kind of sign is noted once.
    const std::vector<std::string>& signs() const { return signs_; }

  private:
    std::optional<long long> highestKHz_;
    std::optional<long long> lowestKHz_;
    int frequencySamples_ = 0;
    bool frequencyNoted_ = false;
    std::vector<std::string> criticalNoted_;
    std::vector<std::string> signs_;
};

// The short badges for results and cards: "on battery", "<name> governor", "busy machine",
// "throttling seen". Empty when nothing is worth a remark.
std::vector<std::string> conditionBadges(const MachineCondition& condition, bool throttlingSeen);

} // namespace quarbel
