// SPDX-License-Identifier: Apache-2.0
// One table from benchmark to workload function.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/workload_context.h"

namespace quarbel {

using WorkloadFunction = BenchmarkOutcome (*)(const WorkloadContext&);

// The function that runs `id`, or nullptr when this build has no workload for it.
WorkloadFunction workloadFunction(BenchmarkID id);

// Runs `id` on the calling thread; a workload missing from this build ends skipped.
BenchmarkOutcome runWorkload(BenchmarkID id, const WorkloadContext& context);

} // namespace quarbel
