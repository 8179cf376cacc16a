// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "gpu_test_support.h"
#include "model/number_format.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace quarbel;
using quarbel::testing::CancellingProgress;
using quarbel::testing::Float4;
using quarbel::testing::numberAfter;
using quarbel::testing::referenceKernel;

namespace {

constexpr std::uint32_t kCount = 1'001; // not a multiple of any workgroup width
constexpr std::uint32_t kIterations = 3;
constexpr std::uint32_t kCandidateSizes[] = {64, 128, 256, 512, 1024};

// The kernel's checksum after `dispatches` dispatches, computed on the CPU.
float referenceChecksum(std::uint32_t count, std::uint32_t iterations, int dispatches) {
    std::vector<Float4> values(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        values[i] = {static_cast<float>(i % 251) * 0.001f, static_cast<float>(i % 193) * 0.002f,
                     static_cast<float>(i % 137) * 0.003f, 1.0f};
    }
    for (int d = 0; d < dispatches; ++d) {
        for (Float4& value : values)
            value = referenceKernel(value, iterations);
    }
    return values[0][0] + values[count / 3][1] + values[count - 1][2];
}

} // namespace

TEST(MetalCompute, ChecksumMatchesTheCpuArithmeticInEveryMemoryPlacement) {
    // Each placement on lavapipe's one memory: the staged path copies in and out, the mapped one
    // writes and reads the device's memory directly, the unified one copies nothing.
    const struct {
        GpuMemoryPlacement placement;
        std::uint64_t bytesCopied; // the fill, then three float4 read back
    } cases[] = {
        {GpuMemoryPlacement::unified, 0},
        {GpuMemoryPlacement::deviceMapped, kCount * 16 + 48},
        {GpuMemoryPlacement::deviceStaged, kCount * 16 + 48},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(rawValue(c.placement));
        // 16 groups of 64 a dispatch, at most one dispatch a submission: a 16th first, then parts
        // or whole ones as fast as the device goes; the checksum shows that no part was lost or
        // doubled.
        CancellingProgress progress(3 * 16);
        const BenchmarkOutcome outcome =
            runMetalCompute(progress.context(), {kCount, kIterations, std::nullopt, {c.placement, 64, 1}});
        ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
        EXPECT_EQ(*outcome.secondary, (MeasurementLine{"Dispatches", "3", ""}));
        // Parts never cross a dispatch boundary, so the stop lands on one.
        EXPECT_EQ(progress.units.front(), 1);
        EXPECT_EQ(progress.units.back(), 48);
        EXPECT_TRUE(std::is_sorted(progress.units.begin(), progress.units.end()));
        EXPECT_EQ(progress.unit.name, "workgroups");
        ASSERT_TRUE(outcome.gpu.has_value());
        EXPECT_EQ(outcome.gpu->placement, c.placement);
        EXPECT_EQ(outcome.gpu->bytesCopied, c.bytesCopied);
        // The live rate reads in the result's unit.
        const auto live = liveRate(48, outcome.duration, progress.unit);
        ASSERT_TRUE(live.has_value());
        EXPECT_EQ(live->unit, outcome.primary.unit);
        EXPECT_NEAR(live->value, std::stod(outcome.primary.value), 0.006 + live->value * 1e-6);

        const auto checksum = numberAfter(outcome.detail, "checksum");
        ASSERT_TRUE(checksum.has_value()) << outcome.detail;
        // Vulkan lets a driver fuse fma() or not; over these few iterations a fused result stays
        // within 1e-5 of the split reference. The detail rounds to 3 decimals (5e-4); the device's
        // sin and cos may differ from the C library's by about 1e-6 per call, and each of the 9
        // iterations can at most double a lane's error, so 2e-3 holds. A wrong constant, lane
        // order or missing update moves the sum by 1e-2 or more.
        EXPECT_NEAR(*checksum, referenceChecksum(kCount, kIterations, 3), 2e-3);
        EXPECT_EQ(outcome.detail.rfind("Sustained Metal kernel over 1001 float4 values, checksum ", 0), 0u);
    }
}

