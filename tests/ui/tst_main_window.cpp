// SPDX-License-Identifier: Apache-2.0
// The main window driven through whole runs of scriptable fake workloads.
#include "support/other_quarbel_run.h"
#include "support/temp_dir.h"
#include "support/window_fixture.h"
#include "text_recorder.h"
#include "ui/cards/card_content.h"
#include "ui/views/live_text.h"
#include "ui/views/log_panel.h"
#include "ui/views/main_window.h"
#include "ui/views/result_panel.h"
#include "ui/views/run_header.h"
#include "ui/views/score_gauge.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/stage_view.h"
#include "ui/views/summary_panel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::ui;
using quarbel::test::FakeBehaviour;
using quarbel::test::Window;

namespace {

// Run, All, Stop enabled; Accuracy switch checked.
std::array<bool, 4> controls(const MainWindow& window) {
    const RunHeader* h = window.header();
    return {h->runButton()->isEnabled(), h->allButton()->isEnabled(), h->stopButton()->isEnabled(),
            h->accuracySwitch()->isChecked()};
}

// What `widget` paints, its children included, as one line of text.
QString paintedText(QWidget& widget, bool legible = false) {
    const auto paint = [&](QPainter& painter) { widget.render(&painter); };
    return test::recordTexts(widget.size(), paint, legible).join(QLatin1Char(' ')).simplified();
}

} // namespace

TEST(MainWindow, ControlsActExactlyWhenTheyCanAcrossARun) {
    Window w;
    w.fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
    EXPECT_EQ(controls(w.window), (std::array{true, true, false, false}));
    EXPECT_FALSE(w.window.stage()->isVisible());

    w.store.setSelectedID(BenchmarkID::cpuInteger);
    QTest::mouseClick(w.window.header()->runButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.store.runningID().has_value(); }, 5000));
    EXPECT_EQ(controls(w.window), (std::array{false, false, true, false}));
    EXPECT_TRUE(w.window.stage()->isVisible()) << "a CPU benchmark shows its inline stage while it runs";

    // The switch may be flipped mid-run; it only applies to the next start.
    QTest::mouseClick(w.window.header()->accuracySwitch(), Qt::LeftButton);
    EXPECT_TRUE(w.store.accuracyMode());

    QTest::mouseClick(w.window.header()->stopButton(), Qt::LeftButton);
    ASSERT_TRUE(w.waitIdle());
    EXPECT_EQ(controls(w.window), (std::array{true, true, false, true}));
    EXPECT_FALSE(w.window.stage()->isVisible());
    EXPECT_FALSE(w.window.summaryPanel()->isVisible()) << "a stopped run has no summary";
}

