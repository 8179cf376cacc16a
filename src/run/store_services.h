// SPDX-License-Identifier: Apache-2.0
// What the run controller reads and runs when nothing else is given: the real workloads,
// sensors, clock and run marks.
#pragma once

#include "run/benchmark_store.h"

namespace quarbel {

// `services` with each one not given replaced by the standard one.
StoreServices completedServices(StoreServices services);

} // namespace quarbel
