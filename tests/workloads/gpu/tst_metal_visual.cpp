// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "gpu_test_support.h"
#include "model/number_format.h"

using namespace quarbel;
using quarbel::testing::CancellingProgress;

TEST(MetalVisualOffscreen, RatesTheFramesItRenderedAndThePixelsTheyShaded) {
    CancellingProgress progress(2);
    const BenchmarkOutcome outcome = runMetalVisual(progress.context(), {64, 36, std::nullopt, std::nullopt});
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(progress.units, (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(progress.unit.name, "frames");
    const double fps = 2.0 / outcome.duration;
    const double megapixels = 2.0 * (64.0 * 36.0) / outcome.duration / 1e6;
    EXPECT_EQ(outcome.primary, (MeasurementLine{"Scene", format(fps, 1), "FPS"}));
    EXPECT_EQ(outcome.secondary, (MeasurementLine{"Render", format(megapixels, 1), "MPix/s"}));
    EXPECT_DOUBLE_EQ(outcome.score, fps * 155.0 + megapixels * 8.0);
    EXPECT_EQ(
        outcome.detail,
        "Metal fly-through at 64x36, with procedural sky, terrain islands, arches, and animated lighting.");
}

TEST(EveryVulkanWorkload, AKernelThatDoesNotCompileFailsWithTheCompilersMessage) {
    WorkloadContext context;
    context.budgetSeconds = 0.0;
    const struct {
        BenchmarkOutcome outcome;
        const char* detail; // its start
    } cases[] = {
        {runMetalCompute(context, {64, 1, "#version 450\nvoid main() { values[0] = vec4(1); }\n"}),
         "Metal compute failed: suite_compute.comp:2: error:"},
        {runRawMetalDecode(context, {8, 8, "#version 450\nvoid main() { oops }\n"}),
         "RAW Metal failed: raw_decode.comp:2: error:"},
        {runMetalVisual(context,
                        {16, 9, std::nullopt,
                         "#version 450\nlayout(location = 0) out vec4 c;\nvoid main() { c = nope; }\n"}),
         "Metal pipeline failed: suite_fragment.frag:3: error:"},
        {runMetalVisual(context, {16, 9, "#version 450\nvoid main() {\n", std::nullopt}),
         "Metal pipeline failed: suite_vertex.vert:"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.outcome, failedOutcome(c.outcome.detail));
        EXPECT_EQ(c.outcome.detail.rfind(c.detail, 0), 0u) << c.outcome.detail;
    }
}
