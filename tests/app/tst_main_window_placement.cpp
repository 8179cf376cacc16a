// SPDX-License-Identifier: Apache-2.0
// Where the main window opens, and how often its frame is written.
#include "app/main_window_placement.h"
#include "memory_settings.h"
#include "support/event_loop.h"

#include <QCoreApplication>
#include <QMoveEvent>
#include <QResizeEvent>
#include <QWidget>

#include <gtest/gtest.h>

#include <map>

using namespace quarbel::app;
using namespace quarbel::test;
namespace placement = quarbel::app::MainWindowPlacement;

namespace {

const QList<QRect> kScreens{QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};

} // namespace

TEST(MainWindowPlacement, RestoresOnlyAUsableSavedFrameElseCentresAndFitsTheScreen) {
    struct Case {
        const char* name;
        QVariant hasSavedFrame;
        QVariant frame;
        QRect expected; // position and content size after configure
        QList<QRect> screens = kScreens;
        QSize minimum{840, 560};
        QSize startSize{1000, 700};
    };
    const QRect centred(460, 190, 1000, 700); // 1000 x 700 centred on the first screen
    const QList<QRect> laptop{QRect(0, 0, 1366, 768)};
    const QList<QRect> laptopWithPanel{QRect(0, 28, 1366, 740)};
    const QList<QRect> tiny{QRect(0, 0, 800, 600)};
    // clang-format off
    const Case cases[] = {
        {"first launch", {}, {}, centred},
        {"valid frame", true, "100 120 900 640", {100, 120, 900, 640}},
        {"frame on the second screen", true, "2000 50 1100 800", {2000, 50, 1100, 800}},
        {"frame partly off the left edge", true, "-500 100 900 640", {0, 100, 900, 640}},
        {"frame that fits a smaller screen, crossing its right edge", true, "600 100 1200 700", {166, 68, 1200, 700}, laptop},
        {"frame narrower than 840", true, "10 20 839 700", centred},
        {"frame lower than 560", true, "10 20 1000 559", centred},
        {"frame off every screen", true, "3300 0 1000 700", centred},
        {"frame not marked saved", false, "100 120 900 640", centred},
        {"three numbers", true, "100 120 900", centred},
        {"commas", true, "100,120,900,640", centred},
        {"two blanks", true, "100  120 900 640", centred},
        {"words", true, "left top wide high", centred},
        {"not a string", true, QRect(100, 120, 900, 640), centred},
        {"small window grows to the minimum", {}, {}, {540, 260, 840, 560}, kScreens, {840, 560}, {600, 400}},
        {"default taller than the screen", {}, {}, {83, 0, 1200, 768}, laptop, {840, 560}, {1200, 820}},
        {"default beside a panel", {}, {}, {83, 28, 1200, 740}, laptopWithPanel, {840, 560}, {1200, 820}},
        {"frame taller than its screen", true, "100 200 900 1200", {100, 0, 900, 1080}},
        {"frame larger than the screen it overlaps most", true, "2000 100 1400 1100", {1920, 0, 1280, 1024}},
        {"frame from a larger screen", true, "0 0 1900 1000", {0, 28, 1366, 740}, laptopWithPanel},
        {"screen smaller than the minimum", {}, {}, {0, 0, 800, 600}, tiny, {800, 560}, {1200, 820}},
        {"frame on a screen smaller than the minimum", true, "0 0 900 640", {0, 0, 800, 600}, tiny, {800, 560}},
    };
    // clang-format on
    for (const Case& c : cases) {
        MemorySettings settings;
        if (c.hasSavedFrame.isValid()) settings.values[placement::kHasSavedFrameKey] = c.hasSavedFrame;
        if (c.frame.isValid()) settings.values[placement::kFrameKey] = c.frame;
        QWidget window;
        window.resize(c.startSize);
        placement::configure(window, settings, c.screens);
        EXPECT_EQ(QRect(window.pos(), window.size()), c.expected) << c.name;
        EXPECT_EQ(window.minimumSize(), c.minimum) << c.name;
    }
}

