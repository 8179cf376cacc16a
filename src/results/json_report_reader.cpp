// SPDX-License-Identifier: Apache-2.0
#include "results/json_report.h"
#include "results/regular_file.h"

#include "results/gpu_execution_json.h"
#include "results/manifest_json.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace quarbel {
namespace {

using json = nlohmann::json;

// The first thing that makes the text not a report, with where it was found.
struct NotAReport {
    std::string text;
};

const json& member(const json& object, const char* key, const std::string& where) {
    const auto found = object.find(key);
    if (found == object.end()) throw NotAReport{where + key + " is missing"};
    return *found;
}

std::string text(const json& object, const char* key, const std::string& where) {
    const json& value = member(object, key, where);
    if (!value.is_string()) throw NotAReport{where + key + " is not a text"};
    return value.get<std::string>();
}

double number(const json& object, const char* key, const std::string& where) {
    const json& value = member(object, key, where);
    if (!value.is_number()) throw NotAReport{where + key + " is not a number"};
    return value.get<double>();
}

int integer(const json& object, const char* key, const std::string& where) {
    const json& value = member(object, key, where);
    if (!value.is_number_integer()) throw NotAReport{where + key + " is not a whole number"};
    return value.get<int>();
}

bool flag(const json& object, const char* key, const std::string& where) {
    const json& value = member(object, key, where);
    if (!value.is_boolean()) throw NotAReport{where + key + " is not true or false"};
    return value.get<bool>();
}

// Absent and null both mean "no value": older reports lack some of these fields.
std::optional<double> optionalNumber(const json& object, const char* key, const std::string& where) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    if (!found->is_number()) throw NotAReport{where + key + " is not a number"};
    return found->get<double>();
}

const json& array(const json& object, const char* key, const std::string& where) {
    const json& value = member(object, key, where);
    if (!value.is_array()) throw NotAReport{where + key + " is not a list"};
    return value;
}

// "2026-11-22T21:04:05Z", as isoTimestamp writes it.
SystemTimePoint timestamp(const std::string& value, const std::string& where) {
    std::tm utc{};
    const char* end = strptime(value.c_str(), "%Y-%m-%dT%H:%M:%SZ", &utc);
    if (end == nullptr || *end != '\0')
        throw NotAReport{where + " is not a time such as 2026-11-22T21:04:05Z"};
    return std::chrono::system_clock::from_time_t(timegm(&utc));
}

MeasurementLine line(const json& value, const std::string& where) {
    if (!value.is_object()) throw NotAReport{where + " is not an object"};
    return {text(value, "label", where + "."), text(value, "value", where + "."),
            text(value, "unit", where + ".")};
}

TemperatureSnapshot temperatureAtEnd(const json& result, const std::string& where) {
    const auto found = result.find("temperatureAtEnd");
    if (found == result.end() || found->is_null()) return TemperatureSnapshot::unavailable;
    const std::string inside = where + "temperatureAtEnd.";
    if (!found->is_object()) throw NotAReport{where + "temperatureAtEnd is not an object"};
    TemperatureSnapshot snapshot{optionalNumber(*found, "cpu", inside), optionalNumber(*found, "gpu", inside),
                                 std::nullopt};
    if (const auto readAt = found->find("readAt"); readAt != found->end() && !readAt->is_null()) {
        if (!readAt->is_string()) throw NotAReport{inside + "readAt is not a text"};
        snapshot.updatedAt = timestamp(readAt->get<std::string>(), inside + "readAt");
    }
    return snapshot;
}

ReportEntry entry(const json& result, const std::string& where, bool accuracyRun) {
    if (!result.is_object()) throw NotAReport{where + " is not an object"};
    const std::string inside = where + ".";
    const std::string id = text(result, "id", inside);
    const auto benchmark = benchmarkFromRawValue(id);
    if (!benchmark) throw NotAReport{inside + "id '" + id + "' is not a benchmark (see 'quarbel list')"};
    const std::string status = text(result, "status", inside);
    const auto outcomeStatus = outcomeStatusFromRawValue(status);
    if (!outcomeStatus) throw NotAReport{inside + "status '" + status + "' is not ok, skipped or failed"};

    BenchmarkOutcome o;
    o.status = *outcomeStatus;
    o.score = number(result, "score", inside);
    o.primary = line(member(result, "primary", inside), inside + "primary");
    if (const json& secondary = member(result, "secondary", inside); !secondary.is_null())
        o.secondary = line(secondary, inside + "secondary");
    o.duration = number(result, "duration", inside);
    o.detail = text(result, "detail", inside);
    if (const auto gpu = result.find("gpu"); gpu != result.end() && !gpu->is_null()) {
        GpuExecution execution;
        if (const auto problem = readGpuExecution(*gpu, execution)) throw NotAReport{inside + *problem};
        o.gpu = execution;
    }
    // The score and duration texts are made again, in the one place that makes them.
    ReportEntry e = makeReportEntry(*benchmark, std::move(o));
    e.accuracyMode = result.contains("accuracyMode") ? flag(result, "accuracyMode", inside) : accuracyRun;
    e.temperatureAtEnd = temperatureAtEnd(result, inside);
    if (result.contains("stabilityPercent"))
        e.stabilityPercent = optionalNumber(result, "stabilityPercent", inside);
    if (result.contains("spreadPercent")) e.spreadPercent = optionalNumber(result, "spreadPercent", inside);
    if (const auto problem = readStatistics(result, e.statistics)) throw NotAReport{inside + *problem};
    return e;
}

