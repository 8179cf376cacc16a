// SPDX-License-Identifier: Apache-2.0
#include "model/sensor_trace.h"

#include <array>
#include <utility>

namespace quarbel {
namespace {

constexpr std::array<std::pair<PowerDomain, std::string_view>, 3> kDomainNames{{
    {PowerDomain::cpuPackage, "cpuPackage"},
    {PowerDomain::gpu, "gpu"},
    {PowerDomain::battery, "battery"},
}};

} // namespace

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
