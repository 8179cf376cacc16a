// SPDX-License-Identifier: Apache-2.0
// The run-to-run floors this machine has shown, learned from the runs its history keeps.
#pragma once

#include "model/noise_floor.h"
#include "results/run_history.h"

#include <string>

namespace quarbel {

// The most recent earlier runs a floor is learned from: enough for a stable estimate, few
// enough to follow a machine that changed.
inline constexpr int kMostRunsForFloor = 20;

// For each benchmark and run length, the floor of the newest kMostRunsForFloor results that are
// like the coming run's: the same machine (by its identifier), the same Quarbel version,
// standard mode, completed and not disturbed (not noisy). Fewer than kRunsToLearnFloor such
// results leave the built-in floor. `history` needs its results (HistoryDetail::results).
NoiseFloors learnNoiseFloors(const HistoryListing& history, const std::string& machineId,
                             const std::string& version);

// "Run-to-run floor 1.2 %, learned from 7 earlier quiet runs on this machine" or "Run-to-run
// floor 2.0 %, built in (fewer than 5 earlier quiet runs on this machine)".
std::string noiseFloorText(const NoiseFloor& floor);

} // namespace quarbel
