// SPDX-License-Identifier: Apache-2.0
// The visible scene's measuring arithmetic, driven through a fake drawable and a scripted clock.
#include "workloads/gpu/scene_coordinator.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

using namespace quarbel;
using namespace quarbel::gpu;

namespace {

struct FakeTarget final : SceneFrameTarget {
    Size size{1920, 1080};
    bool available = true; // a drawable can be acquired
    bool renders = true;   // the device takes the frame
    bool finishes = true;  // the device finishes the frames in flight
    int begun = 0;
    int waitsForFramesInFlight = 0;
    std::vector<SceneUniforms> passes;

    bool beginFrame() override {
        ++begun;
        return available;
    }
    Size drawableSize() const override { return size; }
    void drawPass(const SceneUniforms& uniforms) override { passes.push_back(uniforms); }
    bool finishFrame() override { return renders; }
    bool finishInFlight() override {
        ++waitsForFramesInFlight;
        return finishes;
    }
};

// A coordinator on a scripted clock: each frame reads it when it starts and when it is
// presented; the last frame reads it once more when the frames in flight have finished.
struct SceneRun {
    SceneRun(std::deque<double> clockTimes, double seconds, int workload)
        : times(std::move(clockTimes)),
          coordinator(
              {"A", seconds, workload}, [this](const VisualBenchmarkLiveStats& s) { live.push_back(s); },
              [this](const BenchmarkOutcome& o) { outcomes.push_back(o); },
              [this] {
                  const double t = times.front();
                  if (times.size() > 1) times.pop_front();
                  return t;
              }) {}
    void draw(int frames) {
        for (int i = 0; i < frames; ++i)
            coordinator.draw(target);
    }

    std::deque<double> times;
    std::vector<VisualBenchmarkLiveStats> live;
    std::vector<BenchmarkOutcome> outcomes;
    FakeTarget target;
    MetalBenchmarkSceneCoordinator coordinator;
};

} // namespace

TEST(SceneCoordinator, DrawsThreePassesPerWorkloadLevelAndAtLeastOne) {
    for (const auto& [workload, passes] : {std::pair{-4, 1}, {0, 1}, {1, 3}, {2, 6}}) {
        SceneRun run({10.0, 10.5}, 0.1, workload);
        run.target.size = {800, 400};
        run.draw(1);
        ASSERT_EQ(run.target.passes.size(), std::size_t(passes)) << workload;
        for (int p = 0; p < passes; ++p) {
            EXPECT_FLOAT_EQ(run.target.passes[p].time, float(p) * 0.021f);
            EXPECT_FLOAT_EQ(run.target.passes[p].aspect, 2.0f);
            EXPECT_FLOAT_EQ(run.target.passes[p].detail, float(workload));
            EXPECT_FLOAT_EQ(run.target.passes[p].mode, float(p));
        }
        ASSERT_EQ(run.outcomes.size(), 1u);
        EXPECT_EQ(run.outcomes[0].detail, "Metal fly-through with 1 visible frames and " +
                                              std::to_string(passes) + "x workload per frame.");
    }
}

TEST(SceneCoordinator, FewerThanThreeFramesShowTheAverageAsMinimumAndMaximum) {
    SceneRun run({0.0, 0.5, 0.6, 1.0}, 1.0, 2);
    run.draw(2);
    ASSERT_EQ(run.outcomes.size(), 1u);
    EXPECT_EQ(run.outcomes[0].primary, (MeasurementLine{"Scene", "2.0", "FPS"}));
    EXPECT_EQ(run.outcomes[0].secondary, (MeasurementLine{"Min/Max", "2.0 / 2.0", "FPS"}));
    EXPECT_EQ(run.live.size(), 2u) << "a live update once at least 0.25 s passed since the last";
}

