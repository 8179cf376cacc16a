// SPDX-License-Identifier: Apache-2.0
#include "sensors/trace_recorder.h"

#include "sensors/temperature.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <system_error>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();
// Two readings closer than this give no power figure: a counter's own resolution would
// dominate it.
constexpr double kShortestPowerSpan = 0.05;

template <typename Read> std::vector<float> column(const std::vector<SensorSample>& samples, Read read) {
    std::vector<float> values;
    values.reserve(samples.size());
    bool any = false;
    for (const SensorSample& sample : samples) {
        const std::optional<double> value = read(sample);
        any = any || value.has_value();
        values.push_back(value ? static_cast<float>(*value) : kMissing);
    }
    if (!any) values.clear();
    return values;
}

// Watts between each sample and the one before, from a cumulative joule count.
std::vector<float> wattsFromJoules(const std::vector<SensorSample>& samples,
                                   std::optional<double> (*joules)(const SensorSample&)) {
    std::vector<float> watts(samples.size(), kMissing);
    bool any = false;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const auto before = joules(samples[i - 1]), after = joules(samples[i]);
        const double span = samples[i].seconds - samples[i - 1].seconds;
        if (!before || !after || span < kShortestPowerSpan) continue;
        watts[i] = static_cast<float>(std::max(*after - *before, 0.0) / span);
        any = true;
    }
    if (!any) watts.clear();
    return watts;
}

std::optional<double> packageJoules(const SensorSample& s) { return s.packageJoules; }
std::optional<double> gpuJoules(const SensorSample& s) { return s.gpu ? s.gpu->totalJoules : std::nullopt; }

float peakOf(const std::vector<float>& values) {
    float peak = 0;
    for (float v : values)
        if (!std::isnan(v)) peak = std::max(peak, v);
    return peak;
}

// The integral of `watts` over the samples' times (trapezoids), none when a sample lacks one.
std::optional<double> integrated(const std::vector<SensorSample>& samples, const std::vector<float>& watts) {
    if (watts.size() != samples.size() || samples.size() < 2) return std::nullopt;
    double joules = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (std::isnan(watts[i]) || std::isnan(watts[i - 1])) return std::nullopt;
        joules += 0.5 * (watts[i] + watts[i - 1]) * (samples[i].seconds - samples[i - 1].seconds);
    }
    return joules;
}

EnergyMeasurement measurement(PowerDomain domain, std::string source, double joules, double seconds,
                              float peak) {
    const double average = seconds > 0 ? joules / seconds : 0;
    return {domain, std::move(source), joules, average, std::max<double>(peak, average)};
}

// Averages `values` (NaN-aware) over `buckets` equal spans of the indices.
std::vector<float> bucketed(const std::vector<float>& values, std::size_t buckets) {
    if (values.size() <= buckets) return values;
    std::vector<float> result(buckets, kMissing);
    for (std::size_t b = 0; b < buckets; ++b) {
        const std::size_t begin = values.size() * b / buckets, end = values.size() * (b + 1) / buckets;
        double sum = 0;
        int count = 0;
        for (std::size_t i = begin; i < end; ++i)
            if (!std::isnan(values[i])) sum += values[i], ++count;
        if (count > 0) result[b] = static_cast<float>(sum / count);
    }
    return result;
}

} // namespace

SensorTrace compactTrace(const SensorTrace& trace) {
    SensorTrace compact = trace;
    const std::size_t points = std::min(trace.seconds.size(), kMostTracePoints);
    for (const TraceColumn& column : kTraceColumns)
        compact.*column.values = keptTraceColumn(bucketed(trace.*column.values, points), column);
    // Flags keep the highest of their span: a throttled moment is not averaged away.
    const auto flags = [points](const auto& values) {
        std::remove_cvref_t<decltype(values)> result;
        if (values.size() <= points) return values;
        for (std::size_t b = 0; b < points; ++b) {
            const std::size_t begin = values.size() * b / points, end = values.size() * (b + 1) / points;
            typename std::remove_cvref_t<decltype(values)>::value_type any = 0;
            for (std::size_t i = begin; i < end; ++i)
                any |= values[i];
            result.push_back(any);
        }
        return result;
    };
    compact.gpuThrottleReasons = flags(trace.gpuThrottleReasons);
    compact.onBattery = flags(trace.onBattery);
    return compact;
}