TEST(MainWindow, ASuiteMovesTheSelectionDrawsEachRateTraceAndEndsWithItsSummary) {
    Window w;
    w.fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::steady);
    w.fakes.set(BenchmarkID::cpuFloating, FakeBehaviour::steady);
    w.fakes.set(BenchmarkID::cpuCrypto, FakeBehaviour::failing);
    w.fakes.set(BenchmarkID::openCLCompute, FakeBehaviour::skipping);
    std::vector<BenchmarkID> selections;
    QObject::connect(&w.store, &BenchmarkStore::selectedIDChanged,
                     [&] { selections.push_back(w.store.selectedID()); });

    QTest::mouseClick(w.window.header()->allButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.store.runningID() == BenchmarkID::cpuFloating; }, 5000));
    // The second benchmark's clock starts below where the first one's ended.
    EXPECT_TRUE(QTest::qWaitFor([&] { return w.window.stage()->rateSampleCount() >= 2; }, 700));
    ASSERT_TRUE(w.waitIdle());
    EXPECT_EQ(selections, std::vector<BenchmarkID>(kAllBenchmarks.begin(), kAllBenchmarks.end()));
    EXPECT_TRUE(w.window.summaryPanel()->isVisible());
    EXPECT_EQ(w.store.rows()[BenchmarkID::cpuCrypto].state, TestRunState::failed);
    EXPECT_EQ(w.store.rows()[BenchmarkID::openCLCompute].state, TestRunState::skipped);
    EXPECT_EQ(w.store.completedCount(), 11);

    // A click on a row selects it, and the result panel follows the selection.
    const QRect row = w.window.sidebar()->rowRect(BenchmarkID::cpuInteger);
    QTest::mouseClick(w.window.sidebar(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(w.store.selectedID(), BenchmarkID::cpuInteger);
    EXPECT_TRUE(w.window.resultPanel()->isVisible());
}

// The stage repaints only what moved on each tick; what is on the screen after a few ticks
// must still be what a whole repaint draws, for the inline stage and for a poster.
TEST(MainWindow, TheStageOnScreenMatchesAWholeRepaintAfterPartialOnes) {
    for (const BenchmarkID id :
         {BenchmarkID::cpuInteger, BenchmarkID::rawCPUDecode, BenchmarkID::metalCompute}) {
        SCOPED_TRACE(title(id));
        Window w;
        w.fakes.set(id, FakeBehaviour::gated);
        w.store.run({id}, false);
        ASSERT_TRUE(QTest::qWaitFor([&] { return w.store.runningID().has_value(); }, 5000));
        QSignalSpy ticks(&w.store, &BenchmarkStore::currentRunTickChanged);
        for (int tick = 0; tick < 5; ++tick)
            ASSERT_TRUE(ticks.wait(2000));
        QCoreApplication::processEvents(); // the last tick's repaint reaches the screen

        StageView* stage = w.window.stage();
        const QImage onScreen = QGuiApplication::primaryScreen()
                                    ->grabWindow(w.window.winId())
                                    .toImage()
                                    .copy(QRect(stage->mapTo(&w.window, QPoint(0, 0)), stage->size()))
                                    .convertToFormat(QImage::Format_RGB32);
        const QImage whole = stage->grab().toImage().convertToFormat(QImage::Format_RGB32);
        EXPECT_TRUE(onScreen == whole) << "a part that changed was left out of the tick's repaint";
        w.fakes.release();
        ASSERT_TRUE(w.waitIdle());
    }
}

TEST(RunHeader, NamesTheWaitForTheMachineToCoolAndTheBenchmarkAfterIt) {
    Window w;
    w.store.setCooldown(CooldownSetting{CooldownSetting::Mode::fixed, 1});
    w.store.run({BenchmarkID::cpuInteger, BenchmarkID::memoryStream}, false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !w.store.cooldownText().isEmpty(); }, 5000));
    QTest::qWait(20);
    const QString wait = w.store.cooldownText();
    const QString header = paintedText(*w.window.header());
    EXPECT_TRUE(header.contains(QStringLiteral("COOLING DOWN BEFORE Memory Stream"))) << header.toStdString();
    EXPECT_TRUE(header.contains(wait)) << header.toStdString();
    EXPECT_TRUE(paintedText(*w.window.stage()).contains(wait))
        << "the stage shows the wait, not the last benchmark";
    EXPECT_TRUE(w.window.header()->stopButton()->isEnabled());
    ASSERT_TRUE(w.waitIdle());
    EXPECT_FALSE(paintedText(*w.window.header()).contains(QStringLiteral("COOLING")));
}

