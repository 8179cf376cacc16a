// SPDX-License-Identifier: Apache-2.0
// The visible scene's measuring arithmetic, driven through a fake drawable and a scripted clock.
#include "workloads/gpu/scene_coordinator.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

using namespace quarbel;
using namespace quarbel::gpu;

namespace {

class FakeTarget final : public SceneFrameTarget {
  public:
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

// Each frame reads the clock twice: when it starts and when it is presented; the last frame
// reads it once more when the frames in flight have finished.
struct ScriptedClock {
    std::deque<double> times;
    double operator()() {
        const double t = times.front();
        if (times.size() > 1) times.pop_front();
        return t;
    }
};

struct SceneRun {
    std::vector<VisualBenchmarkLiveStats> live;
    std::vector<BenchmarkOutcome> outcomes;
    std::shared_ptr<ScriptedClock> clock = std::make_shared<ScriptedClock>();

    MetalBenchmarkSceneCoordinator coordinator(double seconds, int workload) {
        return MetalBenchmarkSceneCoordinator(
            {"A", seconds, workload}, [this](const VisualBenchmarkLiveStats& s) { live.push_back(s); },
            [this](const BenchmarkOutcome& o) { outcomes.push_back(o); },
            [clock = clock] { return (*clock)(); });
    }
};

} // namespace

TEST(SceneCoordinator, DrawsThreePassesPerWorkloadLevelAndAtLeastOne) {
    const struct {
        int workload;
        int passes;
    } cases[] = {{-4, 1}, {0, 1}, {1, 3}, {2, 6}};
    for (const auto& c : cases) {
        SceneRun run;
        run.clock->times = {10.0, 10.5};
        FakeTarget target;
        target.size = {800, 400};
        auto coordinator = run.coordinator(0.1, c.workload);
        coordinator.draw(target);
        ASSERT_EQ(target.passes.size(), std::size_t(c.passes)) << c.workload;
        for (int p = 0; p < c.passes; ++p) {
            EXPECT_FLOAT_EQ(target.passes[p].time, float(p) * 0.021f);
            EXPECT_FLOAT_EQ(target.passes[p].aspect, 2.0f);
            EXPECT_FLOAT_EQ(target.passes[p].detail, float(c.workload));
            EXPECT_FLOAT_EQ(target.passes[p].mode, float(p));
        }
        ASSERT_EQ(run.outcomes.size(), 1u);
        EXPECT_EQ(run.outcomes[0].detail, "Metal fly-through with 1 visible frames and " +
                                              std::to_string(c.passes) + "x workload per frame.");
    }
}

TEST(SceneCoordinator, FewerThanThreeFramesShowTheAverageAsMinimumAndMaximum) {
    SceneRun run;
    run.clock->times = {0.0, 0.5, 0.6, 1.0};
    FakeTarget target;
    auto coordinator = run.coordinator(1.0, 2);
    coordinator.draw(target);
    coordinator.draw(target);
    ASSERT_EQ(run.outcomes.size(), 1u);
    EXPECT_EQ(run.outcomes[0].primary, (MeasurementLine{"Scene", "2.0", "FPS"}));
    EXPECT_EQ(run.outcomes[0].secondary, (MeasurementLine{"Min/Max", "2.0 / 2.0", "FPS"}));
    EXPECT_EQ(run.live.size(), 2u) << "a live update once at least 0.25 s passed since the last";
}

TEST(SceneCoordinator, RangeLeavesOutTheFirstTwoFramesAndMeasuresBetweenFrames) {
    struct Case {
        const char* name;
        std::deque<double> times; // the clock at each frame's start and end, then at the finish
        double seconds;
        const char* range;
        const char* average; // empty: not checked
    };
    const Case cases[] = {
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
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SceneRun run;
        run.clock->times = c.times;
        FakeTarget target;
        auto coordinator = run.coordinator(c.seconds, 1);
        for (int i = 0; i < 4; ++i)
            coordinator.draw(target);
        ASSERT_EQ(run.outcomes.size(), 1u);
        EXPECT_EQ(run.outcomes[0].secondary->value, c.range);
        if (*c.average != '\0') {
            EXPECT_EQ(run.outcomes[0].primary.value, c.average);
        }
    }
}

TEST(SceneCoordinator, CompletesOnceAndSkipsFramesWithoutADrawableOrARender) {
    SceneRun run;
    run.clock->times = {0.0, 0.4, 0.5, 0.9, 1.0, 1.3};
    FakeTarget target;
    auto coordinator = run.coordinator(1.0, 1);
    target.available = false;
    coordinator.draw(target);
    EXPECT_TRUE(target.passes.empty());
    target.available = true;
    target.renders = false;
    coordinator.draw(target);
    EXPECT_EQ(coordinator.frames(), 0) << "a frame the device did not render is not counted";
    target.renders = true;
    for (int i = 0; i < 4; ++i)
        coordinator.draw(target);
    EXPECT_TRUE(coordinator.finished());
    EXPECT_EQ(run.outcomes.size(), 1u);
    EXPECT_EQ(coordinator.frames(), 2);
    EXPECT_EQ(target.begun, 4) << "nothing is drawn once the outcome is out";

    coordinator.update({"A", 1.0, 1});
    EXPECT_TRUE(coordinator.finished()) << "the same request changes nothing";
    coordinator.update({"B", 1.0, 1});
    EXPECT_FALSE(coordinator.finished());
    EXPECT_EQ(coordinator.frames(), 0);
}

TEST(SceneCoordinator, CountsTheTimeOfTheFramesStillInFlightAndGivesNoOutcomeWhenTheyAreLost) {
    for (const bool finishes : {true, false}) {
        SceneRun run;
        run.clock->times = {0.0, 1.0, 2.0}; // the frames in flight take a second more
        FakeTarget target;
        target.finishes = finishes;
        auto coordinator = run.coordinator(1.0, 1);
        coordinator.draw(target);
        EXPECT_EQ(target.waitsForFramesInFlight, 1);
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
