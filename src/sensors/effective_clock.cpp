// SPDX-License-Identifier: Apache-2.0
#include "sensors/effective_clock.h"

#include "sensors/sysfs_text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quarbel {
namespace {

// "event=0x01" as the msr PMU's events/ files write it.
std::optional<std::uint64_t> eventCode(const std::string& path) {
    const std::string text = sysfs::readLine(path);
    if (text.rfind("event=", 0) != 0) return std::nullopt;
    char* end = nullptr;
    const std::uint64_t code = std::strtoull(text.c_str() + 6, &end, 0);
    if (end == text.c_str() + 6) return std::nullopt;
    return code;
}

std::vector<int> onlineCpus(const ConditionLocations& locations) {
    // "0-3,6,8-11"
    std::vector<int> cpus;
    const std::string text = sysfs::readLine(locations.sysRoot + "/devices/system/cpu/online");
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        int first = 0, last = 0;
        const std::string part = text.substr(at, comma - at);
        const int fields = std::sscanf(part.c_str(), "%d-%d", &first, &last);
        for (int cpu = first; fields >= 1 && cpu <= (fields == 2 ? last : first); ++cpu)
            cpus.push_back(cpu);
        at = comma + 1;
    }
    return cpus;
}

} // namespace

std::optional<CoreClocks> effectiveClocks(const std::vector<ClockCounters>& before,
                                          const std::vector<ClockCounters>& after, double referenceMHz) {
    CoreClocks clocks;
    int count = 0;
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        // Counters only grow; one that fell was reset, and its span says nothing.
        if (after[i].mperf <= before[i].mperf || after[i].aperf < before[i].aperf) continue;
        const double mhz = referenceMHz * static_cast<double>(after[i].aperf - before[i].aperf) /
                           static_cast<double>(after[i].mperf - before[i].mperf);
        clocks.lowMHz = count == 0 ? mhz : std::min(clocks.lowMHz, mhz);
        clocks.highMHz = count == 0 ? mhz : std::max(clocks.highMHz, mhz);
        clocks.meanMHz += mhz;
        ++count;
    }
    if (count == 0 || !(referenceMHz > 0)) return std::nullopt;
    clocks.meanMHz /= count;
    return clocks;
}

ClockCounterSupport clockCounterSupport(const ConditionLocations& locations, bool x86) {
    ClockCounterSupport support;
    if (!x86) {
        support.problem = "not an x86 processor (APERF/MPERF are x86 counters)";
        return support;
    }
    const std::string pmu = locations.sysRoot + "/bus/event_source/devices/msr";
    const auto type = sysfs::parseInteger(sysfs::readLine(pmu + "/type"));
    if (!type) {
        support.problem = runsVirtualized(locations) ? "no msr PMU (a virtual machine exposes none)"
                                                     : "no msr PMU in this kernel";
        return support;
    }
    const auto aperf = eventCode(pmu + "/events/aperf"), mperf = eventCode(pmu + "/events/mperf");
    if (!aperf || !mperf) {
        support.problem = runsVirtualized(locations)
                              ? "the msr PMU offers no aperf and mperf events (a virtual machine hides them)"
                              : "the msr PMU offers no aperf and mperf events";
        return support;
    }
    support.pmuType = static_cast<int>(*type);
    support.aperfConfig = *aperf;
    support.mperfConfig = *mperf;
    // MPERF counts at the TSC's rate: the processor's base clock, which intel_pstate and
    // amd-pstate name; without it the counters give no MHz.
    const std::string cpu0 = locations.sysRoot + "/devices/system/cpu/cpu0/cpufreq/";
    for (const char* file : {"base_frequency", "amd_pstate_nominal_freq"})
        if (const auto khz = sysfs::parseInteger(sysfs::readLine(cpu0 + file)); khz && *khz > 0) {
            support.referenceMHz = static_cast<double>(*khz) / 1000.0;
            support.referenceSource = std::string("cpufreq ") + file;
            return support;
        }
    support.problem = "no base clock to scale them by (cpufreq base_frequency)";
    return support;
}

std::string counterOpenProblem(int error, std::optional<long long> paranoid) {
    if (error == EACCES || error == EPERM)
        return "no permission to open the counters: perf_event_paranoid is " +
               (paranoid ? std::to_string(*paranoid) : std::string("unknown")) +
               " (needs 0 or less, or CAP_PERFMON)";
    return std::string("perf_event_open failed: ") + std::strerror(error);
}

EffectiveClockReader::EffectiveClockReader(const ConditionLocations& locations) {
#if defined(__x86_64__) || defined(__i386__)
    const ClockCounterSupport support = clockCounterSupport(locations, true);
#else
    const ClockCounterSupport support = clockCounterSupport(locations, false);
#endif
    if (!support.problem.empty()) {
        description_ = support.problem;
        return;
    }
    const auto open = [&](std::uint64_t config, int cpu) {
        perf_event_attr attr{};
        attr.size = sizeof attr;
        attr.type = static_cast<std::uint32_t>(support.pmuType);
        attr.config = config;
        return static_cast<int>(::syscall(SYS_perf_event_open, &attr, -1, cpu, -1, PERF_FLAG_FD_CLOEXEC));
    };
    for (int cpu : onlineCpus(locations)) {
        const int aperf = open(support.aperfConfig, cpu);
        const int mperf = aperf >= 0 ? open(support.mperfConfig, cpu) : -1;
        if (aperf < 0 || mperf < 0) {
            const int error = errno;
            if (aperf >= 0) ::close(aperf);
            for (const auto& [a, m] : fds_)
                ::close(a), ::close(m);
            fds_.clear();
            description_ = counterOpenProblem(
                error,
                sysfs::parseInteger(sysfs::readLine(locations.procRoot + "/sys/kernel/perf_event_paranoid")));
            return;
        }
        fds_.emplace_back(aperf, mperf);
    }
    if (fds_.empty()) {
        description_ = "no online CPU list";
        return;
    }
    referenceMHz_ = support.referenceMHz;
    description_ = "APERF/MPERF (perf msr), reference " + std::to_string(static_cast<long>(referenceMHz_)) +
                   " MHz from " + support.referenceSource;
}

EffectiveClockReader::~EffectiveClockReader() {
    for (const auto& [a, m] : fds_)
        ::close(a), ::close(m);
}

std::optional<CoreClocks> EffectiveClockReader::read() {
    std::vector<ClockCounters> now;
    for (const auto& [a, m] : fds_) {
        ClockCounters c;
        if (::read(a, &c.aperf, sizeof c.aperf) != sizeof c.aperf ||
            ::read(m, &c.mperf, sizeof c.mperf) != sizeof c.mperf)
            c = {}; // a core that went offline: no span
        now.push_back(c);
    }
    const auto clocks = last_.empty() ? std::nullopt : effectiveClocks(last_, now, referenceMHz_);
    last_ = std::move(now);
    return clocks;
}

std::string coreClockSourceText(const EffectiveClockReader& counters, bool cpufreq) {
    if (counters.available()) return counters.description();
    return (cpufreq ? "cpufreq scaling_cur_freq (" : "none (no cpufreq scaling_cur_freq; ") +
           std::string("APERF/MPERF unavailable: ") + counters.description() + ")";
}

std::string coreClockSourceText(const ConditionLocations& locations) {
    return coreClockSourceText(EffectiveClockReader(locations), CoreClockReader(locations).available());
}

} // namespace quarbel
