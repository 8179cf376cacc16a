// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "gpu_test_support.h"
#include "model/number_format.h"

#include <algorithm>
#include <bit>

using namespace quarbel;
using quarbel::testing::CancellingProgress;
using quarbel::testing::Float4;
using quarbel::testing::referenceKernel;

namespace {

constexpr std::uint32_t kCount = 1'001; // not a multiple of any workgroup width
constexpr std::uint32_t kIterations = 3;

// The kernel's checksum after `dispatches` dispatches, computed on the CPU.
float referenceChecksum(std::uint32_t count, std::uint32_t iterations, int dispatches) {
    std::vector<Float4> values(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        values[i] = {static_cast<float>(i % 251) * 0.001f, static_cast<float>(i % 193) * 0.002f,
                     static_cast<float>(i % 137) * 0.003f, 1.0f};
        for (int d = 0; d < dispatches; ++d)
            values[i] = referenceKernel(values[i], iterations);
    }
    return values[0][0] + values[count / 3][1] + values[count - 1][2];
}

// The checksum a detail text ends with; it throws when there is none.
double checksumIn(const std::string& detail) {
    return std::stod(detail.substr(detail.find("checksum ") + 9));
}

} // namespace

TEST(MetalCompute, ChecksumMatchesTheCpuArithmeticInEveryMemoryPlacement) {
    // 16 groups of 64 a dispatch, at most one a submission: a 16th first, then parts or whole
    // ones; the checksum shows that no part was lost or doubled, and the stop lands on a boundary.
    // Staged and mapped copy the fill, then three float4 back.
    quarbel::testing::forEachPlacement(
        3 * 16, kCount * 16 + 48,
        [](const WorkloadContext& context, GpuMemoryPlacement placement) {
            return runMetalCompute(context, {kCount, kIterations, std::nullopt, {placement, 64, 1}});
        },
        [](const BenchmarkOutcome& outcome, const CancellingProgress& progress) {
            EXPECT_EQ(*outcome.secondary, (MeasurementLine{"Dispatches", "3", ""}));
            EXPECT_TRUE(std::is_sorted(progress.units.begin(), progress.units.end()));
            const auto live = liveRate(48, outcome.duration, progress.unit);
            ASSERT_TRUE(live.has_value());
            EXPECT_EQ(live->unit, outcome.primary.unit);
            EXPECT_NEAR(live->value, std::stod(outcome.primary.value), 0.006 + live->value * 1e-6);
            // The detail rounds to 5e-4; fused fma() and the device's sin and cos stay well within
            // 2e-3 over 9 iterations, while a wrong constant, lane or update moves the sum by 1e-2.
            EXPECT_NEAR(checksumIn(outcome.detail), referenceChecksum(kCount, kIterations, 3), 2e-3);
            EXPECT_EQ(outcome.detail.rfind("Sustained Metal kernel over 1001 float4 values, checksum ", 0),
                      0u);
        });
}

TEST(MetalCompute, BatchedSubmissionsRunEveryDispatchTheyCountAndCalibrationLeavesNoTrace) {
    // 64 elements are one group whatever size calibration picks, so no dispatch is ever cut and the
    // first submission is a whole one; batching then needs it to take under the 0.1 s target / 2, not
    // the few milliseconds that cutting into parts would need. The checksum follows the count shown,
    // so no batched dispatch is lost and the calibration's own ones are undone.
    constexpr std::uint32_t kOneGroup = 64;
    CancellingProgress progress(2);
    const BenchmarkOutcome outcome =
        runMetalCompute(progress.context(),
                        {kOneGroup, kIterations, std::nullopt, {GpuMemoryPlacement::deviceStaged, {}, 8}});
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    const int dispatches = std::stoi(outcome.secondary->value);
    ASSERT_TRUE(outcome.gpu.has_value());
    EXPECT_EQ(progress.units, (std::vector<std::int64_t>{1, dispatches}));
    EXPECT_GT(outcome.gpu->dispatchesPerSubmission, 1u) << "a tiny dispatch is batched";
    EXPECT_LE(outcome.gpu->dispatchesPerSubmission, 8u);
    EXPECT_EQ(dispatches, 1 + static_cast<int>(outcome.gpu->dispatchesPerSubmission));
    const std::uint32_t size = outcome.gpu->groupSize;
    EXPECT_TRUE(size >= 64 && size <= 1024 && std::has_single_bit(size)) << size;
    EXPECT_EQ(outcome.gpu->bytesCopied, 2 * kOneGroup * 16 + 48) << "calibration fills the buffer once more";
    EXPECT_GT(outcome.gpu->busyFraction.value_or(0.0), 0.0) << "lavapipe writes timestamps";
    EXPECT_LE(outcome.gpu->busyFraction.value_or(0.0), 1.0);
    EXPECT_NEAR(checksumIn(outcome.detail), referenceChecksum(kOneGroup, kIterations, dispatches), 2e-3);
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
    // Groups of 8: 67,501 groups in two rows, each its own part; the last element is in the second.
    constexpr std::uint32_t kManyElements = 540'001;
    CancellingProgress progress(1'000'000);
    WorkloadContext context = progress.context();
    context.budgetSeconds = 0.0;
    const BenchmarkOutcome outcome =
        runMetalCompute(context, {kManyElements, 1, std::nullopt, {std::nullopt, 8, 1}});
    EXPECT_EQ(progress.units, (std::vector<std::int64_t>{33'751, 67'502}));
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.secondary->value, "1");
    EXPECT_NEAR(checksumIn(outcome.detail), referenceChecksum(kManyElements, 1, 1), 1e-3);
}
