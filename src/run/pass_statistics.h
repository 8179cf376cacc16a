// SPDX-License-Identifier: Apache-2.0
// How the passes of one benchmark become its result's interval, and when a benchmark run
// pass after pass (Accuracy Mode, or until its interval is narrow enough) has had enough.
#pragma once

#include "model/accuracy.h"
#include "model/catalogue.h"
#include "model/noise_floor.h"
#include "model/outcome.h"
#include "model/progress_series.h"
#include "model/rate_slices.h"

#include <optional>
#include <vector>

namespace quarbel {

struct PassUncertainty {
    std::optional<RateUncertainty> uncertainty; // the result's
    std::optional<RateUncertainty> withinRun;   // one pass's own, from its slices alone
    std::optional<NoiseFloor> noiseFloor;       // the run-to-run floor added to withinRun
};

// Fewer than two passes: the last pass's slices with the run-to-run noise they cannot see
// added. Several: the spread of their scores (nothing while one of them is not ok).
// `passSlices` holds each pass's slices in run order.
PassUncertainty passesUncertainty(BenchmarkID id, RunLength length,
                                  const std::vector<BenchmarkOutcome>& passes,
                                  const std::vector<std::vector<PhaseSlice>>& passSlices,
                                  const NoiseFloors& floors);

// Whether `passes` are all a benchmark needs: `planned` of them, or when rerun until stable,
// an interval within the target, or a last pass that did not end ok (another would fail too).
bool passesDone(const std::vector<BenchmarkOutcome>& passes, int planned,
                const std::optional<StabilityTarget>& untilStable,
                const std::optional<RateUncertainty>& uncertainty);

} // namespace quarbel
