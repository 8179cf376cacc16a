// SPDX-License-Identifier: Apache-2.0
// The uncertainty of a measured rate, from the run itself: a pass's progress reports are
// grouped into consecutive slices of whole work units (batch means), and the spread of
// the slices' rates gives the standard error of the pass's rate.
#pragma once

#include "model/stability.h"

#include <optional>
#include <span>
#include <vector>

namespace quarbel {

struct RateSlice {
    double seconds = 0; // measured time of the slice
    double units = 0;   // work units finished in it
    double rate() const { return units / seconds; }
    bool operator==(const RateSlice&) const = default;
};

// At most this many slices: enough degrees of freedom for a t interval, while each slice
// stays long enough that neighbouring slices are close to independent.
inline constexpr int kMaximumSlices = 20;
// Fewer slices give no interval (two leave one degree of freedom and a useless width).
inline constexpr int kMinimumSlices = 3;

// Groups one pass's reports (in time order, cumulative units, from a start at 0 s and 0
// units) into at most `maxSlices` consecutive slices of about equal time. Every slice ends
// at a report (the one nearest its share of the time), so it holds whole units; slices that
// took no time are dropped. A series that goes back in time or units (a new pass) gives
// nothing.
std::vector<RateSlice> sliceProgress(std::span<const ProgressPoint> series, int maxSlices = kMaximumSlices);

struct RateUncertainty {
    int samples = 0;                  // slices (or passes) the estimate comes from
    double relativeStandardError = 0; // of the rate, as a fraction of it
    double degreesOfFreedom = 0;      // of the t distribution that goes with it; may be fractional
    // Half the width of the two-sided 95 % interval, in percent of the rate.
    double ci95Percent() const;
    bool operator==(const RateUncertainty&) const = default;
};

// The standard error of the whole rate, sum(units) / sum(seconds), by the ratio estimator
// over the slices (which copes with slices of unequal length); degrees of freedom are
// slices - 1. Nothing for fewer than kMinimumSlices slices or a pass that did no work.
std::optional<RateUncertainty> rateUncertainty(std::span<const RateSlice> slices);

// The uncertainty of a result made of several passes (Accuracy Mode, reruns until stable):
// the standard error of their mean score over passes - 1 degrees of freedom, never below
// what the passes' own intervals say. `withinRun` holds each pass's own uncertainty where
// it has one. Nothing for fewer than two passes or a mean of zero.
std::optional<RateUncertainty> passUncertainty(std::span<const double> passScores,
                                               std::span<const RateUncertainty> withinRun);

// Adds a variance that the run cannot see by itself (what differs from one run to the next:
// memory placement, frequency, neighbours), `floorFraction` of the rate. The degrees of
// freedom follow Welch and Satterthwaite, the floor counting as known exactly.
RateUncertainty withRunToRunFloor(const RateUncertainty& measured, double floorFraction);

} // namespace quarbel
