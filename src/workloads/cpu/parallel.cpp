// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/parallel.h"

#include <sched.h>
#include <unistd.h>

namespace quarbel::cpu {

std::int64_t activeProcessorCount() noexcept {
    // Grow the mask until the kernel accepts it, for machines with more than 1024 CPUs.
    for (int capacity = 1024; capacity <= (1 << 20); capacity *= 2) {
        cpu_set_t* set = CPU_ALLOC(static_cast<std::size_t>(capacity));
        if (set == nullptr) break;
        const std::size_t bytes = CPU_ALLOC_SIZE(static_cast<std::size_t>(capacity));
        CPU_ZERO_S(bytes, set);
        const int result = sched_getaffinity(0, bytes, set);
        const int count = CPU_COUNT_S(bytes, set);
        CPU_FREE(set);
        if (result == 0) return count > 0 ? count : 1;
    }
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? online : 1;
}

std::int64_t multiCoreWorkerCount() noexcept {
    const std::int64_t active = activeProcessorCount();
    return active >= 2 ? active : 1;
}

} // namespace quarbel::cpu
