// SPDX-License-Identifier: Apache-2.0
// The run-to-run floor of a benchmark's interval: the variation between separate runs that the
// slices of one run cannot see. Built in from a quiet development machine until this machine
// has run the benchmark often enough to show its own, then learned from those runs.
#pragma once

#include "model/catalogue.h"
#include "model/comparison.h"

#include <map>
#include <optional>
#include <span>
#include <utility>

namespace quarbel {

// Earlier quiet runs needed before a machine's own floor replaces the built-in one.
inline constexpr int kRunsToLearnFloor = 5;

struct NoiseFloor {
    double percent = 0; // a coefficient of variation, in percent
    int runs = 0;       // the earlier runs it was learned from; 0: the built-in floor
    bool operator==(const NoiseFloor&) const = default;
};

// From the scores of earlier quiet runs of one benchmark on one machine, in run order: the
// standard deviation of their logarithms from successive differences (so that one lasting
// change in the machine barely counts), raised to its upper 80 % bound (a chi-square bound
// over n - 1 degrees of freedom, as the built-in floors were set), in percent; none with
// fewer than kRunsToLearnFloor scores or a score not above 0.
std::optional<double> learnedFloorPercent(std::span<const double> scores);

class NoiseFloors {
  public:
    void learn(BenchmarkID id, RunLength length, NoiseFloor floor);
    // The learned floor, else the built-in one (runs 0).
    NoiseFloor floorFor(BenchmarkID id, RunLength length) const;
    bool operator==(const NoiseFloors&) const = default;

  private:
    std::map<std::pair<BenchmarkID, RunLength>, NoiseFloor> learned_;
};

} // namespace quarbel
