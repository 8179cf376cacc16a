// SPDX-License-Identifier: Apache-2.0
#include "results/trace_json.h"

#include "results/json_reading.h"
#include "sensors/trace_packing.h"

#include <cmath>
#include <limits>
#include <utility>

namespace quarbel {
namespace {

using json_reading::json;
using json_reading::Malformed;
using json_reading::ordered;

// Reports written before the packed form kept each column as its lowest and highest value and
// one hexadecimal byte per point: a step of 254 between them, ff for a missing sample.
constexpr int kLegacySteps = 254;

float legacyValue(std::uint8_t step, float low, float high) noexcept {
    if (step == 255) return std::numeric_limits<float>::quiet_NaN();
    if (step == 0) return low;
    if (step == kLegacySteps) return high;
    return low + (high - low) * static_cast<float>(step) / static_cast<float>(kLegacySteps);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::vector<float> readLegacyColumn(const json& value, const std::string& name) {
    if (!value.is_object()) throw Malformed{"trace.columns." + name + " is not an object"};
    const auto low = value.find("low"), high = value.find("high"), steps = value.find("steps");
    if (low == value.end() || !low->is_number() || high == value.end() || !high->is_number() ||
        steps == value.end() || !steps->is_string())
        throw Malformed{"trace.columns." + name + " needs low, high and steps"};
    const auto& text = steps->get_ref<const std::string&>();
    if (text.size() % 2 != 0) throw Malformed{"trace.columns." + name + ".steps is not whole bytes"};
    const auto lowValue = low->get<float>(), highValue = high->get<float>();
    if (!std::isfinite(lowValue) || !std::isfinite(highValue))
        throw Malformed{"trace.columns." + name + " has an endless range"};
    std::vector<float> values;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int a = hexDigit(text[i]), b = hexDigit(text[i + 1]);
        if (a < 0 || b < 0) throw Malformed{"trace.columns." + name + ".steps is not hexadecimal"};
        values.push_back(legacyValue(static_cast<std::uint8_t>(a * 16 + b), lowValue, highValue));
    }
    return values;
}

std::optional<double> optionalNumber(const json& object, const char* key, const char* where) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    if (!found->is_number()) throw Malformed{std::string(where) + "." + key + " is not a number"};
    const double value = found->get<double>();
    if (!std::isfinite(value)) throw Malformed{std::string(where) + "." + key + " is not finite"};
    return value;
}

} // namespace

ordered traceJson(const SensorTrace& trace) { return packTrace(trace); }

ordered energyJson(const ResultEnergy& energy, double score) {
    ordered measured = ordered::array(), missing = ordered::array();
    for (const EnergyMeasurement& m : energy.measured) {
        const auto efficiency = pointsPerJoule(score, m);
        measured.push_back({{"domain", std::string(rawValue(m.domain))},
                            {"source", m.source},
                            {"joules", m.joules},
                            {"averageWatts", m.averageWatts},
                            {"peakWatts", m.peakWatts},
                            {"pointsPerJoule", efficiency ? ordered(*efficiency) : ordered(nullptr)}});
    }
    for (const EnergyAbsence& a : energy.missing)
        missing.push_back({{"domain", std::string(rawValue(a.domain))}, {"reason", a.reason}});
    return {{"measured", measured}, {"missing", missing}};
}

std::optional<std::string> readTrace(const json& value, SensorTrace& trace) {
    try {
        trace = {};
        if (value.is_string()) return unpackTrace(value.get_ref<const std::string&>(), trace);
        if (!value.is_object()) throw Malformed{"trace is neither an object nor packed base64 text"};
        const auto columns = value.find("columns");
        if (columns == value.end() || !columns->is_object()) throw Malformed{"trace has no columns"};
        for (const TraceColumn& column : kTraceColumns)
            if (const auto found = columns->find(column.name); found != columns->end())
                trace.*column.values = readLegacyColumn(*found, column.name);
        const std::size_t points = trace.seconds.size();
        for (const TraceColumn& column : kTraceColumns)
            if (!(trace.*column.values).empty() && (trace.*column.values).size() != points)
                throw Malformed{std::string("trace.columns.") + column.name + " is not as long as seconds"};
        const auto flags = [&](const char* key, auto& into) {
            const auto found = value.find(key);
            if (found == value.end()) return;
            if (!found->is_array() || found->size() != points)
                throw Malformed{std::string("trace.") + key + " is not a list as long as seconds"};
            for (const auto& item : *found) {
                if (!item.is_number_unsigned() || item.get<std::uint64_t>() > 0xffffffffu)
                    throw Malformed{std::string("trace.") + key + " holds something other than flags"};
                into.push_back(static_cast<typename std::remove_reference_t<decltype(into)>::value_type>(
                    item.get<std::uint64_t>()));
            }
        };
        flags("gpuThrottleReasons", trace.gpuThrottleReasons);
        flags("onBattery", trace.onBattery);
        const auto events = optionalNumber(value, "thermalThrottleEvents", "trace").value_or(0);
        if (events < 0 || events > 1e15) throw Malformed{"trace.thermalThrottleEvents is out of range"};
        trace.thermalThrottleEvents = static_cast<std::uint64_t>(events);
        trace.packageLimitWatts = optionalNumber(value, "packageLimitWatts", "trace");
        trace.criticalCelsius = optionalNumber(value, "criticalCelsius", "trace");
    } catch (const Malformed& problem) {
        trace = {};
        return problem.text;
    }
    return std::nullopt;
}

std::optional<std::string> readEnergy(const json& value, ResultEnergy& energy) {
    try {
        if (!value.is_object()) throw Malformed{"energy is not an object"};
        energy = {};
        const auto list = [&](const char* key) -> const json& {
            const auto found = value.find(key);
            if (found == value.end() || !found->is_array())
                throw Malformed{std::string("energy.") + key + " is not a list"};
            return *found;
        };
        const auto domain = [](const json& item, const char* where) {
            const auto found = item.find("domain");
            const auto parsed = found != item.end() && found->is_string()
                                    ? powerDomainFromRawValue(found->get_ref<const std::string&>())
                                    : std::nullopt;
            if (!parsed) throw Malformed{std::string(where) + " has no known domain"};
            return *parsed;
        };
        for (const json& item : list("measured")) {
            if (!item.is_object()) throw Malformed{"energy.measured holds something other than objects"};
            EnergyMeasurement m;
            m.domain = domain(item, "energy.measured");
            if (const auto source = item.find("source"); source != item.end() && source->is_string())
                m.source = source->get<std::string>();
            const auto joules = optionalNumber(item, "joules", "energy.measured");
            const auto average = optionalNumber(item, "averageWatts", "energy.measured");
            const auto peak = optionalNumber(item, "peakWatts", "energy.measured");
            if (!joules || !average || !peak || *joules < 0 || *average < 0 || *peak < 0)
                throw Malformed{"energy.measured needs joules, averageWatts and peakWatts of zero or more"};
            m.joules = *joules;
            m.averageWatts = *average;
            m.peakWatts = *peak;
            energy.measured.push_back(std::move(m));
        }
        for (const json& item : list("missing")) {
            if (!item.is_object()) throw Malformed{"energy.missing holds something other than objects"};
            EnergyAbsence a;
            a.domain = domain(item, "energy.missing");
            if (const auto reason = item.find("reason"); reason != item.end() && reason->is_string())
                a.reason = reason->get<std::string>();
            energy.missing.push_back(std::move(a));
        }
    } catch (const Malformed& problem) {
        energy = {};
        return problem.text;
    }
    return std::nullopt;
}

} // namespace quarbel
