// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/scene_coordinator.h"

#include "model/number_format.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace quarbel::gpu {
namespace {

constexpr double kLiveUpdateInterval = 0.25; // seconds of measured time between live updates
constexpr double kMinimumElapsed = 1e-6;
constexpr double kFastestRate = 1'000'000; // the rate of an interval too short to measure
constexpr float kPassTimeOffset = 0.021f;  // scene time between the passes of one frame
constexpr double kMegapixelFactor = 8.0;
constexpr double kFpsFactor = 155.0;

} // namespace

MetalBenchmarkSceneCoordinator::MetalBenchmarkSceneCoordinator(VisualBenchmarkRequest request,
                                                               LiveUpdate liveUpdate, Completion completion,
                                                               Clock clock)
    : request_(std::move(request)), liveUpdate_(std::move(liveUpdate)), completion_(std::move(completion)),
      clock_(std::move(clock)) {
    reset();
}

int MetalBenchmarkSceneCoordinator::passesFor(int workload) {
    const long passes = 3L * workload;
    return passes < 2 ? 1 : static_cast<int>(std::min<long>(passes, std::numeric_limits<int>::max()));
}

void MetalBenchmarkSceneCoordinator::reset() {
    startTime_.reset();
    lastFrameTime_.reset();
    frames_ = 0;
    minFPS_ = std::numeric_limits<double>::max();
    maxFPS_ = 0;
    finished_ = false;
    lastLiveUpdate_ = 0;
}

void MetalBenchmarkSceneCoordinator::update(const VisualBenchmarkRequest& request) {
    if (request.id == request_.id) return;
    request_ = request;
    reset();
}

void MetalBenchmarkSceneCoordinator::draw(SceneFrameTarget& target) {
    if (finished_) return;
    if (!target.beginFrame()) return;
    const double now = clock_();
    if (!startTime_) {
        startTime_ = now;
        lastFrameTime_ = now;
    }
    const int passes = passesFor(request_.workload);
    const auto sceneTime = static_cast<float>(now - *startTime_);
    const SceneFrameTarget::Size frameSize = target.drawableSize();
    const float aspect =
        static_cast<float>(frameSize.width) / std::max(1.0f, static_cast<float>(frameSize.height));
    for (int pass = 0; pass < passes; ++pass) {
        target.drawPass({static_cast<float>(pass) * kPassTimeOffset + sceneTime, aspect,
                         static_cast<float>(request_.workload), static_cast<float>(pass)});
    }
    if (!target.finishFrame()) return;
    const std::int64_t n = ++frames_;

    // From the end of the previous frame to the start of this one: the frame's own render
    // time is left out. The first two frames carry start-up costs and never set the range.
    if (lastFrameTime_ && n >= 3) {
        const double interval = now - *lastFrameTime_;
        const double rate = interval <= kMinimumElapsed ? kFastestRate : 1.0 / interval;
        minFPS_ = std::min(minFPS_, rate);
        maxFPS_ = std::max(maxFPS_, rate);
    }
    lastFrameTime_ = clock_();
    const double elapsed = std::max(kMinimumElapsed, *lastFrameTime_ - *startTime_);
    const double average = static_cast<double>(frames_) / elapsed;
    // Before any rate is sampled the range shows the average.
    const double minShown = minFPS_ < std::numeric_limits<double>::max() ? minFPS_ : average;
    const double maxShown = maxFPS_ > 0 ? maxFPS_ : average;
    if (elapsed - lastLiveUpdate_ >= kLiveUpdateInterval) {
        lastLiveUpdate_ = elapsed;
        if (liveUpdate_) liveUpdate_({frames_, average, minShown, maxShown});
    }
    if (elapsed < request_.seconds) return;

    // The counted frames still rendering are waited for, and their time counted, before the
    // clock stops; frames the device could not finish end the run without an outcome.
    if (!target.finishInFlight()) return;
    finished_ = true;
    const double total = std::max(kMinimumElapsed, clock_() - *startTime_);
    const SceneFrameTarget::Size size = target.drawableSize();
    const BenchmarkOutcome outcome =
        visibleSceneOutcome(frames_, passes, size.width, size.height, total, minShown, maxShown);
    if (completion_) completion_(outcome);
}

BenchmarkOutcome visibleSceneOutcome(std::int64_t frames, int passes, std::uint32_t width,
                                     std::uint32_t height, double elapsed, double minShown, double maxShown) {
    const double average = static_cast<double>(frames) / elapsed;
    const double megapixels = static_cast<double>(frames) * passes *
                              (static_cast<double>(width) * static_cast<double>(height)) / elapsed / 1e6;
    BenchmarkOutcome outcome;
    outcome.status = OutcomeStatus::ok;
    outcome.score = megapixels * kMegapixelFactor + average * kFpsFactor;
    outcome.primary = {"Scene", format(average, 1), "FPS"};
    outcome.secondary = MeasurementLine{"Min/Max", format(minShown, 1) + " / " + format(maxShown, 1), "FPS"};
    outcome.duration = elapsed;
    outcome.detail = "Metal fly-through with " + std::to_string(frames) + " visible frames and " +
                     std::to_string(passes) + "x workload per frame.";
    return outcome;
}

} // namespace quarbel::gpu
