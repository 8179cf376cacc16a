#include "app/history_window.h"
#include "app/run_history_recorder.h"
#include "fake_workloads.h"
#include "run/benchmark_store.h"
#include "sensors/fake_tree.h"
#include "support/event_loop.h"

#include <gtest/gtest.h>

#include <QListWidget>

using namespace quarbel;
using namespace quarbel::app;
using quarbel::testing::FakeTree;

TEST(RunHistoryWindow, WindowRunsAreKeptAndTheSelectedRunIsComparedWithTheNewest) {
    FakeTree tree;
    const std::string directory = tree.path("runs");
    test::FakeWorkloads fakes;
    BenchmarkStore store(fakes.services());
    RunHistoryRecorder recorder(store, directory);
    QStringList kept;
    QObject::connect(&recorder, &RunHistoryRecorder::runKept, [&](const QString& path) { kept << path; });

    // A run, a faster one, then one stopped before its end.
    for (double score : {100.0, 200.0}) {
        fakes.set(BenchmarkID::cpuInteger, test::FakeBehaviour::instantOk, score);
        store.run({BenchmarkID::cpuInteger}, false);
        ASSERT_TRUE(test::processEventsUntil([&] { return !store.busy(); }));
    }
    fakes.set(BenchmarkID::cpuInteger, test::FakeBehaviour::untilCancelled);
    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(test::processEventsUntil([&] { return fakes.running() == 1; }));
    store.stop();
    ASSERT_TRUE(test::processEventsUntil([&] { return !store.busy(); }));
    ASSERT_EQ(kept.size(), 3);

    const HistoryListing history = listHistory(directory);
    ASSERT_EQ(history.runs.size(), 3u);
    EXPECT_TRUE(history.runs[0].stopped) << "the newest run is the stopped one";
    EXPECT_FALSE(history.runs[1].stopped);
    EXPECT_DOUBLE_EQ(history.runs[1].results.at(0).score, 200.0);

    HistoryView view(directory);
    view.reload();
    ASSERT_EQ(view.runList()->count(), 3);
    EXPECT_EQ(view.runList()->currentRow(), 1) << "the run before the newest is compared by default";
    view.runList()->setCurrentRow(2);
    // The first run against the newest: stopped before its benchmark ended, so nothing to compare.
    const ui::ComparisonTable& table = view.comparison()->table();
    EXPECT_TRUE(table.rows.empty());
    EXPECT_TRUE(table.warnings.contains("A run was stopped before its end."));

    const ui::ComparisonTable faster = comparisonTable(history.runs[2], history.runs[1]);
    ASSERT_EQ(faster.rows.size(), 1u);
    EXPECT_EQ(faster.rows[0].verdict, Verdict::faster);
    EXPECT_EQ(faster.rows[0].ratio, "2.000");
}
