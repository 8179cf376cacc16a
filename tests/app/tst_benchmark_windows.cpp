// SPDX-License-Identifier: Apache-2.0
// The benchmark windows for real: the visual benchmark's Vulkan scene on Xvfb with the
// system's Vulkan driver, and the workload animation windows around their benchmarks.
#include "app/animation_window_controller.h"
#include "app/app_delegate.h"
#include "app/desktop_window_presenter.h"
#include "app/scene_window.h"
#include "support/window_fixture.h"

#include <QApplication>
#include <QGuiApplication>
#include <QWindow>

#include <gtest/gtest.h>

#include <regex>
#include <thread>

using namespace quarbel;
using namespace quarbel::app;
using namespace quarbel::test;

namespace {

#define REQUIRE_SCENE_WINDOW(presenter)                                                                      \
    if (QGuiApplication::platformName() != "xcb" || !(presenter).hasVisualDevice())                          \
    GTEST_SKIP() << "no X display (Xvfb could not be started) or no Vulkan device with graphics"

QStringList messages(const BenchmarkStore& store) {
    QStringList result;
    for (const QString& line : store.logLines())
        result << (line.startsWith('[') ? line.mid(11) : line);
    return result;
}

} // namespace

TEST(SceneWindow, AOneSecondRequestIsMeasuredInAWindowOfItsOwn) {
    DesktopWindowPresenter presenter;
    REQUIRE_SCENE_WINDOW(presenter);
    QWidget mainWindow;
    mainWindow.show();
    presenter.setMainWindow(&mainWindow);
    int liveUpdates = 0;
    std::vector<BenchmarkOutcome> outcomes;
    presenter.showVisualBenchmark(
        {"ONE", 1.0, 0}, [&](const VisualBenchmarkLiveStats&) { ++liveUpdates; },
        [&](const BenchmarkOutcome& outcome) { outcomes.push_back(outcome); });
    MetalBenchmarkSceneWindow* window = presenter.controller()->sceneWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->title(), "Quarbel - GPU Visual Tour");
    EXPECT_EQ(window->transientParent(), mainWindow.windowHandle());
    // Also run at QT_SCALE_FACTOR=2 (see CMakeLists.txt): the window holds 960 x 540 device pixels
    // at either scale and cannot be resized, so the frames and the score measure the same work.
    const qreal ratio = qEnvironmentVariable("QT_SCALE_FACTOR", "1").toDouble();
    EXPECT_EQ(window->devicePixelRatio(), ratio);
    EXPECT_EQ(window->size() * ratio, QSize(960, 540));
    EXPECT_EQ(window->minimumSize(), window->size());
    EXPECT_EQ(window->maximumSize(), window->size());

    ASSERT_TRUE(processEventsUntil([&] { return !outcomes.empty(); }, 60'000)) << window->problem();
    const BenchmarkOutcome& outcome = outcomes.front();
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    std::smatch frames;
    ASSERT_TRUE(std::regex_search(outcome.detail, frames, std::regex("with ([0-9]+) visible frames and 1x")))
        << outcome.detail;
    const int frameCount = std::stoi(frames[1].str());
    EXPECT_GE(liveUpdates, 3);
    EXPECT_GE(outcome.duration, 1.0);
    // The pixels of the measured drawable, taken back out of the score: megapixels x 8 + FPS x 155.
    const double fps = frameCount / outcome.duration;
    const double pixels = (outcome.score - fps * 155.0) / 8.0 * 1e6 / fps; // one draw per frame
    EXPECT_NEAR(pixels, 960.0 * 540.0, 1.0);

    presenter.closeWindow();
    processEventsFor(100);
    EXPECT_EQ(outcomes.size(), 1u) << "a close after the outcome reports nothing";
}

TEST(SceneWindow, AFailedSceneFailsTheBenchmarkOnceAndTheRunGoesOn) {
    const struct {
        const char* name;
        const char* fragmentSource; // nullptr: the scene's own
        const char* detail;         // how the failure's detail begins
    } cases[] = {
        {"closed early", nullptr, "The visual benchmark window was closed before the run completed."},
        {"pipeline fails", "#version 450\nlayout(location = 0) out vec4 c;\nvoid main() { c = nope; }\n",
         "The visual benchmark could not render: Metal pipeline failed: suite_fragment.frag:3: error:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeWorkloads fakes;
        DesktopWindowPresenter presenter;
        REQUIRE_SCENE_WINDOW(presenter);
        if (c.fragmentSource) presenter.setSceneFragmentSource(c.fragmentSource);
        BenchmarkStore store(fakes.services(), &presenter);
        presenter.observe(store);
        store.setBudgetScale(0.05); // a one-second scene
        if (c.fragmentSource) store.setVisualStallLimit(1.0);
        store.run({BenchmarkID::metalVisual, BenchmarkID::cpuInteger}, false);
        if (!c.fragmentSource) {
            ASSERT_TRUE(processEventsUntil([&] { return store.visualBenchmarkRequest().has_value(); }));
            EXPECT_DOUBLE_EQ(store.visualBenchmarkRequest()->seconds, 1.0);
            processEventsFor(300);
            presenter.controller()->sceneWindow()->close(); // as the user does
        }
        ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }, 30'000));
        const auto& row = store.rows()[BenchmarkID::metalVisual];
        EXPECT_EQ(row.state, TestRunState::failed);
        EXPECT_EQ(row.outcome->detail.rfind(c.detail, 0), 0u) << row.outcome->detail;
        EXPECT_EQ(store.rows()[BenchmarkID::cpuInteger].state, TestRunState::done);
        EXPECT_TRUE(store.runSummary());
        processEventsFor(1200); // past the request's end: nothing more arrives
        EXPECT_EQ(messages(store).filter("GPU Visual Tour: failed").size(), 1);
    }
}

TEST(AnimationWindows, OneOpensAroundEachOfTheFiveBenchmarksAndClosesAfterIt) {
    // Each pass waits for the test's permit, so the windows can be looked at mid-pass.
    std::atomic<int> permits{0};
    std::atomic<bool> waiting{false};
    StoreServices services = FakeWorkloads().services();
    services.runWorkload = [&](BenchmarkID, const WorkloadContext& context) {
        waiting = true;
        while (permits == 0 && !context.cancelled())
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        --permits;
        waiting = false;
        return FakeWorkloads::okOutcome(10);
    };
    DesktopWindowPresenter presenter;
    QWidget mainWindow;
    mainWindow.show();
    presenter.setMainWindow(&mainWindow);
    BenchmarkStore store(services, &presenter);
    presenter.observe(store);
    const auto openWindows = [] {
        QStringList titles;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->windowTitle().startsWith("Quarbel - "))
                titles << widget->windowTitle();
        return titles;
    };
    const std::vector<BenchmarkID> ids{BenchmarkID::cpuInteger,   BenchmarkID::cineTile,
                                       BenchmarkID::metalCompute, BenchmarkID::openCLCompute,
                                       BenchmarkID::rawCPUDecode, BenchmarkID::rawMetalDecode};
    store.run(ids, false);
    for (BenchmarkID id : ids) {
        ASSERT_TRUE(processEventsUntil([&] { return store.runningID() == id && waiting.load(); }));
        processEventsFor(50);
        const QStringList expected = id == BenchmarkID::cpuInteger
                                         ? QStringList{}
                                         : QStringList{"Quarbel - " + QString::fromUtf8(title(id).data())};
        EXPECT_EQ(openWindows(), expected) << title(id);
        if (id == BenchmarkID::cineTile) {
            QWidget* window = presenter.controller()->animationWindow();
            EXPECT_EQ(window->size(), QSize(960, 540));
            EXPECT_EQ(window->minimumSize(), QSize(720, 405));
            EXPECT_EQ(window->windowHandle()->transientParent(), mainWindow.windowHandle());
        }
        ++permits;
    }
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
    EXPECT_EQ(openWindows(), QStringList{});
}

