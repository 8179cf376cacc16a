// SPDX-License-Identifier: Apache-2.0
#include "results/result_statistics.h"

#include "model/number_format.h"
#include "results/json_reading.h"
#include "results/trace_json.h"

#include <cmath>
#include <limits>

namespace quarbel {
namespace {

using json_reading::json;
using json_reading::Malformed;
using json_reading::ordered;

ordered optionalNumber(const std::optional<double>& value) {
    return value ? ordered(*value) : ordered(nullptr);
}

// JSON has no infinity: infinite degrees of freedom (a normal distribution) are written null.
ordered degreesJson(double df) { return std::isfinite(df) ? ordered(df) : ordered(nullptr); }

std::optional<double> number(const json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    if (!found->is_number()) throw Malformed{std::string(key) + " is not a number"};
    return found->get<double>();
}

template <typename T> std::vector<T> numbers(const json& object, const char* key) {
    std::vector<T> values;
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return values;
    if (!found->is_array()) throw Malformed{std::string(key) + " is not a list of numbers"};
    for (const auto& item : *found) {
        if (!item.is_number()) throw Malformed{std::string(key) + " is not a list of numbers"};
        values.push_back(item.get<T>());
    }
    return values;
}

} // namespace

std::string uncertaintyText(const std::optional<RateUncertainty>& uncertainty) {
    if (!uncertainty) return {};
    return "\u00b1 " + format(uncertainty->ci95Percent(), 1) + " %";
}

void writeStatistics(ordered& result, const ResultStatistics& s) {
    result["passes"] = s.passes;
    result["ci95Percent"] = s.uncertainty ? ordered(s.uncertainty->ci95Percent()) : ordered(nullptr);
    result["uncertainty"] =
        s.uncertainty
            ? ordered{{"relativeStandardError", s.uncertainty->relativeStandardError},
                      {"degreesOfFreedom", degreesJson(s.uncertainty->degreesOfFreedom)},
                      {"samples", s.uncertainty->samples},
                      {"from", s.passScores.empty() ? "slices" : "passes"},
                      {"withinRunRelativeStandardError",
                       s.withinRun ? ordered(s.withinRun->relativeStandardError) : ordered(nullptr)},
                      {"withinRunDegreesOfFreedom",
                       s.withinRun ? degreesJson(s.withinRun->degreesOfFreedom) : ordered(nullptr)}}
            : ordered(nullptr);
    ordered rates = ordered::array(), seconds = ordered::array(), phases = ordered::array();
    bool phased = false;
    for (const auto& slice : s.slices) {
        rates.push_back(slice.slice.rate());
        seconds.push_back(slice.slice.seconds);
        phases.push_back(slice.phase);
        phased = phased || slice.phase != 0;
    }
    result["sliceCount"] = s.slices.size();
    result["sliceRates"] = rates;
    result["sliceSeconds"] = seconds;
    if (phased) result["slicePhases"] = phases;
    if (!s.passScores.empty()) result["passScores"] = s.passScores;
    result["interference"] = s.interference
                                 ? ordered{{"stealPercent", s.interference->stealPercent},
                                           {"otherCpuPercent", s.interference->otherCpuPercent},
                                           {"frequencyDropPercent", optionalNumber(s.frequencyDropPercent)}}
                                 : ordered(nullptr);
    result["noisy"] = s.noisy;
    result["noiseFloor"] = s.noiseFloor
                               ? ordered{{"percent", s.noiseFloor->percent}, {"fromRuns", s.noiseFloor->runs}}
                               : ordered(nullptr);
    if (s.startCelsius) result["startCelsius"] = *s.startCelsius;
    if (!s.traceSummary.empty()) result["traceSummary"] = s.traceSummary;
    if (!s.trace.empty()) result["trace"] = traceJson(s.trace);
}

std::optional<std::string> readStatistics(const json& result, ResultStatistics& s) {
    try {
        if (const auto passes = number(result, "passes")) s.passes = std::max(1, static_cast<int>(*passes));
        if (const auto found = result.find("uncertainty"); found != result.end() && !found->is_null()) {
            if (!found->is_object()) throw Malformed{"uncertainty is not an object"};
            const auto se = number(*found, "relativeStandardError");
            if (!se || *se < 0) throw Malformed{"uncertainty has no relativeStandardError"};
            const auto df = number(*found, "degreesOfFreedom");
            if (df && !(*df > 0)) throw Malformed{"uncertainty.degreesOfFreedom is not positive"};
            const int samples = static_cast<int>(number(*found, "samples").value_or(0));
            s.uncertainty =
                RateUncertainty{samples, *se, df.value_or(std::numeric_limits<double>::infinity())};
            if (const auto within = number(*found, "withinRunRelativeStandardError"))
                s.withinRun = RateUncertainty{samples, *within,
                                              number(*found, "withinRunDegreesOfFreedom")
                                                  .value_or(std::numeric_limits<double>::infinity())};
        }
        const auto rates = numbers<double>(result, "sliceRates");
        const auto seconds = numbers<double>(result, "sliceSeconds");
        const auto phases = numbers<int>(result, "slicePhases");
        if (seconds.size() != rates.size() || (!phases.empty() && phases.size() != rates.size()))
            throw Malformed{"sliceRates, sliceSeconds and slicePhases differ in length"};
        s.slices.clear();
        for (std::size_t i = 0; i < rates.size(); ++i)
            s.slices.push_back({phases.empty() ? 0 : phases[i], {seconds[i], rates[i] * seconds[i]}});
        s.passScores = numbers<double>(result, "passScores");
        if (const auto found = result.find("interference"); found != result.end() && !found->is_null()) {
            if (!found->is_object()) throw Malformed{"interference is not an object"};
            s.interference = Interference{number(*found, "stealPercent").value_or(0),
                                          number(*found, "otherCpuPercent").value_or(0)};
            s.frequencyDropPercent = number(*found, "frequencyDropPercent");
        }
        if (const auto floor = result.find("noiseFloor"); floor != result.end() && !floor->is_null()) {
            if (!floor->is_object()) throw Malformed{"noiseFloor is not an object"};
            const auto percent = number(*floor, "percent");
            const auto runs = number(*floor, "fromRuns");
            if (!percent || *percent < 0 || !runs || *runs < 0 || *runs > 1e9)
                throw Malformed{"noiseFloor needs a percent and a number of runs of zero or more"};
            s.noiseFloor = NoiseFloor{*percent, static_cast<int>(*runs)};
        }
        if (const auto noisy = result.find("noisy"); noisy != result.end() && !noisy->is_null()) {
            if (!noisy->is_boolean()) throw Malformed{"noisy is not true or false"};
            s.noisy = noisy->get<bool>();
        }
        s.startCelsius = number(result, "startCelsius");
        if (const auto found = result.find("traceSummary"); found != result.end() && !found->is_null()) {
            if (!found->is_string()) throw Malformed{"traceSummary is not text"};
            s.traceSummary = found->get<std::string>();
        }
        if (const auto found = result.find("trace"); found != result.end() && !found->is_null())
            if (auto problem = readTrace(*found, s.trace)) throw Malformed{std::move(*problem)};
        if (const auto found = result.find("energy"); found != result.end() && !found->is_null())
            if (auto problem = readEnergy(*found, s.energy)) throw Malformed{std::move(*problem)};
    } catch (const Malformed& problem) {
        return problem.text;
    } catch (const json::exception& error) {
        return std::string(error.what());
    }
    return std::nullopt;
}

} // namespace quarbel
