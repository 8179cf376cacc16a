// SPDX-License-Identifier: Apache-2.0
#include "model/sensor_trace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace quarbel {
namespace {

constexpr std::array<std::pair<PowerDomain, std::string_view>, 3> kDomainNames{{
    {PowerDomain::cpuPackage, "cpuPackage"},
    {PowerDomain::gpu, "gpu"},
    {PowerDomain::battery, "battery"},
}};

// The smallest step kept: far below any sensor's resolution, and a normal float.
constexpr int kFinestStepExponent = -120;

} // namespace

int traceStepExponent(const std::vector<float>& values, const TraceColumn& column) noexcept {
    float largest = column.magnitudeFloor;
    for (float v : values)
        if (std::isfinite(v)) largest = std::max(largest, std::abs(v));
    if (!(largest > 0)) return 0;
    // e with 2^e < largest <= 2^(e+1): a column rounded to its step may fall to 2^e and so
    // take a finer step, on which its values already lie, but never rises to a coarser one.
    int exponent = 0;
    const float fraction = std::frexp(largest, &exponent); // largest = fraction * 2^exponent
    const int e = fraction == 0.5f ? exponent - 2 : exponent - 1;
    return std::max(e - column.bits, kFinestStepExponent);
}

std::vector<float> keptTraceColumn(std::vector<float> values, const TraceColumn& column) {
    const int exponent = traceStepExponent(values, column);
    for (float& v : values)
        v = std::isfinite(v) ? std::ldexp(std::round(std::ldexp(v, -exponent)), exponent)
                             : std::numeric_limits<float>::quiet_NaN();
    return values;
}

std::string_view rawValue(PowerDomain domain) {
    for (const auto& [value, name] : kDomainNames)
        if (value == domain) return name;
    return "cpuPackage";
}

std::optional<PowerDomain> powerDomainFromRawValue(std::string_view raw) {
    for (const auto& [value, name] : kDomainNames)
        if (name == raw) return value;
    return std::nullopt;
}

std::string_view powerDomainLabel(PowerDomain domain) {
    switch (domain) {
    case PowerDomain::cpuPackage: return "CPU package";
    case PowerDomain::gpu: return "GPU";
    case PowerDomain::battery: return "Machine (battery)";
    }
    return "CPU package";
}

const EnergyMeasurement* ResultEnergy::find(PowerDomain domain) const noexcept {
    for (const EnergyMeasurement& m : measured)
        if (m.domain == domain) return &m;
    return nullptr;
}

const EnergyMeasurement* efficiencyMeasurement(const ResultEnergy& energy, bool gpuBenchmark) noexcept {
    if (gpuBenchmark)
        if (const auto* gpu = energy.find(PowerDomain::gpu)) return gpu;
    if (const auto* package = energy.find(PowerDomain::cpuPackage)) return package;
    return energy.find(PowerDomain::battery);
}

std::optional<double> pointsPerJoule(double score, const EnergyMeasurement& measurement) noexcept {
    if (!(measurement.averageWatts > 0)) return std::nullopt;
    return score / measurement.averageWatts;
}

} // namespace quarbel