TEST(MainWindowPlacement, AFittedFrameLeavesRoomForTheWindowManagersDecorations) {
    const QMargins titleBar(0, 30, 0, 0);
    EXPECT_EQ(placement::fittedFrame({40, 10, 1200, 820}, {0, 0, 1366, 768}, titleBar),
              QRect(40, 0, 1200, 738));
    EXPECT_EQ(placement::fittedFrame({40, 10, 1200, 700}, {0, 0, 1366, 768}, titleBar),
              QRect(40, 10, 1200, 700));
    EXPECT_EQ(placement::fittedFrame({40, 60, 1200, 700}, {0, 0, 1366, 768}, titleBar),
              QRect(40, 38, 1200, 700))
        << "moved up until the frame's foot is on screen";
    // The whole window fits 1280 x 720 and 1366 x 768, from a frame saved on a larger screen.
    for (const QRect& screen : {QRect(0, 0, 1280, 720), QRect(0, 0, 1366, 768)}) {
        const QRect fitted = placement::fittedFrame({300, 200, 1400, 900}, screen, titleBar);
        EXPECT_TRUE(screen.contains(fitted.adjusted(0, 0, 0, 30))) << fitted.x() << "," << fitted.y();
    }
    // Not below the minimum height where the screen has room for it, decorations or not.
    EXPECT_EQ(placement::fittedFrame({0, 0, 900, 640}, {0, 0, 900, 580}, titleBar), QRect(0, 0, 900, 560));
}

TEST(MainWindowPlacement, ASecondWindowOpensBesideTheFirstAndStaysOnScreen) {
    QWidget window;
    window.move(100, 100);
    window.resize(1000, 700);
    placement::cascade(window, 0, kScreens);
    EXPECT_EQ(window.pos(), QPoint(100, 100)) << "alone: where it was placed";
    placement::cascade(window, 2, kScreens);
    EXPECT_EQ(window.pos(), QPoint(164, 164));
    QWidget low;
    low.move(900, 370);
    low.resize(1000, 700);
    placement::cascade(low, 1, {QRect(0, 0, 1920, 1080)});
    EXPECT_EQ(low.pos(), QPoint(920, 380)) << "moved, then back in from the screen's edges";
}

TEST(MainWindowPlacementCoordinator, BurstOfResizesWritesOnceCloseWritesAtOnceAndTheFrameComesBack) {
    MemorySettings settings;
    QWidget window;
    window.setGeometry(-300, 100, 900, 600);
    placement::Coordinator coordinator(settings);
    coordinator.observe(window);

    for (int i = 1; i <= 10; ++i) {
        window.resize(900 + i, 600 + i);
        QResizeEvent resize(window.size(), QSize(899 + i, 599 + i));
        QCoreApplication::sendEvent(&window, &resize);
    }
    QMoveEvent move(QPoint(-300, 100), QPoint(90, 90));
    QCoreApplication::sendEvent(&window, &move);
    EXPECT_EQ(settings.frameWrites, 0) << "a save waits for the burst to end";
    ASSERT_TRUE(processEventsUntil([&] { return settings.frameWrites > 0; }));
    EXPECT_FALSE(coordinator.savePending());
    EXPECT_EQ(settings.frameWrites, 1);
    EXPECT_EQ(settings.values[placement::kFrameKey].toString(), QStringLiteral("-300 100 910 610"));

    window.resize(1000, 700);
    QResizeEvent resize(window.size(), QSize(910, 610));
    QCoreApplication::sendEvent(&window, &resize);
    window.close();
    EXPECT_EQ(settings.frameWrites, 2) << "closing saves at once";
    EXPECT_FALSE(coordinator.savePending()) << "and drops the pending save";
    EXPECT_EQ(settings.values[placement::kFrameKey].toString(), QStringLiteral("-300 100 1000 700"));
    EXPECT_TRUE(settings.values[placement::kHasSavedFrameKey].toBool());

    QWidget next;
    placement::configure(next, settings, kScreens);
    EXPECT_EQ(QRect(next.pos(), next.size()), QRect(0, 100, 1000, 700)) << "brought back on screen whole";
}