RunSummary summary(const json& value) {
    if (!value.is_object()) throw NotAReport{"summary is not an object"};
    const std::string where = "summary.";
    RunSummary s;
    s.title = text(value, "title", where);
    s.completed = integer(value, "completed", where);
    s.skipped = integer(value, "skipped", where);
    s.failed = integer(value, "failed", where);
    s.total = integer(value, "total", where);
    s.score = number(value, "score", where);
    s.duration = number(value, "duration", where);
    s.peakCPU = optionalNumber(value, "peakCPU", where);
    s.peakGPU = optionalNumber(value, "peakGPU", where);
    s.finishedAt = timestamp(text(value, "finishedAt", where), where + "finishedAt");
    return s;
}

RunReport report(const json& document) {
    if (!document.is_object()) throw NotAReport{"not a JSON object"};
    if (const int schema = integer(document, "schema", ""); schema != 1)
        throw NotAReport{"schema " + std::to_string(schema) +
                         " is not known to this quarbel (it reads schema 1)"};
    RunReport r;
    const json& app = member(document, "app", "");
    if (!app.is_object()) throw NotAReport{"app is not an object"};
    r.appName = text(app, "name", "app.");
    r.appVersion = text(app, "version", "app.");
    r.accuracyMode = text(document, "mode", "") == "accuracy";
    r.quick = flag(document, "quick", "");
    r.startedAt = timestamp(text(document, "startedAt", ""), "startedAt");
    r.finishedAt = timestamp(text(document, "finishedAt", ""), "finishedAt");
    for (const json& row : array(document, "system", "")) {
        if (!row.is_object()) throw NotAReport{"system holds something that is not an object"};
        r.system.emplace_back(text(row, "label", "system."), text(row, "value", "system."));
    }
    const json& results = array(document, "results", "");
    for (std::size_t i = 0; i < results.size(); ++i) {
        ReportEntry e = entry(results[i], "results[" + std::to_string(i) + "]", r.accuracyMode);
        for (const ReportEntry& earlier : r.results)
            if (earlier.id == e.id)
                throw NotAReport{"results[" + std::to_string(i) + "] repeats " + std::string(rawValue(e.id))};
        r.results.push_back(std::move(e));
    }
    if (const json& s = member(document, "summary", ""); !s.is_null()) r.summary = summary(s);
    r.globalScore = number(document, "globalScore", "");
    // Reports from before the machine's condition was recorded have none.
    if (const auto condition = document.find("condition");
        condition != document.end() && condition->is_object()) {
        for (const char* key : {"badges", "throttleSigns"}) {
            auto& target = std::string_view(key) == "badges" ? r.badges : r.throttleSigns;
            if (const auto list = condition->find(key); list != condition->end() && list->is_array())
                for (const json& item : *list)
                    if (item.is_string()) target.push_back(item.get<std::string>());
        }
    }
    if (const auto manifest = document.find("manifest"); manifest != document.end())
        r.manifest = manifestFromJson(*manifest);
    if (const auto machine = document.find("machine"); machine != document.end() && machine->is_object()) {
        MachineIdentity& m = r.machine.emplace();
        for (auto [key, target] : {std::pair{"hostName", &m.hostName},
                                   {"machineId", &m.machineId},
                                   {"kernel", &m.kernel},
                                   {"storageDevice", &m.storageDevice}})
            if (const auto value = machine->find(key); value != machine->end() && value->is_string())
                *target = value->get<std::string>();
    }
    if (const auto log = document.find("log"); log != document.end() && log->is_array())
        for (const json& lineText : *log)
            if (lineText.is_string()) r.log.push_back(lineText.get<std::string>());
    return r;
}

} // namespace

std::variant<RunReport, std::string> parseJsonReport(const std::string& textToParse) {
    const json document = json::parse(textToParse, nullptr, false);
    if (document.is_discarded()) return std::string("not valid JSON");
    try {
        return report(document);
    } catch (const NotAReport& problem) {
        return problem.text;
    } catch (const json::exception& error) { // a number out of range, say
        return std::string(error.what());
    }
}

std::variant<RunReport, std::string> readJsonReportFile(const std::string& path) {
    const FileText file = readRegularFile(path, kLargestReportBytes);
    switch (file.kind) {
    case FileText::Problem::none: break;
    case FileText::Problem::unreadable: return "cannot read " + path + ": " + file.reason;
    case FileText::Problem::notAFile: return path + " is " + file.reason + ", not a JSON report";
    case FileText::Problem::tooLarge:
        return path + " is not a Quarbel JSON report: it is larger than " + file.reason;
    }
    return parseJsonReportFrom(path, file.text);
}

std::variant<RunReport, std::string> parseJsonReportFrom(const std::string& path, const std::string& text) {
    auto parsed = parseJsonReport(text);
    if (const auto* problem = std::get_if<std::string>(&parsed))
        return path + " is not a Quarbel JSON report: " + *problem;
    return parsed;
}

} // namespace quarbel
