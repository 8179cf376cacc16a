// SPDX-License-Identifier: Apache-2.0
// The temperatures the window shows and the run summary reports: read on a timer (less often
// while idle), each read on a background thread so that a slow sensor never holds up the
// window, and never two at once. While a benchmark runs the peaks follow the readings.
#pragma once

#include "sensors/machine_condition.h"
#include "sensors/temperature.h"

#include <QTimer>

#include <functional>
#include <optional>
#include <string>

namespace quarbel {

class BackgroundTasks;

class ThermalMonitor {
  public:
    struct Reading {
        TemperatureSnapshot snapshot;
        std::optional<ThrottleSample> throttle; // when a throttle reader was given
    };
    struct Hooks {
        std::function<void()> tick;               // each period; the owner reads from there
        std::function<void(const Reading&)> read; // each reading, once applied
        std::function<void(const std::string&)>
            cannotRead; // the line to log when a read first fails to start
    };

    // `readTemperatures` runs on a thread of `background`; the hooks on the main thread.
    ThermalMonitor(BackgroundTasks& background, std::function<QLTemperatureReading()> readTemperatures,
                   Hooks hooks);

    // Reads every `seconds` from now on; an unchanged interval keeps the timer's phase.
    void setInterval(double seconds);
    double interval() const { return interval_; }
    // Starts a reading, with `readThrottle`'s sample when given, unless one is in flight.
    void read(std::function<ThrottleSample()> readThrottle);
    // Takes a reading as the latest, raising the peaks while they follow the readings.
    void apply(const TemperatureSnapshot& snapshot);

    // A run starts: its peaks start from the latest reading.
    void beginRun();
    // Whether the peaks follow the readings: only while a benchmark runs.
    void setPeaksRising(bool on) { peaksRising_ = on; }

    const TemperatureSnapshot& snapshot() const { return snapshot_; }
    std::optional<double> peakCPU() const { return peakCPU_; }
    std::optional<double> peakGPU() const { return peakGPU_; }

  private:
    BackgroundTasks& background_;
    std::function<QLTemperatureReading()> readTemperatures_;
    Hooks hooks_;
    QTimer timer_;
    double interval_ = 0;
    bool inFlight_ = false;
    bool failureSaid_ = false; // said once; later failed starts stay quiet
    bool peaksRising_ = false;
    TemperatureSnapshot snapshot_ = TemperatureSnapshot::unavailable;
    std::optional<double> peakCPU_;
    std::optional<double> peakGPU_;
};

} // namespace quarbel
