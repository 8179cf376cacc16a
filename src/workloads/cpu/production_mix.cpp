// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/production_mix.h"

#include "model/number_format.h"
#include "workloads/cpu/checksum_text.h"
#include "workloads/cpu/fatal.h"
#include "workloads/cpu/parallel.h"
#include "workloads/cpu/timed_loop.h"

#include <oneapi/tbb/task_arena.h>

#include <exception>
#include <string>
#include <vector>

namespace quarbel::cpu {

std::uint64_t runCPUMixedBatch(std::int64_t workers, std::int64_t roundsPerWorker) {
    require(workers >= 0 && roundsPerWorker >= 0, "a production batch needs non-negative counts");
    std::vector<std::uint64_t> slots(static_cast<std::size_t>(workers), 0);
    parallelFor(workers, [&](std::int64_t worker) {
        slots[static_cast<std::size_t>(worker)] = runCPUKernel(worker, roundsPerWorker);
    });
    std::uint64_t value = 0;
    for (const std::uint64_t slot : slots)
        value ^= slot;
    return value;
}

} // namespace quarbel::cpu

namespace quarbel {

using namespace cpu;

BenchmarkOutcome runCPUWorkloadProfile(std::int64_t workers, BenchmarkID /*id*/, std::string_view name,
                                       const WorkloadContext& context) {
    require(workers >= 0, "the production mix needs a non-negative worker count");
    try {
        // An arena of exactly `workers` threads (the calling one included), so that the
        // single-core run stays on one core however large the machine's pool is.
        tbb::task_arena arena(static_cast<int>(std::max<std::int64_t>(workers, 1)));
        std::int64_t batches = 0;
        std::uint64_t checksum = 0;
        TimedLoopResult timing;
        arena.execute([&] {
            runCPUMixedBatch(workers, kProductionWarmUpRounds);
            const std::int64_t unitsPerBatch = checkedMultiply(workers, kProductionRoundsPerBatch);
            timing = repeatUntilBudget(context, context.budget(kProductionBudgetSeconds),
                                       ProgressUnit{"rounds", "units/s"}, [&] {
                                           checksum ^= runCPUMixedBatch(workers, kProductionRoundsPerBatch);
                                           batches = checkedAdd(batches, 1);
                                           return checkedMultiply(batches, unitsPerBatch);
                                       });
        });

        const std::int64_t units =
            checkedMultiply(checkedMultiply(batches, workers), kProductionRoundsPerBatch);
        const double rate = static_cast<double>(units) / timing.elapsedSeconds;
        return completedOutcome(rate * (workers == 1 ? kSingleWorkerScoreFactor : kMultiWorkerScoreFactor),
                                {std::string(name), format(rate, 2), "units/s"},
                                {"Threads", std::to_string(workers), ""}, timing.elapsedSeconds,
                                "Mixed production workload: text/binary transforms, image math, simulation, "
                                "lightweight ML, and SIMD mixing. Checksum " +
                                    checksumPrefix(checksum) + ".");
    } catch (const std::exception& error) {
        return failedOutcome("The CPU production mix could not run: " + std::string(error.what()) + ".");
    }
}

} // namespace quarbel