TEST(BenchmarkWindows, StopOrClosingTheMainWindowEndsTheRunAtOnceWhateverBenchmarkWindowIsOpen) {
    const std::pair<BenchmarkID, bool> cases[] = {
        {BenchmarkID::cineTile, true}, {BenchmarkID::metalVisual, true}, {BenchmarkID::metalVisual, false}};
    for (const auto& [id, closing] : cases) {
        SCOPED_TRACE(std::string(title(id)) + (closing ? ", closing the main window" : ", Stop"));
        FakeWorkloads fakes;
        fakes.set(BenchmarkID::cineTile, FakeBehaviour::untilCancelled);
        DesktopWindowPresenter presenter;
        if (id == BenchmarkID::metalVisual) REQUIRE_SCENE_WINDOW(presenter);
        QWidget mainWindow;
        mainWindow.show();
        presenter.setMainWindow(&mainWindow);
        BenchmarkStore store(fakes.services(), &presenter); // a 20-second scene
        presenter.observe(store);
        QuarbelAppDelegate delegate(store);
        delegate.applicationDidFinishLaunching();
        store.run({id, BenchmarkID::cpuInteger}, false);
        ASSERT_TRUE(processEventsUntil(
            [&] {
                return id == BenchmarkID::cineTile ? fakes.running() == 1
                                                   : store.visualLiveStats().has_value();
            },
            30'000));
        ASSERT_NE(presenter.controller(), nullptr);

        if (closing) {
            EXPECT_TRUE(quitsAfter([&] { mainWindow.close(); }, 8'000))
                << "the program outlived its main window";
        } else {
            store.stop();
            ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
        }
        processEventsFor(50);

        EXPECT_FALSE(store.busy());
        EXPECT_EQ(presenter.controller(), nullptr);
        EXPECT_EQ(store.rows()[id].state, TestRunState::idle) << "stopped, not failed by its window's close";
        EXPECT_EQ(fakes.calls(BenchmarkID::cpuInteger), 0);
        EXPECT_FALSE(store.runSummary());
        const QStringList log = messages(store);
        EXPECT_EQ(log.filter("Run stopped").size(), 1);
        EXPECT_EQ(log.filter(QString::fromUtf8(title(id).data())).size(), 0)
            << "the stop outcome is discarded";
        EXPECT_TRUE(closing || log.mid(log.size() - 2) == (QStringList{"Run stopped", "Ready"}))
            << qPrintable(log.join('|'));
    }
}
