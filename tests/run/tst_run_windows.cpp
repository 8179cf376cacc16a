// SPDX-License-Identifier: Apache-2.0
#include "run/run_windows.h"

#include "fake_presenter.h"
#include "fake_workloads.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::test;

namespace {
struct Windows {
    FakePresenter presenter;
    RunWindows windows{&presenter, [] {}, [] {}};
    std::vector<BenchmarkOutcome> outcomes;
    RunWindows::Completion record() {
        return [this](BenchmarkOutcome outcome) { outcomes.push_back(std::move(outcome)); };
    }
};
} // namespace

TEST(RunWindows, TheVisualPassResumesOnceFromTheEventLoopAndIgnoresEarlierWindows) {
    Windows w;
    w.windows.runVisual(20, w.record());
    ASSERT_TRUE(w.windows.request());
    EXPECT_EQ(w.presenter.lastRequest.seconds, 20.0);
    w.presenter.live({60, 59.5, 50, 70});
    EXPECT_EQ(w.windows.liveStats().value().frames, 60);

    const auto staleLive = w.presenter.live;
    const auto staleCompletion = w.presenter.completion;
    w.presenter.completion(FakeWorkloads::okOutcome(321));
    w.presenter.completion(FakeWorkloads::okOutcome(999));
    EXPECT_TRUE(w.outcomes.empty()) << "resumed from the event loop, not inside the window's call";
    EXPECT_FALSE(w.windows.request());
    EXPECT_FALSE(w.windows.open());
    EXPECT_EQ(w.presenter.closes, 1);
    processEventsFor(20);
    ASSERT_EQ(w.outcomes.size(), 1u);
    EXPECT_EQ(w.outcomes[0].score, 321);

    w.windows.runVisual(20, w.record());
    staleLive({1, 1, 1, 1});
    EXPECT_FALSE(w.windows.liveStats()) << "statistics of an earlier window are ignored";
    staleCompletion(FakeWorkloads::okOutcome(5));
    w.windows.endVisual(failedOutcome("Run stopped by the user."));
    processEventsFor(20);
    ASSERT_EQ(w.outcomes.size(), 2u);
    EXPECT_EQ(w.outcomes[1].status, OutcomeStatus::failed);
}

TEST(RunWindows, AVisualPassFailsWithoutADeviceOrAfterTheStallLimitWithoutFrames) {
    const struct {
        bool device;
        std::string problem, detail;
    } cases[] = {{false, "", "Metal is not available on this machine."},
                 {true, "", "The visual benchmark window showed no frame for 1 seconds."},
                 {true, "the GPU stopped answering",
                  "The visual benchmark could not render: the GPU stopped answering."}};
    for (const auto& c : cases) {
        Windows w;
        w.presenter.device = c.device;
        w.presenter.problem = c.problem;
        w.windows.setStallLimit(1.0);
        w.windows.runVisual(20, w.record());
        ASSERT_TRUE(processEventsUntil([&] { return !w.outcomes.empty(); })) << c.detail;
        EXPECT_EQ(w.outcomes[0].detail, c.detail);
        if (w.presenter.completion) w.presenter.completion(FakeWorkloads::okOutcome(5)); // too late: ignored
        processEventsFor(20);
        EXPECT_EQ(w.outcomes.size(), 1u);
    }
}
