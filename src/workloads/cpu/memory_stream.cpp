// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/memory_stream.h"

#include "model/number_format.h"
#include "workloads/cpu/fatal.h"
#include "workloads/cpu/huge_page_allocator.h"
#include "workloads/cpu/timed_loop.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

namespace quarbel::cpu {

BenchmarkOutcome runMemoryStream(const WorkloadContext& context, std::int64_t elements) {
    require(elements >= 0, "the memory stream needs a non-negative array size");
    try {
        const auto count = static_cast<std::size_t>(elements);
        const HugePageVector<float> a(count, 1.125f);
        const HugePageVector<float> b(count, 2.25f);
        HugePageVector<float> c(count, 0.5f);

        std::int64_t passes = 0;
        // Two reads and one write of 4-byte elements per index.
        const ProgressUnit unit{"passes", "GB/s", static_cast<double>(elements) * 3 * 4 / 1e9};
        const TimedLoopResult timing =
            repeatUntilBudget(context, context.budget(kStreamBudgetSeconds), unit, [&] {
                streamTriad(a, b, c, streamScalar(passes));
                passes = checkedAdd(passes, 1);
                return passes;
            });

        const std::int64_t bytesMoved = checkedMultiply(checkedMultiply(passes, elements), 3 * 4);
        const double bandwidth = static_cast<double>(bytesMoved) / timing.elapsedSeconds / 1e9;
        // 192,000,000 bytes in MiB, truncated: a fixed label, not a measurement.
        return completedOutcome(
            bandwidth * kStreamScoreFactor, MeasurementLine{"Bandwidth", format(bandwidth, 2), "GB/s"},
            MeasurementLine{"Working Set", "183", "MB"}, timing.elapsedSeconds,
            "Sustained stream triad with " + std::to_string(passes) + " passes over a large working set.");
    } catch (const std::bad_alloc&) {
        return failedOutcome("The memory stream could not allocate its " +
                             std::to_string(elements * 12 / (1 << 20)) + " MB working set.");
    } catch (const std::exception& error) {
        return failedOutcome("The memory stream could not run: " + std::string(error.what()) + ".");
    }
}

} // namespace quarbel::cpu
