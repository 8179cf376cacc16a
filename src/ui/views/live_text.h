// The texts that describe a run while it goes: elapsed against target, and the live
// rate in the workload's own unit. Pure functions of the store's published values.
#pragma once

#include "run/benchmark_store.h"

#include <QString>

namespace quarbel::ui {

// "12.3 / 15 s"; the target is the store's (one pass times the pass count).
QString elapsedText(double elapsedSeconds, double targetSeconds);

// The live rate of the pass now running: "1234.5 rounds/s", "812.4 MB/s" for bytes,
// or, for the visual benchmark, its frame statistics. Empty before the first report.
QString liveMetricText(const LiveProgress& progress, const OptionalVisualLiveStats& visual);

} // namespace quarbel::ui
