// SPDX-License-Identifier: Apache-2.0
#include "sensors/interference.h"

#include "sensors/sysfs_text.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace quarbel {
namespace {

// user + system ticks of this process, fields 14 and 15 after the name in parentheses.
std::optional<std::uint64_t> ownTicks(const ConditionLocations& locations) {
    const std::string text = sysfs::readLine(locations.procRoot + "/self/stat");
    const auto close = text.rfind(')');
    if (close == std::string::npos) return std::nullopt;
    unsigned long long utime = 0, stime = 0;
    if (std::sscanf(text.c_str() + close + 1, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu",
                    &utime, &stime) != 2)
        return std::nullopt;
    return utime + stime;
}

} // namespace

std::optional<CpuTickSample> readCpuTickSample(const ConditionLocations& locations) {
    const std::string line = sysfs::readLine(locations.procRoot + "/stat");
    unsigned long long user = 0, nice = 0, system = 0, idle = 0, iowait = 0, irq = 0, softirq = 0, steal = 0;
    if (std::sscanf(line.c_str(), "cpu %llu %llu %llu %llu %llu %llu %llu %llu", &user, &nice, &system, &idle,
                    &iowait, &irq, &softirq, &steal) < 4)
        return std::nullopt;
    const auto own = ownTicks(locations);
    if (!own) return std::nullopt;
    CpuTickSample sample;
    sample.busy = user + nice + system + irq + softirq;
    sample.steal = steal;
    sample.total = sample.busy + idle + iowait + steal;
    sample.own = *own;
    return sample;
}

std::optional<Interference> interferenceBetween(const CpuTickSample& before, const CpuTickSample& after) {
    if (after.total <= before.total) return std::nullopt;
    const auto total = static_cast<double>(after.total - before.total);
    const double busy = static_cast<double>(after.busy - before.busy);
    const double own = static_cast<double>(after.own - before.own);
    const double steal = static_cast<double>(after.steal - before.steal);
    // Ticks are counted separately per CPU and per process, so ours can run a tick ahead of
    // the machine's over a short span: never below zero.
    const double others = busy > own ? busy - own : 0.0;
    return Interference{100.0 * steal / total, 100.0 * others / total};
}

bool isNoisy(const Interference& interference) {
    return interference.stealPercent > kNoisyStealPercent ||
           interference.otherCpuPercent > kNoisyOtherCpuPercent;
}

} // namespace quarbel
