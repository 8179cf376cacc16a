// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"

#include "model/number_format.h"
#include "workloads/gpu/frame_ring.h"
#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/render_pipeline.h"
#include "workloads/gpu/scene_pipeline.h"
#include "workloads/gpu/vk_result_text.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace quarbel {
namespace {

constexpr double kBudgetSeconds = 20.0;
constexpr double kFpsFactor = 155.0;
constexpr double kMegapixelFactor = 8.0;
constexpr double kMinimumElapsed = 1e-6;
constexpr float kSceneFramesPerSecond = 45.0f; // scene time advances 1/45 s per frame
constexpr float kDetail = 2.0f;
constexpr std::uint64_t kFrameTimeoutNanoseconds = 10'000'000'000; // longer is a device that stopped

BenchmarkOutcome measure(const WorkloadContext& context, const MetalVisualParameters& parameters) {
    auto gpu = gpu::Context::openDefault();
    if (!gpu || !gpu->supportsGraphics()) return skippedOutcome("Metal is not available on this machine.");

    const std::uint32_t width = std::max<std::uint32_t>(parameters.width, 1);
    const std::uint32_t height = std::max<std::uint32_t>(parameters.height, 1);
    VkResult passError = VK_SUCCESS;
    // Each frame only renders the target; nothing reads it afterwards, so it stays in the layout
    // it is drawn in.
    auto pass = gpu::ColorPass::create(*gpu, VK_FORMAT_B8G8R8A8_UNORM,
                                       VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL, passError);
    if (!pass) return failedOutcome("Metal pipeline failed: " + gpu::vkResultName(passError));
    gpu::ScenePipeline scene =
        gpu::buildScenePipeline(*gpu, pass->handle(), parameters.vertexSource, parameters.fragmentSource);
    if (!scene.pipeline) return failedOutcome("Metal pipeline failed: " + scene.error);
    // One target per frame in flight, so that a frame is drawn while the one before still renders.
    VkResult ringError = VK_SUCCESS;
    auto ring = gpu::FrameRing::create(*gpu, gpu::FrameRing::kDefaultSlots, ringError);
    if (!ring) return failedOutcome("Metal pipeline failed: " + gpu::vkResultName(ringError));
    std::vector<std::unique_ptr<gpu::OffscreenTarget>> targets;
    for (std::uint32_t i = 0; i < ring->slotCount(); ++i) {
        targets.push_back(
            gpu::OffscreenTarget::create(*gpu, *pass, width, height, {0.02f, 0.025f, 0.03f, 1.0f}));
        if (!targets.back()) return failedOutcome("Metal could not create the render target.");
    }

    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    const double budget = context.budget(kBudgetSeconds);
    const double start = monotonicSeconds();
    std::int64_t frames = 0;
    for (;;) {
        const gpu::SceneUniforms uniforms{static_cast<float>(frames) / kSceneFramesPerSecond, aspect, kDetail,
                                          0.0f};
        VkResult result = ring->begin(kFrameTimeoutNanoseconds);
        if (result == VK_SUCCESS) {
            const VkCommandBuffer commands = ring->commands();
            const gpu::OffscreenTarget& target = *targets[ring->slot()];
            target.recordBegin(commands);
            scene.pipeline->recordBind(commands);
            scene.pipeline->recordStrip(commands, &uniforms);
            target.recordEnd(commands);
            VkSubmitInfo submit{};
            submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
            result = ring->submit(gpu->queue(), submit);
        }
        // A device that stopped answering will not come back: say so rather than spin.
        if (result == VK_TIMEOUT || result == VK_ERROR_DEVICE_LOST)
            return failedOutcome("Metal visual failed: the GPU stopped answering.");
        // A frame the device refused is not counted, but the run goes on until its time.
        if (result == VK_SUCCESS) ++frames;
        const double elapsed = monotonicSeconds() - start;
        context.reportProgress(frames, elapsed, ProgressUnit{"frames", "FPS"});
        if (elapsed >= budget) break;
        if (context.cancelled()) break;
    }
    // Every counted frame is finished, and its time counted, before the clock stops.
    const VkResult drained = ring->drain(kFrameTimeoutNanoseconds);
    if (drained != VK_SUCCESS) return failedOutcome("Metal visual failed: the GPU stopped answering.");
    const double elapsed = std::max(kMinimumElapsed, monotonicSeconds() - start);
    const double fps = static_cast<double>(frames) / elapsed;
    const double pixels = static_cast<double>(width) * static_cast<double>(height);
    const double megapixels = static_cast<double>(std::max<std::int64_t>(frames, 1)) * pixels / elapsed / 1e6;

    BenchmarkOutcome outcome;
    outcome.status = OutcomeStatus::ok;
    outcome.score = fps * kFpsFactor + megapixels * kMegapixelFactor;
    outcome.primary = {"Scene", format(fps, 1), "FPS"};
    outcome.secondary = MeasurementLine{"Render", format(megapixels, 1), "MPix/s"};
    outcome.duration = elapsed;
    outcome.detail = "Metal fly-through at " + std::to_string(width) + "x" + std::to_string(height) +
                     ", with procedural sky, terrain islands, arches, and animated lighting.";
    return outcome;
}

} // namespace

BenchmarkOutcome runMetalVisual(const WorkloadContext& context) { return runMetalVisual(context, {}); }

BenchmarkOutcome runMetalVisual(const WorkloadContext& context, const MetalVisualParameters& parameters) {
    try {
        return measure(context, parameters);
    } catch (const std::exception& error) {
        return failedOutcome(std::string("Metal pipeline failed: ") + error.what());
    }
}

} // namespace quarbel