TracedPass assembleTrace(const std::vector<SensorSample>& samples, const SensorFacts& facts) {
    TracedPass pass;
    SensorTrace& trace = pass.trace;
    if (samples.empty()) return pass;
    for (const SensorSample& s : samples)
        trace.seconds.push_back(static_cast<float>(s.seconds - samples.front().seconds));
    trace.coreMHzMean = column(samples, [](const SensorSample& s) {
        return s.clocks ? std::optional(s.clocks->meanMHz) : std::nullopt;
    });
    trace.coreMHzLow = column(samples, [](const SensorSample& s) {
        return s.clocks ? std::optional(s.clocks->lowMHz) : std::nullopt;
    });
    trace.coreMHzHigh = column(samples, [](const SensorSample& s) {
        return s.clocks ? std::optional(s.clocks->highMHz) : std::nullopt;
    });
    trace.cpuCelsius = column(samples, [](const SensorSample& s) { return s.cpuCelsius; });
    trace.coreCelsius = column(samples, [](const SensorSample& s) { return s.coreCelsius; });
    trace.cpuWatts = wattsFromJoules(samples, packageJoules);
    trace.gpuWatts =
        column(samples, [](const SensorSample& s) { return s.gpu ? s.gpu->watts : std::nullopt; });
    trace.gpuMHz = column(samples, [](const SensorSample& s) { return s.gpu ? s.gpu->mhz : std::nullopt; });
    trace.gpuCelsius =
        column(samples, [](const SensorSample& s) { return s.gpu ? s.gpu->celsius : std::nullopt; });
    // Flags are kept only when one was raised: a clear column says no more than none.
    if (std::any_of(samples.begin(), samples.end(),
                    [](const SensorSample& s) { return s.gpu && s.gpu->throttleReasons.value_or(0) != 0; }))
        for (const SensorSample& s : samples)
            trace.gpuThrottleReasons.push_back(s.gpu ? s.gpu->throttleReasons.value_or(0) : 0);
    if (std::any_of(samples.begin(), samples.end(),
                    [](const SensorSample& s) { return s.battery && s.battery->onBattery; }))
        for (const SensorSample& s : samples)
            trace.onBattery.push_back(s.battery && s.battery->onBattery ? 1 : 0);
    // Other processes' cores: the machine's busy ticks less our own, over all ticks.
    std::vector<float> others(samples.size(), kMissing);
    bool anyOthers = false;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const auto& a = samples[i - 1].ticks;
        const auto& b = samples[i].ticks;
        if (!a || !b || b->total <= a->total) continue;
        const double busy = static_cast<double>(b->busy - a->busy) - static_cast<double>(b->own - a->own);
        others[i] = static_cast<float>(std::max(busy, 0.0) / static_cast<double>(b->total - a->total) *
                                       facts.onlineCpus);
        anyOthers = true;
    }
    if (anyOthers) trace.otherCores = std::move(others);
    if (samples.front().throttleCount && samples.back().throttleCount)
        trace.thermalThrottleEvents = *samples.back().throttleCount -
                                      std::min(*samples.front().throttleCount, *samples.back().throttleCount);
    trace.packageLimitWatts = facts.packageLimitWatts;

    const double seconds = samples.back().seconds - samples.front().seconds;
    ResultEnergy& energy = pass.energy;
    if (facts.packageSource.empty()) {
        energy.missing.push_back({PowerDomain::cpuPackage, facts.packageProblem});
    } else if (samples.front().packageJoules && samples.back().packageJoules && seconds > 0) {
        energy.measured.push_back(measurement(PowerDomain::cpuPackage, facts.packageSource,
                                              *samples.back().packageJoules - *samples.front().packageJoules,
                                              seconds, peakOf(trace.cpuWatts)));
    } else {
        energy.missing.push_back(
            {PowerDomain::cpuPackage, "the RAPL counters could not be read while it ran"});
    }
    if (facts.gpuSource.empty()) {
        energy.missing.push_back({PowerDomain::gpu, facts.gpuProblem});
    } else {
        std::optional<double> joules;
        if (const auto first = gpuJoules(samples.front()), last = gpuJoules(samples.back()); first && last)
            joules = std::max(*last - *first, 0.0);
        else
            joules = integrated(samples, trace.gpuWatts);
        if (joules && seconds > 0)
            energy.measured.push_back(
                measurement(PowerDomain::gpu, facts.gpuSource, *joules, seconds, peakOf(trace.gpuWatts)));
        else
            energy.missing.push_back({PowerDomain::gpu, "the GPU's power could not be read while it ran"});
    }
    if (facts.batterySource.empty()) {
        energy.missing.push_back({PowerDomain::battery, "no battery"});
    } else {
        std::vector<float> batteryWatts = column(samples, [](const SensorSample& s) {
            return s.battery && s.battery->onBattery ? s.battery->watts : std::nullopt;
        });
        const auto joules = integrated(samples, batteryWatts);
        if (joules && seconds > 0)
            energy.measured.push_back(measurement(PowerDomain::battery, facts.batterySource, *joules, seconds,
                                                  peakOf(batteryWatts)));
        else
            energy.missing.push_back({PowerDomain::battery, "on AC power"});
    }
    return pass;
}

