// SPDX-License-Identifier: Apache-2.0
// The parallel-for every multi-core workload uses, and the processor count that sizes it.
#pragma once

#include "workloads/cpu/unit_of_work.h"

#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/partitioner.h>

#include <cstdint>

namespace quarbel::cpu {

// Runs body(i) for every i in [0, count) on oneTBB's worker threads of the current arena,
// one index per task, the calling thread taking part; returns when all have finished.
// body must be safe to call concurrently for different indices. Each index starts with
// beginUnitOfWork() on the thread that runs it.
template <class Body> void parallelFor(std::int64_t count, const Body& body) {
    if (count <= 0) return;
    // The simple partitioner with grain 1 splits down to single indices, so uneven
    // iterations (rows of a render, say) balance like a work queue.
    tbb::parallel_for(
        tbb::blocked_range<std::int64_t>(0, count, 1),
        [&body](const tbb::blocked_range<std::int64_t>& range) {
            for (std::int64_t i = range.begin(); i != range.end(); ++i) {
                beginUnitOfWork();
                body(i);
            }
        },
        tbb::simple_partitioner());
}

// The CPUs in this process's affinity mask (at least 1), read now. oneTBB sizes its
// default arena from the same mask, so the default parallelFor uses this many threads.
std::int64_t activeProcessorCount() noexcept;

// The worker count of the multi-core benchmarks: the active count when it is at least
// two, else one.
std::int64_t multiCoreWorkerCount() noexcept;

} // namespace quarbel::cpu
