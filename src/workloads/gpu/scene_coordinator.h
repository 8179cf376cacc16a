// SPDX-License-Identifier: Apache-2.0
// The visible fly-through's measuring side: what each displayed frame draws, the frame
// statistics, the live updates four times a second and the outcome when the requested time
// is up. It renders through a SceneFrameTarget (the scene window's swapchain, or a fake in
// the tests) and reads a clock it is given, so its arithmetic runs without a window.
#pragma once

#include "model/outcome.h"
#include "model/visual.h"
#include "model/workload_context.h"
#include "workloads/gpu/scene_uniforms.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace quarbel::gpu {

// Where one frame of the scene is drawn: a drawable to acquire, full-screen passes into it,
// and the presentation.
class SceneFrameTarget {
  public:
    struct Size {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
    };
    virtual ~SceneFrameTarget() = default;

    // Acquires the next drawable and starts recording into it; false skips the frame (no
    // drawable now, or an empty one). May block until the display takes a new frame.
    virtual bool beginFrame() = 0;
    // The drawable's size in pixels; valid after beginFrame().
    virtual Size drawableSize() const = 0;
    // One full-screen draw with `uniforms` into the drawable.
    virtual void drawPass(const SceneUniforms& uniforms) = 0;
    // Ends recording and presents; the frame may still be rendering when this returns (frames
    // in flight). False when the device refused it; such a frame is not counted.
    virtual bool finishFrame() = 0;
    // Blocks until every presented frame has finished rendering. False when the device did
    // not finish them.
    virtual bool finishInFlight() = 0;
};

class MetalBenchmarkSceneCoordinator {
  public:
    using LiveUpdate = std::function<void(const VisualBenchmarkLiveStats&)>;
    using Completion = std::function<void(const BenchmarkOutcome&)>;
    using Clock = std::function<double()>; // seconds, monotonic

    MetalBenchmarkSceneCoordinator(VisualBenchmarkRequest request, LiveUpdate liveUpdate,
                                   Completion completion, Clock clock = monotonicSeconds);

    // A request with a new id starts the statistics again; the same id changes nothing.
    void update(const VisualBenchmarkRequest& request);

    // Draws one frame into `target` unless the run has finished; when the requested time is
    // up it computes the outcome and calls the completion, once.
    void draw(SceneFrameTarget& target);

    bool finished() const { return finished_; }
    std::int64_t frames() const { return frames_; }
    const VisualBenchmarkRequest& request() const { return request_; }

    // Full-screen draws per frame for a workload level: 3 x workload, at least 1.
    static int passesFor(int workload);

  private:
    void reset();

    VisualBenchmarkRequest request_;
    LiveUpdate liveUpdate_;
    Completion completion_;
    Clock clock_;
    std::optional<double> startTime_;
    std::optional<double> lastFrameTime_;
    std::int64_t frames_ = 0;
    double minFPS_ = 0;
    double maxFPS_ = 0;
    bool finished_ = false;
    double lastLiveUpdate_ = 0;
};

// The outcome of a visible run: `frames` frames of `passes` full-screen draws each, the last
// at a drawable of width x height, over `elapsed` seconds, with the frame-rate range shown.
BenchmarkOutcome visibleSceneOutcome(std::int64_t frames, int passes, std::uint32_t width,
                                     std::uint32_t height, double elapsed, double minShown, double maxShown);

} // namespace quarbel::gpu
