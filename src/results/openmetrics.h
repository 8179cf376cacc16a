// SPDX-License-Identifier: Apache-2.0
// A run's results in the Prometheus text exposition format, for node_exporter's textfile
// collector: one gauge family per quantity, measurements in base units named in the metric
// (bytes_per_second, frames_per_second, ...), so that a fleet is queried like any exporter.
#pragma once

#include "results/run_report.h"

#include <string>

namespace quarbel {

// Every series carries the benchmark's identifier; the run's own facts are in
// quarbel_run_info and quarbel_run_timestamp_seconds. Skipped and failed benchmarks have
// quarbel_ok 0 and no score. Energy, average power and points per joule carry the power domain
// as well ("cpuPackage", "gpu", "battery"), one series per domain measured.
std::string openMetricsText(const RunReport& report);

// The metric suffix and the factor to base units of a measurement's unit text, e.g.
// ("GB/s" of the memory stream) -> ("bytes_per_second", 1e9); nothing for a unit it does not
// know. Byte units are binary except the memory stream's decimal gigabytes.
struct MetricUnit {
    std::string suffix;
    double factor = 1;
};
std::optional<MetricUnit> metricUnit(BenchmarkID id, const std::string& unit);

} // namespace quarbel
