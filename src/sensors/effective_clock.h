// SPDX-License-Identifier: Apache-2.0
// The cores' effective clocks between two samples from their APERF and MPERF counters, read
// through perf_event_open on the kernel's `msr` PMU: APERF counts at the core's actual clock
// and MPERF at the reference (TSC) rate while the core runs, so reference MHz × ΔAPERF /
// ΔMPERF is the average clock over the span. Where the counters cannot be opened the reader
// says why, and the trace keeps cpufreq's scaling_cur_freq.
#pragma once

#include "sensors/machine_condition.h"
#include "sensors/power_sensors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quarbel {

struct ClockCounters {
    std::uint64_t aperf = 0;
    std::uint64_t mperf = 0;
};

// Each core's average clock between two readings, reference MHz × ΔAPERF / ΔMPERF, over the
// cores that ran in the span (ΔMPERF > 0); none when no core did.
std::optional<CoreClocks> effectiveClocks(const std::vector<ClockCounters>& before,
                                          const std::vector<ClockCounters>& after, double referenceMHz);

// What the kernel offers, from its files: the msr PMU's type and the aperf and mperf event
// codes, the reference rate, or the reason the counters are of no use.
struct ClockCounterSupport {
    int pmuType = 0;
    std::uint64_t aperfConfig = 0;
    std::uint64_t mperfConfig = 0;
    double referenceMHz = 0;
    std::string referenceSource; // "cpufreq base_frequency", "the TSC (kernel tsc_khz)"
    std::string problem;         // empty when the counters can be tried
};
ClockCounterSupport clockCounterSupport(const ConditionLocations& locations, bool x86);

// Why perf_event_open refused, for its errno and the kernel's perf_event_paranoid level.
std::string counterOpenProblem(int error, std::optional<long long> paranoid);

class EffectiveClockReader {
  public:
    explicit EffectiveClockReader(const ConditionLocations& locations = {});
    ~EffectiveClockReader();
    EffectiveClockReader(const EffectiveClockReader&) = delete;
    EffectiveClockReader& operator=(const EffectiveClockReader&) = delete;

    bool available() const noexcept { return !fds_.empty(); }
    // "APERF/MPERF (perf msr), reference 3000 MHz from cpufreq base_frequency", or why not:
    // "no msr PMU (a virtual machine exposes none)", "perf_event_paranoid is 2 …".
    const std::string& description() const noexcept { return description_; }
    // The clocks since the previous call (none on the first, which starts the span).
    std::optional<CoreClocks> read();

  private:
    std::vector<std::pair<int, int>> fds_; // APERF and MPERF per online CPU
    std::vector<ClockCounters> last_;
    double referenceMHz_ = 0;
    std::string description_;
};

// Where the trace's core clocks come from, as the system manifest states it: the counters'
// description, "cpufreq scaling_cur_freq (APERF/MPERF unavailable: REASON)", or "none (no
// cpufreq scaling_cur_freq; APERF/MPERF unavailable: REASON)".
std::string coreClockSourceText(const EffectiveClockReader& counters, bool cpufreq);
std::string coreClockSourceText(const ConditionLocations& locations = {});

} // namespace quarbel