// Other processes take 80 % of the machine's CPU time between any two readings.
TEST(ResultPanel, ShowsWholeDetailsAndTellsHowToEnableASkippedDeviceOrWhatDisturbedIt) {
    auto readings = std::make_shared<std::uint64_t>(0);
    Window w([&](StoreServices& services) {
        services.readCpuTicks = [readings] {
            const std::uint64_t n = ++*readings;
            return std::optional<CpuTickSample>(CpuTickSample{900 * n, 0, 1000 * n, 100 * n});
        };
        services.runWorkload = [fake = services.runWorkload](BenchmarkID id, const WorkloadContext& context) {
            switch (id) {
            case BenchmarkID::metalCompute: return skippedOutcome("Metal is not available on this machine.");
            case BenchmarkID::openCLCompute:
                return skippedOutcome("OpenCL is unavailable or no compatible device was found. The loader "
                                      "lists no platform: no ICD is registered under /etc/OpenCL/vendors, "
                                      "and OCL_ICD_VENDORS names no other folder with one in it.");
            default: return fake(id, context);
            }
        };
    });
    w.fakes.queueScores(BenchmarkID::cineTile, {1010, 980, 1000});
    w.fakes.set(BenchmarkID::cpuCrypto, FakeBehaviour::failing);
    BenchmarkStore& store = w.store;
    MainWindow& window = w.window;
    const struct {
        BenchmarkID id;
        bool accuracy;
        std::vector<const char*> shown;
        std::vector<const char*> absent;
    } cases[] = {
        {BenchmarkID::cineTile,
         true,
         {"pass scores 1010.0, 980.00, 1000.0 pts; spread 3.0%; confidence Good.", "(95 %, 3 passes)",
          "Noisy machine: other work took 80 % of the CPU while it ran."},
         {"TO RUN IT"}},
        {BenchmarkID::metalCompute,
         false,
         {"Metal is not available on this machine.", "mesa-vulkan-drivers", "QUARBEL_GPU", "quarbel info"},
         {"OpenCL"}},
        {BenchmarkID::openCLCompute,
         false,
         {"OpenCL is unavailable or no compatible device was found.", "pocl-opencl-icd", "clinfo"},
         {"Vulkan"}},
        {BenchmarkID::cpuCrypto, false, {"Failed", "Disk exploded."}, {"TO RUN IT"}},
    };
    for (const auto& c : cases) {
        store.setAccuracyMode(c.accuracy);
        window.resize(1400, 820);
        store.run({c.id}, false);
        ASSERT_TRUE(w.waitIdle());
        store.setSelectedID(c.id);
        const bool saveable = store.rows()[c.id].state == TestRunState::done; // a score to put on a card
        EXPECT_EQ(window.resultPanel()->saveCardButton()->isEnabled(), saveable) << title(c.id);
        EXPECT_EQ(window.summaryPanel()->saveCardButton()->isEnabled(), saveable)
            << title(c.id) << ": a run with nothing completed has no card";
        // First as the run left the wide window (the panel was hidden behind the stage while
        // its text changed), then narrow.
        for (const int width : {0, 960}) {
            SCOPED_TRACE(std::string(title(c.id)) + " at " + std::to_string(width));
            if (width > 0) window.resize(width, 820);
            QTest::qWait(20); // the layout settles over a few turns of the event loop
            EXPECT_LE(window.resultPanel()->height(), window.resultPanel()->parentWidget()->height())
                << "the panel is clipped by the place the window gives it";
            const QString panel = paintedText(*window.resultPanel(), true);
            for (const char* text : c.shown)
                EXPECT_TRUE(panel.contains(QString::fromUtf8(text)))
                    << text << " in: " << panel.toStdString();
            for (const char* text : c.absent)
                EXPECT_FALSE(panel.contains(QString::fromUtf8(text))) << text;
            if (saveable) {
                EXPECT_GE(panel.count(QStringLiteral("Noisy")), 2)
                    << "the mark beside the score, and the detail";
            }
            // Under a result, a line for each power domain the sensors measured or found missing.
            if (const auto& outcome = store.rows()[c.id].outcome;
                outcome && outcome->status == OutcomeStatus::ok) {
                for (const cards::EnergyLine& line :
                     cards::energyLines(store.endState(c.id).energy, outcome->score, outcome->primary,
                                        cards::judgedByGpu(c.id, *outcome)))
                    EXPECT_TRUE(panel.contains(QString::fromStdString(line.text))) << line.text;
            }
            // Nowhere a zero score for what has none: not in the summary, not in the list.
            for (QWidget* view : std::initializer_list<QWidget*>{window.resultPanel(), window.summaryPanel(),
                                                                 window.sidebar()})
                EXPECT_FALSE(paintedText(*view).split(QLatin1Char(' ')).contains(QStringLiteral("0.00")))
                    << view->metaObject()->className();
        }
    }
}

