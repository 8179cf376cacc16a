// SPDX-License-Identifier: Apache-2.0
#include "results/json_report.h"

#include "results/gpu_execution_json.h"
#include "results/manifest_json.h"
#include "results/trace_json.h"
#include "sensors/system_snapshot.h"

#include <nlohmann/json.hpp>

namespace quarbel {
namespace {

using json = nlohmann::ordered_json;

json lineJson(const MeasurementLine& line) {
    return {{"label", line.label}, {"value", line.value}, {"unit", line.unit}};
}

json optionalNumber(const std::optional<double>& value) { return value ? json(*value) : json(nullptr); }

json temperatureJson(const TemperatureSnapshot& t) {
    return {{"cpu", optionalNumber(t.cpuCelsius)},
            {"gpu", optionalNumber(t.gpuCelsius)},
            {"readAt", t.updatedAt ? json(isoTimestamp(*t.updatedAt)) : json(nullptr)}};
}

json summaryJson(const RunSummary& s) {
    return {{"title", s.title},
            {"completed", s.completed},
            {"skipped", s.skipped},
            {"failed", s.failed},
            {"total", s.total},
            {"score", s.score},
            {"scoreText", scoreText(s.score)},
            {"duration", s.duration},
            {"peakCPU", optionalNumber(s.peakCPU)},
            {"peakGPU", optionalNumber(s.peakGPU)},
            {"finishedAt", isoTimestamp(s.finishedAt)}};
}

json conditionJson(const RunReport& report) {
    json condition = {{"governors", json::array()},
                      {"onBattery", nullptr},
                      {"loadAverage", nullptr},
                      {"busyProcesses", json::array()}};
    if (report.condition) {
        const MachineCondition& c = *report.condition;
        condition["governors"] = c.governors;
        condition["onBattery"] = c.onBattery ? json(*c.onBattery) : json(nullptr);
        condition["loadAverage"] = optionalNumber(c.loadAverage);
        for (const auto& process : c.busyProcesses)
            condition["busyProcesses"].push_back(
                {{"pid", process.pid}, {"name", process.name}, {"cores", process.cores}});
    }
    condition["throttleSigns"] = report.throttleSigns;
    condition["badges"] = report.badges;
    return condition;
}

// Everything that tells machines apart in one object, for tools that gather reports.
json machineJson(const MachineIdentity& machine,
                 const std::vector<std::pair<std::string, std::string>>& system) {
    const auto row = [&](const char* label) {
        for (const auto& [name, value] : system)
            if (name == label) return value;
        return std::string();
    };
    return {{"hostName", machine.hostName},
            {"machineId", machine.machineId},
            {"cpu", row("CPU")},
            {"gpu", row(kGpuRowLabel)},
            {"kernel", machine.kernel},
            {"storageDevice", machine.storageDevice}};
}

} // namespace

std::string jsonReportText(const RunReport& report) {
    json system = json::array();
    for (const auto& [label, value] : report.system)
        system.push_back({{"label", label}, {"value", value}});
    json results = json::array();
    for (const auto& entry : report.results) {
        const BenchmarkOutcome& o = entry.outcome;
        results.push_back({{"id", std::string(rawValue(entry.id))},
                           {"title", std::string(title(entry.id))},
                           {"category", std::string(categoryTitle(category(entry.id)))},
                           {"status", std::string(rawValue(o.status))},
                           {"score", o.score},
                           {"scoreText", entry.scoreText},
                           {"primary", lineJson(o.primary)},
                           {"secondary", o.secondary ? lineJson(*o.secondary) : json(nullptr)},
                           {"duration", o.duration},
                           {"detail", o.detail},
                           {"accuracyMode", entry.accuracyMode},
                           {"temperatureAtEnd", temperatureJson(entry.temperatureAtEnd)},
                           {"stabilityPercent", optionalNumber(entry.stabilityPercent)},
                           {"spreadPercent", optionalNumber(entry.spreadPercent)}});
        writeStatistics(results.back(), entry.statistics);
        if (!entry.statistics.energy.empty())
            results.back()["energy"] = energyJson(entry.statistics.energy, o.score);
        if (o.gpu) results.back()["gpu"] = gpuExecutionJson(*o.gpu);
    }
    const json document = {
        {"schema", 1},
        {"app", {{"name", report.appName}, {"version", report.appVersion}}},
        {"mode", report.accuracyMode ? "accuracy" : "standard"},
        {"quick", report.quick},
        {"startedAt", isoTimestamp(report.startedAt)},
        {"finishedAt", isoTimestamp(report.finishedAt)},
        {"system", system},
        {"results", results},
        {"summary", report.summary ? summaryJson(*report.summary) : json(nullptr)},
        {"globalScore", report.globalScore},
        {"condition", conditionJson(report)},
        {"machine", report.machine ? machineJson(*report.machine, report.system) : json(nullptr)},
        {"manifest", manifestJson(report.manifest)},
        {"log", report.log},
    };
    // Replace rather than throw on text that is not valid UTF-8 (a device name, say).
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace quarbel