TEST(SceneCoordinator, RangeLeavesOutTheFirstTwoFramesAndMeasuresBetweenFrames) {
    const struct {
        const char* name;
        std::deque<double> times; // the clock at each frame's start and end, then at the finish
        double seconds;
        const char* range;
        const char* average; // empty: not checked
    } cases[] = {
        {"frame 2 follows a 1 s gap (start-up), frames 3 and 4 gaps of 0.1 s and 0.05 s",
         {0.0, 0.2, 1.2, 1.4, 1.5, 1.6, 1.65, 3.0},
         2.5,
         "10.0 / 20.0",
         "1.3"}, // 4 frames in 3 s
        {"frames 3 and 4 start exactly when the previous frame ended: at most a microsecond "
         "counts as a million frames per second",
         {0.0, 0.1, 0.2, 0.3, 0.3, 0.4, 0.4, 2.0},
         1.5,
         "1000000.0 / 1000000.0",
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SceneRun run(c.times, c.seconds, 1);
        run.draw(4);
        ASSERT_EQ(run.outcomes.size(), 1u);
        EXPECT_EQ(run.outcomes[0].secondary->value, c.range);
        if (*c.average != '\0') {
            EXPECT_EQ(run.outcomes[0].primary.value, c.average);
        }
    }
}

TEST(SceneCoordinator, CompletesOnceAndSkipsFramesWithoutADrawableOrARender) {
    SceneRun run({0.0, 0.4, 0.5, 0.9, 1.0, 1.3}, 1.0, 1);
    run.target.available = false;
    run.draw(1);
    EXPECT_TRUE(run.target.passes.empty());
    run.target.available = true;
    run.target.renders = false;
    run.draw(1);
    EXPECT_EQ(run.coordinator.frames(), 0) << "a frame the device did not render is not counted";
    run.target.renders = true;
    run.draw(4);
    EXPECT_EQ(run.outcomes.size(), 1u);
    EXPECT_EQ(run.coordinator.frames(), 2);
    EXPECT_EQ(run.target.begun, 4) << "nothing is drawn once the outcome is out";

    run.coordinator.update({"A", 1.0, 1});
    EXPECT_TRUE(run.coordinator.finished()) << "the same request changes nothing";
    run.coordinator.update({"B", 1.0, 1});
    EXPECT_FALSE(run.coordinator.finished());
    EXPECT_EQ(run.coordinator.frames(), 0);
}

TEST(SceneCoordinator, CountsTheTimeOfTheFramesStillInFlightAndGivesNoOutcomeWhenTheyAreLost) {
    for (const bool finishes : {true, false}) {
        SceneRun run({0.0, 1.0, 2.0}, 1.0, 1); // the frames in flight take a second more
        run.target.finishes = finishes;
        run.draw(1);
        EXPECT_EQ(run.target.waitsForFramesInFlight, 1);
        if (!finishes) {
            EXPECT_TRUE(run.outcomes.empty());
            continue;
        }
        ASSERT_EQ(run.outcomes.size(), 1u);
        EXPECT_EQ(run.outcomes[0].primary.value, "0.5");
        EXPECT_DOUBLE_EQ(run.outcomes[0].duration, 2.0);
    }
}

TEST(SceneCoordinator, ScoresTheWorkedExample) {
    // 1,200 frames of 6 passes in 20.05 s at 1920 x 1080: 59.85 FPS, 744.63 MPix/s.
    const BenchmarkOutcome outcome = visibleSceneOutcome(1200, 6, 1920, 1080, 20.05, 50, 70);
    EXPECT_NEAR(outcome.score, 15233.9, 0.05);
    EXPECT_EQ(outcome.status, OutcomeStatus::ok);
    EXPECT_EQ(outcome.primary, (MeasurementLine{"Scene", "59.9", "FPS"}));
    EXPECT_EQ(outcome.secondary, (MeasurementLine{"Min/Max", "50.0 / 70.0", "FPS"}));
    EXPECT_DOUBLE_EQ(outcome.duration, 20.05);
}