TEST(SidebarView, ArrowKeysMoveOverTheRowsAndTabRingsTheSelection) {
    Window w;
    SidebarView* sidebar = w.window.sidebar();
    w.window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&w.window));
    const auto ring = [&] {
        return sidebar->grab(sidebar->rowRect(w.store.selectedID()).adjusted(0, -2, 0, 2)).toImage();
    };
    // The rows in the order the list shows them, category by category.
    std::vector<BenchmarkID> order;
    for (const BenchmarkCategory category : kAllCategories)
        for (const BenchmarkID id : byCategory(category))
            order.push_back(id);
    w.store.setSelectedID(order.back());
    const QImage unfocused = ring();

    w.window.header()->runButton()->setFocus(Qt::OtherFocusReason);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    ASSERT_TRUE(sidebar->hasFocus()) << "the list comes before the run controls";
    EXPECT_NE(ring(), unfocused) << "the focused selection is ringed";

    const std::pair<Qt::Key, BenchmarkID> steps[] = {
        {Qt::Key_Home, order.front()}, {Qt::Key_Up, order.front()},  {Qt::Key_Down, order[1]},
        {Qt::Key_End, order.back()},   {Qt::Key_Down, order.back()}, {Qt::Key_Home, order.front()},
    };
    for (const auto& [key, expected] : steps) {
        QTest::keyClick(sidebar, key);
        EXPECT_EQ(w.store.selectedID(), expected) << QTest::toString(key);
    }
    // Down over a category's last row lands on the next category's first, past its heading.
    for (std::size_t i = 1; i < order.size(); ++i) {
        QTest::keyClick(sidebar, Qt::Key_Down);
        EXPECT_EQ(w.store.selectedID(), order[i]) << title(order[i]);
    }

    QTest::mouseClick(sidebar, Qt::LeftButton, {}, sidebar->rowRect(w.store.selectedID()).center());
    EXPECT_TRUE(sidebar->hasFocus());
    EXPECT_EQ(ring(), unfocused) << "a click shows where it went without a ring";
    QTest::keyClick(sidebar, Qt::Key_Tab);
    EXPECT_TRUE(w.window.header()->runButton()->hasFocus());
    // On through the run controls (Stop is disabled while idle): the Quick switch follows Accuracy.
    for (QWidget* next :
         std::initializer_list<QWidget*>{w.window.header()->allButton(), w.window.header()->accuracySwitch(),
                                         w.window.header()->quickSwitch()}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), next) << next->objectName().toStdString();
    }

    // Return on the list and Enter on Run start the selected benchmark.
    const auto runsStarted = [&] { return w.store.logLines().filter(QStringLiteral("] Running ")).size(); };
    for (const auto& [target, key] : {std::pair<QWidget*, Qt::Key>{sidebar, Qt::Key_Return},
                                      {w.window.header()->runButton(), Qt::Key_Enter}}) {
        const auto before = runsStarted();
        target->setFocus(Qt::OtherFocusReason);
        QTest::keyClick(target, key);
        ASSERT_TRUE(w.waitIdle());
        EXPECT_EQ(runsStarted(), before + 1) << QTest::toString(key);
    }
}

TEST(LogPanel, HoldsEveryKeptLineFollowsTheNewestAndCopies) {
    test::FakeStore fake;
    BenchmarkStore& store = fake.store;
    LogPanel panel(store);
    panel.resize(600, 150);
    panel.show();
    QPlainTextEdit* view = panel.textView();
    QScrollBar* bar = view->verticalScrollBar();
    for (int i = 0; i < 40; ++i) {
        store.logNotice(QStringLiteral("notice %1").arg(i));
        QCoreApplication::processEvents();
        ASSERT_EQ(view->toPlainText(), store.logLines().join(QLatin1Char('\n'))) << i;
    }
    EXPECT_GT(bar->maximum(), 0) << "more lines than fit: the view scrolls";
    EXPECT_EQ(bar->value(), bar->maximum());
    bar->setValue(0);
    store.logNotice(QStringLiteral("while reading back"));
    QCoreApplication::processEvents();
    EXPECT_EQ(bar->value(), 0) << "the reader's place is kept";

    EXPECT_TRUE(view->isReadOnly());
    view->selectAll();
    view->copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), store.logLines().join(QLatin1Char('\n')));
}

