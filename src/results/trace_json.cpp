// SPDX-License-Identifier: Apache-2.0
#include "results/trace_json.h"

#include "sensors/trace_recorder.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

namespace quarbel {
namespace {

using json = nlohmann::json;
using ordered = nlohmann::ordered_json;

struct Malformed {
    std::string text;
};

using Column = std::vector<float> SensorTrace::*;
constexpr std::pair<const char*, Column> kColumns[] = {
    {"seconds", &SensorTrace::seconds},       {"coreMHzMean", &SensorTrace::coreMHzMean},
    {"coreMHzLow", &SensorTrace::coreMHzLow}, {"coreMHzHigh", &SensorTrace::coreMHzHigh},
    {"cpuCelsius", &SensorTrace::cpuCelsius}, {"coreCelsius", &SensorTrace::coreCelsius},
    {"cpuWatts", &SensorTrace::cpuWatts},     {"gpuWatts", &SensorTrace::gpuWatts},
    {"gpuMHz", &SensorTrace::gpuMHz},         {"gpuCelsius", &SensorTrace::gpuCelsius},
    {"otherCores", &SensorTrace::otherCores},
};

constexpr char kHex[] = "0123456789abcdef";

// The shortest decimal that reads back as `value`: 45.2, not the double 45.200000762939453.
double shortest(float value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::strtod(std::string(text, end).c_str(), nullptr);
}

ordered columnJson(const std::vector<float>& values) {
    float low = std::numeric_limits<float>::max(), high = std::numeric_limits<float>::lowest();
    for (float v : values)
        if (!std::isnan(v)) low = std::min(low, v), high = std::max(high, v);
    if (low > high) low = high = 0;
    std::string steps;
    for (float v : values) {
        const std::uint8_t step = quantize(v, low, high);
        steps += kHex[step >> 4];
        steps += kHex[step & 15];
    }
    return {{"low", shortest(low)}, {"high", shortest(high)}, {"steps", steps}};
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::vector<float> readColumn(const json& value, const std::string& name) {
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
        values.push_back(dequantize(static_cast<std::uint8_t>(a * 16 + b), lowValue, highValue));
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

ordered traceJson(const SensorTrace& trace) {
    ordered columns = ordered::object();
    for (const auto& [name, member] : kColumns)
        if (!(trace.*member).empty()) columns[name] = columnJson(trace.*member);
    ordered result = {{"points", trace.seconds.size()}, {"columns", columns}};
    if (!trace.gpuThrottleReasons.empty()) result["gpuThrottleReasons"] = trace.gpuThrottleReasons;
    if (!trace.onBattery.empty()) result["onBattery"] = trace.onBattery;
    result["thermalThrottleEvents"] = trace.thermalThrottleEvents;
    if (trace.packageLimitWatts) result["packageLimitWatts"] = *trace.packageLimitWatts;
    if (trace.criticalCelsius) result["criticalCelsius"] = *trace.criticalCelsius;
    return result;
}

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
        if (!value.is_object()) throw Malformed{"trace is not an object"};
        trace = {};
        const auto columns = value.find("columns");
        if (columns == value.end() || !columns->is_object()) throw Malformed{"trace has no columns"};
        for (const auto& [name, member] : kColumns)
            if (const auto found = columns->find(name); found != columns->end())
                trace.*member = readColumn(*found, name);
        const std::size_t points = trace.seconds.size();
        for (const auto& [name, member] : kColumns)
            if (!(trace.*member).empty() && (trace.*member).size() != points)
                throw Malformed{std::string("trace.columns.") + name + " is not as long as seconds"};
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
