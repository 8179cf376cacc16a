// SPDX-License-Identifier: Apache-2.0
// The run history window over runs the window itself kept, and the summary's Compare and Share.
#include "app/history_window.h"
#include "app/run_history_recorder.h"
#include "app/summary_actions.h"
#include "results/shared_report.h"
#include "sensors/fake_tree.h"
#include "support/window_fixture.h"
#include "ui/cards/result_card_exporter.h"
#include "ui/views/summary_panel.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTest>

using namespace quarbel;
using namespace quarbel::app;
using quarbel::testing::FakeTree;

namespace {

// A store whose finished and stopped runs are kept in `directory`, as the window keeps them.
struct KeptRuns : test::FakeStore {
    FakeTree tree;
    const std::string directory = tree.path("runs");
    RunHistoryRecorder recorder{store, directory};
};

QString q(const std::string& text) { return QString::fromStdString(text); }

std::string contentsOf(const std::string& path) {
    QFile file(q(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

QMessageBox* takeErrorBox(HistoryView& view) {
    auto* box = view.findChild<QMessageBox*>(QStringLiteral("historySaveError"));
    if (box != nullptr) box->setObjectName({}); // the next failure's box is found, not this one
    return box;
}

} // namespace

TEST(RunHistoryWindow, ComparesTheNewestCompleteRunWithTheNewestEarlierOneThatSharesABenchmark) {
    KeptRuns runs;
    runs.run({BenchmarkID::cpuInteger}, 100);
    runs.run({BenchmarkID::memoryStream}, 50); // nothing in common with the others
    runs.run({BenchmarkID::cpuInteger}, 200);
    runs.stopped(BenchmarkID::cpuInteger); // the newest run, stopped before its benchmark ended

    HistoryView view(runs.directory);
    view.reload();
    ASSERT_EQ(view.runList()->count(), 4);
    const auto rowText = [&](int row) { return view.runList()->item(row)->text().toStdString(); };
    EXPECT_NE(rowText(0).find("No benchmark finished"), std::string::npos) << rowText(0);
    EXPECT_NE(rowText(0).find("Stopped before its end"), std::string::npos);
    EXPECT_NE(rowText(1).find("CPU Single-Core"), std::string::npos) << "rows name their benchmarks";
    EXPECT_NE(rowText(1).find("200.00 pts"), std::string::npos) << rowText(1);
    EXPECT_NE(rowText(2).find("Memory Stream"), std::string::npos);

    EXPECT_EQ(view.runList()->currentRow(), 1) << "the newest complete run, not the stopped one";
    EXPECT_EQ(view.baselineChooser()->currentIndex(), 3) << "the newest earlier run in common";
    const ui::ComparisonTable& table = view.comparison()->table();
    ASSERT_EQ(table.rows.size(), 1u);
    EXPECT_EQ(table.rows[0].verdict, Verdict::faster);
    EXPECT_EQ(table.rows[0].change, "+100.0 %");
    // Like for like; only the fake workloads' lack of slices is worth a word.
    ASSERT_EQ(table.warnings.size(), 1);
    EXPECT_TRUE(table.warnings[0].startsWith("No slice rates")) << table.warnings[0].toStdString();

    // A run nothing earlier shares a benchmark with is compared with nothing, and says so.
    view.runList()->setCurrentRow(2);
    EXPECT_EQ(view.baselineChooser()->currentIndex(), -1);
    EXPECT_TRUE(view.comparison()->table().rows.empty());
    EXPECT_TRUE(view.comparison()->table().emptyText.startsWith("No earlier complete run"));
    // Any other run can still be chosen by hand, the stopped one included.
    EXPECT_FALSE(qobject_cast<QStandardItemModel*>(view.baselineChooser()->model())->item(2)->isEnabled())
        << "a run is not compared with itself";
    view.baselineChooser()->setCurrentIndex(0);
    EXPECT_TRUE(view.comparison()->table().warnings.contains("A run was stopped before its end."));

    // A run the user selected stays selected when a new run is kept.
    runs.run({BenchmarkID::cpuInteger}, 300);
    view.reload();
    EXPECT_TRUE(view.runList()->currentItem()->text().contains("Memory Stream"));

    // The shipped results of known machines follow the history's own runs as baselines.
    view.baselineChooser()->setCurrentIndex(view.runList()->count());
    EXPECT_TRUE(view.baselineChooser()->currentText().startsWith("Reference: devvm-epyc2"))
        << view.baselineChooser()->currentText().toStdString();
}

TEST(RunHistoryWindow, ChangesAreInPercentAndRunsAreNamedByTheirBenchmarks) {
    const std::pair<std::optional<double>, const char*> changes[] = {
        {1.042, "+4.2 %"}, {0.88, "\u221212.0 %"}, {1.0, "0.0 %"},
        {0.9996, "0.0 %"}, {2.5, "+150.0 %"},      {std::nullopt, "-"}};
    for (const auto& [ratio, text] : changes)
        EXPECT_EQ(changeText(ratio), QString::fromUtf8(text)) << ratio.value_or(0);

    SavedRun run;
    for (BenchmarkID id : kAllBenchmarks)
        run.results.push_back({std::string(rawValue(id)), std::string(title(id)), "ok", 1, std::nullopt, {}});
    EXPECT_EQ(benchmarksText(run), "Full suite");
    run.results.resize(5);
    EXPECT_EQ(benchmarksText(run), "CPU Single-Core, CPU Multi-Core and 3 more");
    run.results.resize(2);
    EXPECT_EQ(benchmarksText(run), "CPU Single-Core, CPU Multi-Core");
    run.runScore = 1234;
    run.quick = true;
    EXPECT_EQ(outcomeText(run), QStringLiteral("1234.0 pts \u00B7 quick"));
    run.results[0].status = "skipped";
    EXPECT_TRUE(outcomeText(run).contains(QStringLiteral("pts"))) << "one benchmark ran";
    run.results[1].status = "skipped";
    EXPECT_EQ(outcomeText(run), QStringLiteral("Skipped \u00B7 quick"))
        << "no 0.00 pts for a run that could not run";
}

TEST(RunHistoryWindow, APastRunOpensReadOnlyAndSavesItsCardsAndReportOrSaysWhyNot) {
    KeptRuns runs;
    runs.fakes.set(BenchmarkID::ssdRandom, test::FakeBehaviour::failing);
    runs.store.run({BenchmarkID::cpuCrypto, BenchmarkID::ssdRandom}, false);
    ASSERT_TRUE(runs.waitIdle());

    HistoryView view(runs.directory);
    view.reload();
    QTest::mouseClick(view.resultsButton(), Qt::LeftButton);
    EXPECT_TRUE(view.showingResults());
    const auto& report = view.results()->report();
    ASSERT_TRUE(report.has_value());
    ASSERT_EQ(report->results.size(), 2u);
    EXPECT_EQ(report->results[1].outcome.status, OutcomeStatus::failed);
    ASSERT_TRUE(report->summary.has_value());
    EXPECT_EQ(report->summary->failed, 1);

    const std::string folder = runs.tree.path("cards");
    QDir().mkpath(q(folder));
    ASSERT_TRUE(view.saveCards(q(folder)));
    const QStringList saved = QDir(q(folder)).entryList(QDir::Files);
    ASSERT_EQ(saved.size(), 3) << saved.join(' ').toStdString();
    ASSERT_EQ(saved.filter("Quarbel-SSD-Random-").size(), 1);
    ASSERT_EQ(saved.filter("Quarbel-Global-Result-").size(), 1);
    EXPECT_TRUE(view.statusText().contains("Saved 3 result cards in")) << view.statusText().toStdString();
    EXPECT_EQ(takeErrorBox(view), nullptr);

    const std::string copy = runs.tree.path("copy.json");
    ASSERT_TRUE(view.saveReport(q(copy)));
    EXPECT_EQ(contentsOf(copy), contentsOf(listHistory(runs.directory).runs.at(0).path))
        << "the report as it was kept";

    // Failures: a folder that is not there, a card name taken by a folder half-way through
    // (the global card already written is taken back), a report path that is a folder.
    const QDir blockedDir(q(runs.tree.path("blocked")));
    QDir().mkpath(blockedDir.path());
    const QDateTime now = QDateTime::currentDateTime();
    for (const QDateTime& at : {now, now.addSecs(60)})
        blockedDir.mkdir(cards::ResultCardExporter::filename(
            cards::ResultCardExporter::benchmarkCardPrefix(BenchmarkID::cpuCrypto), at));
    const char* cardsNotSaved = "Could not save the result cards";
    const struct {
        const char* name;
        std::function<bool()> save;
        const char* message;
    } failures[] = {
        {"missing folder", [&] { return view.saveCards(q(runs.tree.path("missing"))); }, cardsNotSaved},
        {"card name taken", [&] { return view.saveCards(blockedDir.path()); }, cardsNotSaved},
        {"report onto a folder", [&] { return view.saveReport(q(folder)); }, "Could not save the report"},
    };
    for (const auto& failure : failures) {
        EXPECT_FALSE(failure.save()) << failure.name;
        QMessageBox* box = takeErrorBox(view);
        ASSERT_NE(box, nullptr) << failure.name;
        EXPECT_EQ(box->text(), failure.message);
        EXPECT_FALSE(box->informativeText().isEmpty());
    }
    EXPECT_TRUE(blockedDir.entryList(QDir::Files).isEmpty()) << "nothing half-written stays behind";
    EXPECT_FALSE(QFileInfo::exists(q(runs.tree.path("missing"))));
}

TEST(RunHistoryWindow, TheTrendFollowsEachBenchmarkOverRunsOfTheSameLength) {
    const auto run = [](bool quick, bool stopped, std::vector<std::pair<std::string, double>> scores) {
        SavedRun saved;
        saved.quick = quick;
        saved.stopped = stopped;
        for (const auto& [id, score] : scores) {
            const std::string name(title(*benchmarkFromRawValue(id)));
            saved.results.push_back({id, name, score > 0 ? "ok" : "failed", score, std::nullopt, {}});
        }
        return saved;
    };
    // Newest first, as the history lists them.
    const std::vector<SavedRun> runs = {
        run(false, false, {{"cpuInteger", 130}, {"memoryStream", 30}}),
        run(true, false, {{"cpuInteger", 13}}),                        // quick: not on a full run's trend
        run(false, true, {{"cpuInteger", 999}}),                       // stopped
        run(false, false, {{"cpuInteger", 120}, {"memoryStream", 0}}), // memoryStream failed
        run(false, false, {{"cpuInteger", 110}}),
    };
    const auto series = trendSeries(runs, 0);
    ASSERT_EQ(series.size(), 2u);
    std::vector<double> scores;
    for (const auto& point : series[0].points)
        scores.push_back(point.score);
    EXPECT_EQ(scores, (std::vector<double>{110, 120, 130})) << "oldest first, full complete runs only";
    EXPECT_TRUE(series[0].points.back().selected);
    EXPECT_FALSE(series[0].points.front().selected);
    EXPECT_EQ(series[1].points.size(), 1u) << "a failed result is no point";
    EXPECT_EQ(trendSeries(runs, 0, 2)[0].points.front().score, 120) << "the newest ones are kept";
    const auto older = trendSeries(runs, 4, 2)[0].points;
    ASSERT_EQ(older.size(), 2u);
    EXPECT_TRUE(older[0].selected && older[0].score == 110 && older[1].score == 120)
        << "an older run's trend is drawn around it";
    EXPECT_EQ(trendSeries(runs, 1)[0].points.size(), 1u) << "a quick run's trend has only quick runs";
}

TEST(RunHistoryWindow, TheSummaryComparesTheKeptRunWithAKnownMachineAndSharesItAsOnePage) {
    KeptRuns runs;
    ui::SummaryPanel panel(runs.store);
    HistoryWindowController history(runs.directory);
    SummaryActions actions(runs.store, panel, runs.recorder, history);
    EXPECT_FALSE(panel.shareButton()->isEnabled()) << "nothing kept yet";
    EXPECT_FALSE(actions.share(q(runs.tree.path("early.html"))));

    QString keptPath;
    QObject::connect(&runs.recorder, &RunHistoryRecorder::runKept,
                     [&](const QString& path) { keptPath = path; });
    runs.run({BenchmarkID::cpuInteger}, 100);
    ASSERT_FALSE(keptPath.isEmpty());
    EXPECT_TRUE(panel.compareButton()->isEnabled());
    EXPECT_TRUE(panel.shareButton()->isEnabled());

    // The page carries the kept report byte for byte; a folder is not a page to write.
    ASSERT_TRUE(actions.share(q(runs.tree.path("run.html"))));
    const SharedReport shared = embeddedReport(contentsOf(runs.tree.path("run.html")));
    EXPECT_EQ(shared.problem, "");
    EXPECT_EQ(shared.report, contentsOf(keptPath.toStdString()));
    EXPECT_FALSE(actions.share(q(runs.directory)));
    EXPECT_TRUE(runs.store.logLines().last().contains(QStringLiteral("Run not shared: the page ")))
        << qPrintable(runs.store.logLines().last());

    // Each shipped machine is offered; choosing one opens the history comparing with it.
    Q_EMIT actions.compareMenu()->aboutToShow();
    QAction* reference = nullptr;
    for (QAction* action : actions.compareMenu()->actions())
        if (action->text().startsWith(QStringLiteral("devvm-epyc2 \u00B7 "))) reference = action;
    ASSERT_NE(reference, nullptr);
    reference->trigger();
    auto* view = qobject_cast<HistoryView*>(history.window());
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->runList()->currentRow(), 0);
    EXPECT_TRUE(view->baselineChooser()->currentText().startsWith(QStringLiteral("Reference: devvm-epyc2")))
        << qPrintable(view->baselineChooser()->currentText());
    EXPECT_FALSE(view->comparison()->table().rows.empty());
    history.window()->close();
}