TEST(LiveText, RatesInTheResultsOwnUnitAndFrameStatistics) {
    const struct {
        LiveProgress progress;
        OptionalVisualLiveStats visual;
        const char* expected;
    } cases[] = {
        {{}, std::nullopt, ""},
        {{10, 4.0, "rounds"}, std::nullopt, "2.50 rounds/s"},
        {{3000, 2.0, {"frames", "FPS"}}, std::nullopt, "1500.0 FPS"},
        {{3 * 1048576, 2.0, {"bytes", "MB/s", 1.0 / 1048576}}, std::nullopt, "1.50 MB/s"},
        {{50, 1.0, {"passes", "GB/s", 0.192}}, std::nullopt, "9.60 GB/s"},
        {{10, 0.0, "rounds"}, std::nullopt, ""},
        {{},
         VisualBenchmarkLiveStats{120, 59.94, 55.0, 61.26},
         "59.9 FPS average, 55.0 min, 61.3 max, 120 frames"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(liveMetricText(c.progress, c.visual).toStdString(), c.expected);
    EXPECT_EQ(elapsedText(12.34, 45).toStdString(), "12.3 / 45 s");
    EXPECT_EQ(elapsedText(1.04, 1.5).toStdString(), "1.0 / 1.5 s");
}

TEST(ScoreGauge, PlacesScoresOnALogarithmicDial) {
    EXPECT_EQ(gaugeFraction(0), 0);
    EXPECT_EQ(gaugeFraction(1), 0);
    EXPECT_NEAR(gaugeFraction(1000), 0.5, 1e-12);
    EXPECT_EQ(gaugeFraction(5e7), 1);
}

TEST(Stage, OnlyCpuMemoryAndStorageBenchmarksRunInline) {
    std::vector<BenchmarkID> inlineIDs;
    std::ranges::copy_if(kAllBenchmarks, std::back_inserter(inlineIDs), hasInlineStage);
    EXPECT_EQ(inlineIDs,
              (std::vector{BenchmarkID::cpuInteger, BenchmarkID::cpuFloating, BenchmarkID::cpuCrypto,
                           BenchmarkID::memoryStream, BenchmarkID::ssdSequential, BenchmarkID::ssdRealSpeed,
                           BenchmarkID::ssdRandom}));
}

TEST(RunHeader, SaysInAmberWhenAnotherQuarbelRunGoesOnAndTheStageNamesThePass) {
    test::TempDir locks;
    Window w([&](StoreServices& services) { services.runLockDirectory = locks.path().string(); },
             {1200, 820});
    w.fakes.set(BenchmarkID::memoryStream, FakeBehaviour::untilCancelled);
    test::OtherQuarbelRun other(locks.path().string(), "SSD Sequential"); // on a storage benchmark
    ASSERT_TRUE(other.marked());
    w.store.setAccuracyMode(true);
    w.store.run({BenchmarkID::memoryStream}, false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.fakes.running() == 1; }, 5000));
    QTest::qWait(50);
    const QString header = paintedText(*w.window.header());
    const QString another = QStringLiteral("Another Quarbel run is going on beside this one (pid %1, on SSD "
                                           "Sequential)");
    EXPECT_TRUE(header.contains(another.arg(other.pid()))) << header.toStdString();
    EXPECT_EQ(w.store.logLines().filter(QStringLiteral("Another Quarbel run")).size(), 1) << "logged once";
    EXPECT_EQ(w.store.passText(), "pass 1 of 3");
    EXPECT_TRUE(paintedText(*w.window.stage()).contains(QStringLiteral("PASS 1 OF 3")));
    const auto lines = runningStageLines(BenchmarkID::memoryStream);
    const QString first = w.window.stage()->statusLine();
    EXPECT_EQ(first.toStdString(), lines[0]);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.window.stage()->statusLine() != first; }, 3500));
    EXPECT_EQ(w.window.stage()->statusLine().toStdString(), lines[1]);
    w.store.stop();
    ASSERT_TRUE(w.waitIdle());
    EXPECT_TRUE(w.store.concurrentRuns().isEmpty());
    EXPECT_TRUE(w.store.passText().isEmpty());
}