MachineSensors::MachineSensors(const ConditionLocations& locations, std::unique_ptr<GpuPowerSource> gpu,
                               bool openGpu)
    : locations_(locations), rapl_(locations), gpu_(std::move(gpu)), battery_(locations), clocks_(locations),
      counters_(locations), runsVirtualized_(runsVirtualized(locations)) {
    if (!gpu_ && openGpu) gpu_ = openNvmlPowerSource();
    if (!gpu_ && openGpu) gpu_ = openAmdgpuPowerSource(locations);
}

SensorFacts MachineSensors::facts() const {
    SensorFacts facts;
    if (rapl_.available()) facts.packageSource = rapl_.source();
    facts.packageProblem = rapl_.problem();
    facts.packageLimitWatts = rapl_.longTermLimitWatts();
    if (gpu_) facts.gpuSource = gpu_->name();
    facts.gpuProblem = runsVirtualized_ ? "a virtual machine exposes no power sensors"
                                        : "no GPU power sensor (NVML or amdgpu)";
    if (battery_.available()) facts.batterySource = battery_.source();
    facts.onlineCpus = static_cast<int>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
    return facts;
}

SensorSample MachineSensors::sample(double seconds) {
    SensorSample sample;
    sample.seconds = seconds;
    sample.packageJoules = rapl_.joulesSinceStart();
    if (gpu_) sample.gpu = gpu_->read();
    sample.battery = battery_.read();
    // The counters give the clocks since the previous sample: the first of a recording starts
    // their span and has none.
    if (counters_.available()) {
        const auto clocks = counters_.read();
        if (seconds > 0) sample.clocks = clocks;
    } else {
        sample.clocks = clocks_.read();
    }
    // The temperature reader knows the real machine only.
    if (locations_.sysRoot == ConditionLocations{}.sysRoot) {
        const QLTemperatureReading reading = QuarbelReadTemperatures();
        if (reading.hasCPU != 0) sample.cpuCelsius = reading.cpu;
        sample.coreCelsius = readHottestCpuCoreTemperature();
    }
    sample.throttleCount = readThermalThrottleCount(locations_);
    sample.ticks = readCpuTickSample(locations_);
    return sample;
}

TraceRecorder::TraceRecorder(std::shared_ptr<MachineSensors> sensors, std::chrono::milliseconds interval)
    : sensors_(std::move(sensors)), start_(std::chrono::steady_clock::now()) {
    samples_.push_back(sensors_->sample(0));
    // Without a thread (a process out of threads) the trace keeps its first and last sample,
    // which still give the energy.
    try {
        startThread(interval);
    } catch (const std::system_error&) {
    }
}

void TraceRecorder::startThread(std::chrono::milliseconds interval) {
    thread_ = std::thread([this, interval] {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, interval, [this] { return stopping_; })) {
            lock.unlock();
            SensorSample sample = sensors_->sample(now());
            lock.lock();
            samples_.push_back(std::move(sample));
        }
    });
}

TraceRecorder::~TraceRecorder() { stopThread(); }

void TraceRecorder::stopThread() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

double TraceRecorder::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

TracedPass TraceRecorder::finish() {
    stopThread();
    samples_.push_back(sensors_->sample(now()));
    TracedPass pass = assembleTrace(samples_, sensors_->facts());
    pass.trace = compactTrace(pass.trace);
    return pass;
}

} // namespace quarbel
