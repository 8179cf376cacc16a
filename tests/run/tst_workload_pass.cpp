// SPDX-License-Identifier: Apache-2.0
#include "run/background_tasks.h"
#include "run/workload_pass.h"

#include "fake_workloads.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::test;

// A cancelled pass still hands back what it measured; its stability is judged only for a full
// budget of a benchmark that keeps one pace.
TEST(WorkloadPass, ShowsProgressStopsWhenCancelledAndHandsBackItsSlices) {
    const struct {
        BenchmarkID id;
        double budgetScale;
        bool stability;
    } cases[] = {{BenchmarkID::cpuInteger, 1.0, true},
                 {BenchmarkID::ssdRandom, 1.0, false},
                 {BenchmarkID::cpuInteger, 0.1, false}};
    for (const auto& c : cases) {
        QObject receiver;
        BackgroundTasks background(&receiver);
        FakeWorkloads fakes;
        fakes.set(c.id, FakeBehaviour::untilCancelled);
        WorkloadPass pass(&receiver, background, [&](BenchmarkID id, const WorkloadContext& context) {
            return fakes.run(id, context);
        });
        std::optional<WorkloadPass::Ended> ended;
        pass.start(c.id, c.budgetScale, [&](WorkloadPass::Ended e) { ended = std::move(e); });
        ASSERT_TRUE(processEventsUntil([&] {
            const auto report = pass.sample();
            return report && report->unitsDone >= 50;
        }));
        pass.cancel();
        EXPECT_FALSE(pass.sample()) << "no longer running";
        ASSERT_TRUE(processEventsUntil([&] { return ended.has_value(); }));
        EXPECT_EQ(fakes.cancelledSeen(), 1);
        EXPECT_EQ(ended->outcome.status, OutcomeStatus::ok);
        EXPECT_FALSE(ended->slices.empty());
        EXPECT_EQ(ended->stability.has_value(), c.stability) << title(c.id) << " at " << c.budgetScale;
    }
}
