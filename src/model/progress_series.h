// SPDX-License-Identifier: Apache-2.0
// Every progress report of one pass, kept so that the pass's rate can be sliced afterwards.
// Not thread-safe: the caller serialises add() with its readers.
#pragma once

#include "model/rate_slices.h"
#include "model/workload_context.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace quarbel {

// A slice of one phase of a pass.
struct PhaseSlice {
    int phase = 0;
    RateSlice slice;
    bool operator==(const PhaseSlice&) const = default;
};

class ProgressSeries {
  public:
    // At most this many points are kept per phase; when a phase fills up, every other point
    // goes (whole units stay whole, the series only gets coarser), so memory stays bounded
    // however fine a workload's units.
    static constexpr std::size_t kMaximumPoints = 8192;

    // Reports must come in time order. The units and time since the previous report go to
    // the phase of this one, so each phase's points count only its own work and time, even
    // when phases take turns (reads and writes in rounds).
    void add(const ProgressReport& report);
    void clear();

    // The phases seen, in order of their numbers.
    int phaseCount() const { return static_cast<int>(phases_.size()); }
    std::span<const ProgressPoint> phase(int index) const {
        return phases_[static_cast<std::size_t>(index)].points;
    }

  private:
    struct Phase {
        int number = 0;
        ProgressPoint total{}; // this phase's work and time so far
        std::vector<ProgressPoint> points;
    };
    std::vector<Phase> phases_; // sorted by number
    ProgressPoint last_{};
};

// Each phase sliced on its own, in phase order.
std::vector<PhaseSlice> slicePhases(const ProgressSeries& series, int maxSlicesPerPhase = kMaximumSlices);

// The uncertainty of a pass's score from its slices: one phase's rate, or the mean of
// several phases' rates (the storage tests' score averages their write and read rates).
// Nothing when a phase has too few slices.
std::optional<RateUncertainty> passRateUncertainty(std::span<const PhaseSlice> slices);

} // namespace quarbel
