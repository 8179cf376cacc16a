// SPDX-License-Identifier: Apache-2.0
// Records exchanged between the run controller and the visual GPU benchmark.
#pragma once

#include <cstdint>
#include <string>

namespace quarbel {

struct VisualBenchmarkRequest {
    std::string id; // upper-case UUID text; identifies one visual run
    double seconds = 20.0;
    int workload = 2; // full-screen draws per frame: max(1, 3 x workload)
    bool operator==(const VisualBenchmarkRequest& other) const { return id == other.id; }
};

struct VisualBenchmarkLiveStats {
    std::int64_t frames = 0;
    double averageFPS = 0;
    double minFPS = 0;
    double maxFPS = 0;
    bool operator==(const VisualBenchmarkLiveStats&) const = default;
};

} // namespace quarbel
