// SPDX-License-Identifier: Apache-2.0
// Records the sensor trace and the energy of one benchmark pass: a thread samples every
// sensor at a fixed rate from start() to finish(), and the samples become the trace's columns,
// the energy of each power domain and the reasons for the domains that have no sensor.
#pragma once

#include "model/sensor_trace.h"
#include "sensors/effective_clock.h"
#include "sensors/interference.h"
#include "sensors/power_sensors.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace quarbel {

// Everything read at one moment.
struct SensorSample {
    double seconds = 0;                  // since recording started
    std::optional<double> packageJoules; // since recording started
    std::optional<GpuPowerReading> gpu;
    std::optional<BatteryReading> battery;
    std::optional<CoreClocks> clocks;
    std::optional<double> cpuCelsius;
    std::optional<double> coreCelsius; // the hottest core
    std::optional<std::uint64_t> throttleCount;
    std::optional<CpuTickSample> ticks;
};

// What the sensors are, found once before sampling.
struct SensorFacts {
    std::string packageSource; // empty: no package sensor, for the reason in packageProblem
    std::string packageProblem;
    std::optional<double> packageLimitWatts;
    std::string gpuSource; // empty: no GPU power sensor
    std::string gpuProblem;
    std::string batterySource; // empty: no battery
    int onlineCpus = 1;
};

struct TracedPass {
    SensorTrace trace;
    ResultEnergy energy;
};

// The trace has at most this many points; longer recordings are averaged into as many.
inline constexpr std::size_t kMostTracePoints = 32;

// The trace, the energy and the missing domains from samples in time order.
TracedPass assembleTrace(const std::vector<SensorSample>& samples, const SensorFacts& facts);

// A trace as it is kept: at most kMostTracePoints points, each column's values rounded to
// its step (keptTraceColumn), which is how the report stores them.
SensorTrace compactTrace(const SensorTrace& trace);

// The machine's sensors, opened once per process and shared by the recordings.
class MachineSensors {
  public:
    explicit MachineSensors(const ConditionLocations& locations = {},
                            std::unique_ptr<GpuPowerSource> gpu = nullptr, bool openGpu = true);
    SensorFacts facts() const;
    SensorSample sample(double seconds); // not thread-safe: one recording at a time

  private:
    ConditionLocations locations_;
    RaplPackageMeter rapl_;
    std::unique_ptr<GpuPowerSource> gpu_;
    BatteryMeter battery_;
    CoreClockReader clocks_;
    EffectiveClockReader counters_; // preferred to cpufreq where it opens
    bool runsVirtualized_ = false;
};

class TraceRecorder {
  public:
    // Samples `sensors` now and then every `interval` until finish().
    TraceRecorder(std::shared_ptr<MachineSensors> sensors,
                  std::chrono::milliseconds interval = std::chrono::milliseconds(250));
    ~TraceRecorder();
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    // Stops, takes a last sample and assembles the pass's trace and energy.
    TracedPass finish();

  private:
    void startThread(std::chrono::milliseconds interval);
    void stopThread();
    double now() const;

    std::shared_ptr<MachineSensors> sensors_;
    std::chrono::steady_clock::time_point start_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::vector<SensorSample> samples_;
    std::thread thread_;
};

} // namespace quarbel
