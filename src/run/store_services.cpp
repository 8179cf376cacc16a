// SPDX-License-Identifier: Apache-2.0
#include "run/store_services.h"

#include "run/workload_dispatch.h"

namespace quarbel {

// Each service not given is the standard one.
StoreServices completedServices(StoreServices services) {
    const StoreServices standard = StoreServices::standard();
    if (!services.runWorkload) services.runWorkload = standard.runWorkload;
    if (!services.readTemperatures) services.readTemperatures = standard.readTemperatures;
    if (!services.now) services.now = standard.now;
    if (!services.readCondition) services.readCondition = standard.readCondition;
    if (!services.readThrottle) services.readThrottle = standard.readThrottle;
    if (!services.readCpuTicks) services.readCpuTicks = standard.readCpuTicks;
    if (!services.startTrace) services.startTrace = standard.startTrace;
    if (services.runLockDirectory.empty()) services.runLockDirectory = standard.runLockDirectory;
    return services;
}

StoreServices StoreServices::standard() {
    return {[](BenchmarkID id, const WorkloadContext& context) { return quarbel::runWorkload(id, context); },
            [] { return QuarbelReadTemperatures(); },
            [] { return QDateTime::currentDateTime(); },
            [] { return sampleMachineCondition(); },
            [] { return readThrottleSample(); },
            [] { return readCpuTickSample(); },
            RunLock::defaultDirectory(),
            [] {
                // Opened once: finding NVML and the sensors' files is slower than a sample.
                static const auto sensors = std::make_shared<MachineSensors>();
                return std::make_unique<TraceRecorder>(sensors);
            }};
}

} // namespace quarbel
