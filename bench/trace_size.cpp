// SPDX-License-Identifier: Apache-2.0
// What the sensor traces add to a full suite's report: the shipped report of a 16-core
// workstation with an H100 (13 results, no traces) gets a realistic trace and energy per
// result, every column present at 32 points (clocks jittering, temperatures drifting, power
// stepping), and is written once with the hexadecimal column form of earlier versions and
// once as it is written now. Prints the report's bytes, the traces' bytes and their share.
//   bench_trace_size [report.json]
#include "results/json_report.h"
#include "results/trace_json.h"
#include "sensors/trace_recorder.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

using namespace quarbel;

namespace {

// 4 Hz samples of one benchmark, thinned as the recorder thins them.
SensorTrace realisticTrace(std::mt19937& random, double seconds, bool gpuBenchmark) {
    std::normal_distribution<double> noise(0, 1);
    std::uniform_real_distribution<double> uniform(0, 1);
    const double clock = 3000 + 400 * uniform(random), idleWatts = 15 + 10 * uniform(random);
    const double loadWatts = 90 + 70 * uniform(random), hot = 60 + 25 * uniform(random);
    const double gpuWatts = gpuBenchmark ? 400 + 250 * uniform(random) : 70;
    SensorTrace t;
    const int samples = static_cast<int>(seconds * 4);
    for (int i = 0; i < samples; ++i) {
        const double s = i * 0.25 + 0.002 * noise(random), part = static_cast<double>(i) / samples;
        const bool loaded = part > 0.05 && part < 0.95;
        t.seconds.push_back(static_cast<float>(s));
        const double mean = clock - (part > 0.6 ? 150 : 0) + 35 * noise(random);
        t.coreMHzMean.push_back(static_cast<float>(mean));
        t.coreMHzLow.push_back(static_cast<float>(mean - 700 + 80 * noise(random)));
        t.coreMHzHigh.push_back(static_cast<float>(3400 + 20 * noise(random)));
        const double celsius = 42 + (hot - 42) * (1 - std::exp(-s / 6));
        t.cpuCelsius.push_back(static_cast<float>(std::round(celsius + 0.5 * noise(random))));
        t.coreCelsius.push_back(static_cast<float>(std::round(celsius + 6 + noise(random))));
        t.cpuWatts.push_back(
            i == 0 ? NAN : static_cast<float>((loaded ? loadWatts : idleWatts) + 3 * noise(random)));
        t.gpuWatts.push_back(static_cast<float>((loaded ? gpuWatts : 70) + 2 * noise(random)));
        t.gpuMHz.push_back(gpuBenchmark && loaded ? 1980 : 345);
        t.gpuCelsius.push_back(
            static_cast<float>(std::round(35 + (gpuBenchmark ? 25 * part : 0) + 0.4 * noise(random))));
        t.otherCores.push_back(i == 0 ? NAN : static_cast<float>(std::abs(0.05 + 0.04 * noise(random))));
    }
    t.packageLimitWatts = 165;
    t.criticalCelsius = 100;
    return compactTrace(t);
}

// The column form of earlier versions: lowest, highest and a hexadecimal step per point.
nlohmann::ordered_json hexTrace(const SensorTrace& t) {
    nlohmann::ordered_json columns = nlohmann::ordered_json::object();
    for (const TraceColumn& column : kTraceColumns) {
        const auto& values = t.*column.values;
        float low = INFINITY, high = -INFINITY;
        for (float v : values)
            if (!std::isnan(v)) low = std::min(low, v), high = std::max(high, v);
        std::string steps;
        for (float v : values) {
            char hex[3];
            const int step = std::isnan(v) ? 255
                             : high > low  ? static_cast<int>(std::lround((v - low) / (high - low) * 254))
                                           : 0;
            std::snprintf(hex, sizeof hex, "%02x", step);
            steps += hex;
        }
        columns[column.name] = {{"low", low}, {"high", high}, {"steps", steps}};
    }
    return {{"points", t.seconds.size()},
            {"columns", columns},
            {"thermalThrottleEvents", t.thermalThrottleEvents},
            {"packageLimitWatts", *t.packageLimitWatts},
            {"criticalCelsius", *t.criticalCelsius}};
}

// The report's bytes, and those of its "trace" members with their keys.
std::pair<std::size_t, std::size_t> measure(const std::string& text) {
    std::size_t traces = 0;
    std::istringstream lines(text);
    bool inside = false;
    int depth = 0;
    for (std::string line; std::getline(lines, line);) {
        if (!inside && line.find("\"trace\": ") != std::string::npos) inside = true, depth = 0;
        if (!inside) continue;
        traces += line.size() + 1;
        for (char c : line)
            depth += c == '{' ? 1 : c == '}' ? -1 : 0;
        inside = depth > 0;
    }
    return {text.size(), traces};
}

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : QUARBEL_REFERENCE_REPORT;
    auto parsed = readJsonReportFile(path);
    if (auto* problem = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "bench_trace_size: %s\n", problem->c_str());
        return 1;
    }
    RunReport report = std::get<RunReport>(std::move(parsed));
    std::mt19937 random(7);
    const std::size_t bare = jsonReportText(report).size();
    for (ReportEntry& entry : report.results) {
        const bool gpu = std::string(rawValue(entry.id)).find("gpu") != std::string::npos;
        entry.statistics.trace =
            realisticTrace(random, 10 + 20 * std::uniform_real_distribution<double>(0, 1)(random), gpu);
        entry.statistics.energy = {{{PowerDomain::cpuPackage, "RAPL package-0", 1500, 100, 160},
                                    {PowerDomain::gpu, "NVML", 1200, 80, 600}},
                                   {{PowerDomain::battery, "no battery"}}};
    }
    const std::string packed = jsonReportText(report);
    auto document = nlohmann::ordered_json::parse(packed);
    for (std::size_t i = 0; i < report.results.size(); ++i)
        document["results"][i]["trace"] = hexTrace(report.results[i].statistics.trace);
    const std::string hex = document.dump(2) + "\n";
    std::printf("%zu results; the report without traces or energy: %zu bytes\n", report.results.size(), bare);
    for (const auto& [name, text] : {std::pair{"hex columns (before)", &hex}, {"packed (now)", &packed}}) {
        const auto [total, traces] = measure(*text);
        std::printf("%-20s report %6zu bytes, traces %6zu bytes (%zu per result), %.1f %% of the report\n",
                    name, total, traces, traces / report.results.size(),
                    100.0 * static_cast<double>(traces) / static_cast<double>(total));
    }
    // Where the packed bytes go: each column alone beside the seconds, less the seconds alone.
    const auto packedBits = [&](auto keep) {
        double total = 0;
        for (const ReportEntry& entry : report.results) {
            SensorTrace t;
            t.seconds = entry.statistics.trace.seconds;
            keep(t, entry.statistics.trace);
            total += static_cast<double>(traceJson(t).get<std::string>().size()) * 6;
        }
        return total / static_cast<double>(report.results.size());
    };
    const double seconds = packedBits([](SensorTrace&, const SensorTrace&) {});
    std::printf("packed bits per result: seconds %.0f", seconds);
    for (const TraceColumn& column : kTraceColumns)
        if (column.values != &SensorTrace::seconds)
            std::printf(", %s %.0f", column.name, packedBits([&](SensorTrace& t, const SensorTrace& full) {
                                                      t.*column.values = full.*column.values;
                                                  }) - seconds);
    std::printf("\n");
    return 0;
}