TEST(MetalCompute, BatchedSubmissionsRunEveryDispatchTheyCountAndCalibrationLeavesNoTrace) {
    // A calibrated group size and up to 8 dispatches a submission: the checksum still follows the
    // count shown, so no dispatch of a batch is lost and the calibration's own dispatches are
    // undone before timing.
    CancellingProgress progress(2);
    const BenchmarkOutcome outcome = runMetalCompute(
        progress.context(), {kCount, kIterations, std::nullopt, {GpuMemoryPlacement::deviceStaged, {}, 8}});
    // Cancelled after the second report: the first part, then whole dispatches to a boundary.
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    const int dispatches = std::stoi(outcome.secondary->value);
    ASSERT_TRUE(outcome.gpu.has_value());
    const std::int64_t groups = (kCount + outcome.gpu->groupSize - 1) / outcome.gpu->groupSize;
    EXPECT_EQ(progress.units.front(), 1) << "a first submission of one group";
    EXPECT_EQ(progress.units.back(), dispatches * groups);
    EXPECT_GT(outcome.gpu->dispatchesPerSubmission, 1u) << "a tiny dispatch is batched";
    EXPECT_LE(outcome.gpu->dispatchesPerSubmission, 8u);
    EXPECT_EQ(dispatches, 1 + static_cast<int>(outcome.gpu->dispatchesPerSubmission));
    EXPECT_NE(std::find(std::begin(kCandidateSizes), std::end(kCandidateSizes), outcome.gpu->groupSize),
              std::end(kCandidateSizes));
    // Calibrated: the buffer was filled twice.
    EXPECT_EQ(outcome.gpu->bytesCopied, 2 * kCount * 16 + 48);
    ASSERT_TRUE(outcome.gpu->busyFraction.has_value()) << "lavapipe writes timestamps";
    EXPECT_GT(*outcome.gpu->busyFraction, 0.0);
    EXPECT_LE(*outcome.gpu->busyFraction, 1.0);
    EXPECT_NEAR(*numberAfter(outcome.detail, "checksum"), referenceChecksum(kCount, kIterations, dispatches),
                2e-3);
}

TEST(MetalCompute, CancelledRunStopsAfterItsFirstPartAndRatesThatWork) {
    CancellingProgress progress(0);
    progress.token.cancel();
    const BenchmarkOutcome outcome =
        runMetalCompute(progress.context(), {kCount, kIterations, std::nullopt, {std::nullopt, 64, 256}});
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.secondary->value, "0");
    EXPECT_EQ(progress.units, (std::vector<std::int64_t>{1}));
    ASSERT_GE(outcome.duration, 1e-6);
    const double gflops = (1.0 / 16) * (double{kCount} * kIterations) * 42.0 / outcome.duration / 1e9;
    EXPECT_EQ(outcome.primary, (MeasurementLine{"Compute", format(gflops, 2), "GFLOPS"}));
    EXPECT_DOUBLE_EQ(outcome.score, gflops * 120.0);
}

TEST(MetalCompute, ZeroBudgetStillCompletesOneDispatchOverEveryRowOfTheGrid) {
    // More groups than one row holds (groups of 8: 67,501 groups in two rows), each row its own
    // part of the dispatch; the last element lies in the second row.
    constexpr std::uint32_t kManyElements = 540'001;
    CancellingProgress progress(1'000'000);
    WorkloadContext context = progress.context();
    context.budgetSeconds = 0.0;
    const BenchmarkOutcome outcome =
        runMetalCompute(context, {kManyElements, 1, std::nullopt, {std::nullopt, 8, 1}});
    EXPECT_EQ(progress.units, (std::vector<std::int64_t>{33'751, 67'502}));
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.secondary->value, "1");
    EXPECT_NEAR(*numberAfter(outcome.detail, "checksum"), referenceChecksum(kManyElements, 1, 1), 1e-3);
}
