// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/gpu_execution.h"
#include "model/outcome.h"
#include "model/workload_context.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <vector>

namespace quarbel::testing {

// Records every progress report and cancels the run once `cancelAfter` units are done, which
// pins a budget-driven loop to an exact number of units.
class CancellingProgress : public ProgressSink {
  public:
    explicit CancellingProgress(std::int64_t cancelAfter) : cancelAfter_(cancelAfter) {}

    void report(const ProgressReport& progress) noexcept override {
        std::lock_guard lock(mutex_);
        units.push_back(progress.unitsDone);
        unit = progress.unit;
        if (progress.unitsDone >= cancelAfter_) token.cancel();
    }

    // The cancellation, not the clock, ends these runs.
    WorkloadContext context() { return {&token, this, 60.0, 1.0}; }

    CancellationToken token;
    std::vector<std::int64_t> units;
    ProgressUnit unit; // of the last report

  private:
    std::int64_t cancelAfter_;
    std::mutex mutex_;
};

// Runs `run(context, placement)` in every memory placement, cancelled once `units` workgroups are
// done, and checks what all of them report alike: a first part of one group, the stop exactly at
// `units`, and the placement with its bytes copied (none when unified); then `check` looks at the rest.
template <typename Run, typename Check>
void forEachPlacement(std::int64_t units, std::uint64_t bytesCopied, Run run, Check check) {
    for (const auto placement :
         {GpuMemoryPlacement::unified, GpuMemoryPlacement::deviceMapped, GpuMemoryPlacement::deviceStaged}) {
        SCOPED_TRACE(rawValue(placement));
        CancellingProgress progress(units);
        const BenchmarkOutcome outcome = run(progress.context(), placement);
        ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
        EXPECT_EQ(progress.units.front(), 1);
        EXPECT_EQ(progress.units.back(), units);
        EXPECT_EQ(progress.unit.name, "workgroups");
        ASSERT_TRUE(outcome.gpu.has_value());
        EXPECT_EQ(outcome.gpu->placement, placement);
        EXPECT_EQ(outcome.gpu->bytesCopied, placement == GpuMemoryPlacement::unified ? 0 : bytesCopied);
        check(outcome, progress);
    }
}

using Float4 = std::array<float, 4>;

// The compute kernels' arithmetic for one float4 on the CPU, in single precision, with fma() as a
// rounded product plus the addend (as lavapipe and PoCL do).
inline Float4 referenceKernel(const Float4& value, std::uint32_t iterations) {
    constexpr Float4 kOffset{0.11f, 0.23f, 0.37f, 0.41f};
    constexpr Float4 kScale{1.00001f, 0.99999f, 1.00003f, 0.99997f};
    constexpr Float4 kBias{0.0001f, -0.0002f, 0.0003f, -0.0004f};
    Float4 v;
    for (int lane = 0; lane < 4; ++lane)
        v[lane] = value[lane] + kOffset[lane];
    for (std::uint32_t i = 0; i < iterations; ++i) {
        const float f = static_cast<float>(i) * 0.00013f;
        Float4 next;
        for (int lane = 0; lane < 4; ++lane)
            next[lane] = std::sin(v[lane] * 1.00019f + f) + std::cos(v[(lane + 1) % 4] * 0.99991f - f);
        for (int lane = 0; lane < 4; ++lane) {
            const volatile float product = next[lane] * kScale[lane]; // never contracted
            v[lane] = product + kBias[lane];
        }
    }
    return v;
}

} // namespace quarbel::testing
