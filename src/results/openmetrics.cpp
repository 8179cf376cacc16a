// SPDX-License-Identifier: Apache-2.0
#include "results/openmetrics.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

namespace quarbel {
namespace {

struct Family {
    std::string help;
    std::vector<std::string> samples;
};

// Families in the order they are first used, each printed once with its HELP and TYPE.
class Exposition {
  public:
    void add(const std::string& name, const std::string& help, const std::string& labels, double value) {
        auto [it, inserted] = families_.try_emplace(name);
        if (inserted) {
            order_.push_back(name);
            it->second.help = help;
        }
        it->second.samples.push_back(name + (labels.empty() ? "" : "{" + labels + "}") + " " + number(value));
    }

    std::string text() const {
        std::string out;
        for (const auto& name : order_) {
            const Family& family = families_.at(name);
            out += "# HELP " + name + " " + family.help + "\n# TYPE " + name + " gauge\n";
            for (const auto& sample : family.samples)
                out += sample + "\n";
        }
        return out;
    }

  private:
    // The shortest text that reads back as the same double: 11799.63, not 11799.629999999999.
    static std::string number(double value) {
        if (std::isnan(value)) return "NaN";
        if (std::isinf(value)) return value > 0 ? "+Inf" : "-Inf";
        char text[40];
        const auto end = std::to_chars(text, text + sizeof text, value).ptr;
        return std::string(text, end);
    }
    std::map<std::string, Family> families_;
    std::vector<std::string> order_;
};

// A label value with backslash, double quote and line feed escaped.
std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out += c;
    }
    return out;
}

std::string label(const std::string& name, const std::string& value) {
    return name + "=\"" + escaped(value) + "\"";
}

// The whole text as a number, or nothing ("4K DCI", "55.0 / 61.3").
std::optional<double> numberIn(const std::string& text) {
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    if (errno != 0 || end != text.c_str() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

void addMeasurement(Exposition& out, const char* which, BenchmarkID id, const std::string& benchmark,
                    const MeasurementLine& line) {
    const auto value = numberIn(line.value);
    if (!value) return;
    const std::string labels = benchmark + "," + label("label", line.label);
    if (line.unit.empty()) {
        out.add(std::string("quarbel_") + which,
                std::string("The benchmark's ") + which + " measurement (a count).", labels, *value);
        return;
    }
    const auto unit = metricUnit(id, line.unit);
    if (!unit) return;
    out.add(std::string("quarbel_") + which + "_" + unit->suffix,
            std::string("The benchmark's ") + which + " measurement, in " + unit->suffix + ".", labels,
            *value * unit->factor);
}

} // namespace

std::optional<MetricUnit> metricUnit(BenchmarkID id, const std::string& unit) {
    constexpr double kMiB = 1048576.0;
    if (unit == "GB/s")
        return MetricUnit{"bytes_per_second", id == BenchmarkID::memoryStream ? 1e9 : 1024.0 * kMiB};
    if (unit == "MB/s") return MetricUnit{"bytes_per_second", kMiB};
    if (unit == "MB") return MetricUnit{"bytes", kMiB};
    if (unit == "IOPS") return MetricUnit{"operations_per_second", 1};
    if (unit == "FPS") return MetricUnit{"frames_per_second", 1};
    if (unit == "GFLOPS") return MetricUnit{"flops", 1e9};
    if (unit == "MPix/s") return MetricUnit{"pixels_per_second", 1e6};
    if (unit == "units/s") return MetricUnit{"units_per_second", 1};
    return std::nullopt;
}

std::string openMetricsText(const RunReport& report) {
    Exposition out;
    std::string machine;
    for (const auto& [name, value] : report.system)
        if (name == "CPU") machine = value;
    out.add("quarbel_run_info", "The run's version and mode; always 1.",
            label("version", report.appVersion) + "," +
                label("mode", report.accuracyMode ? "accuracy" : "standard") + "," +
                label("quick", report.quick ? "true" : "false") + "," + label("cpu", machine),
            1);
    out.add(
        "quarbel_run_timestamp_seconds", "When the run started, in seconds since the Unix epoch.", "",
        static_cast<double>(
            std::chrono::duration_cast<std::chrono::seconds>(report.startedAt.time_since_epoch()).count()));
    out.add("quarbel_run_complete", "1 when the run ended with its summary, 0 when it was stopped.", "",
            report.summary ? 1 : 0);
    out.add("quarbel_global_score", "The global score of the benchmarks run so far, in Quarbel points.", "",
            report.globalScore);
    for (const ReportEntry& entry : report.results) {
        const BenchmarkOutcome& o = entry.outcome;
        const std::string benchmark = label("benchmark", std::string(rawValue(entry.id)));
        const bool ok = o.status == OutcomeStatus::ok;
        out.add("quarbel_ok", "1 when the benchmark ended ok, 0 when it was skipped or failed.",
                benchmark + "," + label("status", std::string(rawValue(o.status))), ok ? 1 : 0);
        if (!ok) continue;
        out.add("quarbel_score", "The benchmark's score, in Quarbel points.", benchmark, o.score);
        if (entry.statistics.uncertainty)
            out.add("quarbel_score_ci95_percent",
                    "Half the width of the score's 95 % confidence interval, in percent of the score.",
                    benchmark, entry.statistics.uncertainty->ci95Percent());
        out.add("quarbel_noisy", "1 when other work disturbed the machine while the benchmark ran.",
                benchmark, entry.statistics.noisy ? 1 : 0);
        if (entry.stabilityPercent)
            out.add("quarbel_stability_percent",
                    "The rate of the last fifth of the run over the first fifth, in percent.", benchmark,
                    *entry.stabilityPercent);
        out.add("quarbel_duration_seconds", "The benchmark's measured time.", benchmark, o.duration);
        if (o.gpu && o.gpu->busyFraction)
            out.add("quarbel_gpu_busy_ratio",
                    "The GPU's own time on the benchmark's work over the wall time it took, 0 to 1.",
                    benchmark, *o.gpu->busyFraction);
        for (const EnergyMeasurement& m : entry.statistics.energy.measured) {
            const std::string labels = benchmark + "," + label("domain", std::string(rawValue(m.domain)));
            out.add("quarbel_energy_joules", "The energy the power domain used while the benchmark ran.",
                    labels, m.joules);
            out.add("quarbel_power_watts", "The power domain's average power while the benchmark ran.",
                    labels, m.averageWatts);
            if (const auto efficiency = pointsPerJoule(o.score, m))
                out.add("quarbel_points_per_joule",
                        "The score over the power domain's average power: Quarbel points per joule.", labels,
                        *efficiency);
        }
        addMeasurement(out, "primary", entry.id, benchmark, o.primary);
        if (o.secondary) addMeasurement(out, "secondary", entry.id, benchmark, *o.secondary);
    }
    return out.text();
}

} // namespace quarbel
