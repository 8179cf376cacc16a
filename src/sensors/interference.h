// SPDX-License-Identifier: Apache-2.0
// How much the rest of the machine disturbed one benchmark: CPU time stolen by the
// hypervisor and CPU time used by other processes, from /proc/stat and our own process's
// ticks at the benchmark's start and end. Cheap enough to read on the main thread.
#pragma once

#include "sensors/machine_condition.h"

#include <cstdint>
#include <optional>

namespace quarbel {

// Cumulative ticks at one moment: the machine's (all CPUs) and this process's (all threads).
struct CpuTickSample {
    std::uint64_t busy = 0;  // user, nice, system, irq and softirq of every CPU
    std::uint64_t steal = 0; // time a hypervisor ran something else on our virtual CPUs
    std::uint64_t total = 0; // every field: busy, idle, iowait and steal
    std::uint64_t own = 0;   // this process's user and system ticks
};

// Nothing when /proc/stat cannot be read or parsed.
std::optional<CpuTickSample> readCpuTickSample(const ConditionLocations& locations = {});

struct Interference {
    double stealPercent = 0;    // of all CPU time in the span
    double otherCpuPercent = 0; // CPU time of other processes, in percent of all CPU time
    bool operator==(const Interference&) const = default;
};

// The interference between two samples; nothing when no time passed.
std::optional<Interference> interferenceBetween(const CpuTickSample& before, const CpuTickSample& after);

// Above these a result is marked "(noisy machine)" and comparisons give it no verdict.
// Steal of 5 % means the hypervisor took one tick in twenty from our CPUs. Other processes
// taking 25 % of all CPU time (half a core of two, four of sixteen) take a quarter of the
// machine from a multi-core benchmark, far more than its run-to-run variation; below that a
// competitor's effect shows in the slice rates and comparisons judge it by statistics.
inline constexpr double kNoisyStealPercent = 5.0;
inline constexpr double kNoisyOtherCpuPercent = 25.0;

bool isNoisy(const Interference& interference);

} // namespace quarbel
