// SPDX-License-Identifier: Apache-2.0
#include "run/thermal_monitor.h"

#include "run/background_tasks.h"

#include <cmath>
#include <sys/resource.h>
#include <unistd.h>

namespace quarbel {

ThermalMonitor::ThermalMonitor(BackgroundTasks& background,
                               std::function<QLTemperatureReading()> readTemperatures, Hooks hooks)
    : background_(background), readTemperatures_(std::move(readTemperatures)), hooks_(std::move(hooks)) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
        if (hooks_.tick) hooks_.tick();
    });
}

void ThermalMonitor::setInterval(double seconds) {
    if (timer_.isActive() && std::abs(interval_ - seconds) < 0.001) return;
    interval_ = seconds;
    timer_.start(static_cast<int>(std::lround(seconds * 1000.0)));
}

void ThermalMonitor::read(std::function<ThrottleSample()> readThrottle) {
    if (inFlight_) return;
    inFlight_ = true;
    const auto problem = background_.start(
        [read = readTemperatures_, readThrottle = std::move(readThrottle)] {
            // A low priority keeps a slow sensor read from competing with the workload.
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
            auto snapshot = makeTemperatureSnapshot(read(), std::chrono::system_clock::now());
            return Reading{snapshot, readThrottle ? std::optional(readThrottle()) : std::nullopt};
        },
        [this](const Reading& reading) {
            apply(reading.snapshot);
            if (hooks_.read) hooks_.read(reading);
            inFlight_ = false;
        });
    if (!problem) return;
    // This reading is skipped; the next tick tries again, without repeating the message.
    inFlight_ = false;
    if (failureSaid_) return;
    failureSaid_ = true;
    if (hooks_.cannotRead)
        hooks_.cannotRead("Temperatures not read: Quarbel could not start a thread for them (" + *problem +
                          ")");
}

void ThermalMonitor::apply(const TemperatureSnapshot& snapshot) {
    snapshot_ = snapshot;
    if (!peaksRising_) return;
    // A reading equal to the peak replaces it; a peak never falls during a run.
    if (snapshot.cpuCelsius)
        peakCPU_ = peakCPU_ ? std::max(*peakCPU_, *snapshot.cpuCelsius) : *snapshot.cpuCelsius;
    if (snapshot.gpuCelsius)
        peakGPU_ = peakGPU_ ? std::max(*peakGPU_, *snapshot.gpuCelsius) : *snapshot.gpuCelsius;
}

void ThermalMonitor::beginRun() {
    peakCPU_ = snapshot_.cpuCelsius;
    peakGPU_ = snapshot_.gpuCelsius;
}

} // namespace quarbel
