// SPDX-License-Identifier: Apache-2.0
// The menu commands and the shared help window.
#include "app/about_window.h"
#include "app/commands.h"
#include "app/help_window.h"
#include "app/history_window.h"
#include "fake_workloads.h"
#include "support/event_loop.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

#include <array>

using namespace quarbel;
using namespace quarbel::app;
using namespace quarbel::test;

TEST(MenuCommands, RunCommandsFollowTheStoreAndCallItsOperations) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::metalVisual, FakeBehaviour::untilCancelled);
    BenchmarkStore store(fakes.services());
    QMainWindow window;
    int helpRequests = 0;
    auto* commands = new QuarbelCommands(*window.menuBar(), store, {{}, [&] { ++helpRequests; }, {}, {}});

    // Run Selected, Run All, Stop and Accuracy Mode enabled.
    const auto enabled = [&] {
        return std::array{commands->runSelectedAction()->isEnabled(), commands->runAllAction()->isEnabled(),
                          commands->stopAction()->isEnabled(), commands->accuracyModeAction()->isEnabled()};
    };
    EXPECT_EQ(enabled(), (std::array{true, true, false, true})) << "idle";
    commands->accuracyModeAction()->trigger();
    EXPECT_TRUE(store.accuracyMode());
    store.setAccuracyMode(false);
    EXPECT_FALSE(commands->accuracyModeAction()->isChecked()) << "the check mark follows the store";

    commands->runSelectedAction()->trigger();
    EXPECT_TRUE(store.busy());
    EXPECT_EQ(enabled(), (std::array{false, false, true, false})) << "running";
    EXPECT_FALSE(commands->devicesAction()->isEnabled()) << "devices change between runs only";
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
    EXPECT_EQ(fakes.calls(BenchmarkID::metalVisual), 1) << "Run Selected runs the selected benchmark";

    commands->stopAction()->trigger();
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
    EXPECT_EQ(enabled(), (std::array{true, true, false, true})) << "stopped";
    EXPECT_TRUE(commands->devicesAction()->isEnabled());

    commands->helpAction()->trigger();
    EXPECT_EQ(helpRequests, 1);
}

TEST(QuarbelHelpWindowController, SecondRequestShowsTheSameWindowOverTheWindowItWasAskedFrom) {
    QWidget main;
    main.setGeometry(60, 40, 700, 740); // within the test display
    main.show();
    main.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
    QuarbelHelpWindowController help;
    help.showWindow();
    QWidget* first = help.window();
    ASSERT_NE(first, nullptr);
    EXPECT_LE((first->frameGeometry().center() - main.frameGeometry().center()).manhattanLength(), 40)
        << "centred over the main window, not at the screen's corner";
    first->close();
    help.showWindow();
    EXPECT_EQ(help.window(), first);
    EXPECT_TRUE(first->isVisible());

    int helpWindows = 0;
    for (const QWidget* widget : QApplication::topLevelWidgets())
        helpWindows += widget->windowTitle() == QStringLiteral("Quarbel Help") ? 1 : 0;
    EXPECT_EQ(helpWindows, 1);
    EXPECT_EQ(first->findChildren<QLabel*>().size(), 1 + 2 * 10)
        << "heading, then a title and text per section";
}

TEST(SharedWindows, EscapeAndControlWCloseHelpAboutAndHistory) {
    QuarbelHelpWindowController help;
    QuarbelAboutWindowController about(QStringLiteral("0.1.0"));
    HistoryWindowController history("/nonexistent/quarbel-history");
    for (SharedWindowController* controller :
         std::initializer_list<SharedWindowController*>{&help, &about, &history})
        for (const QKeyCombination keys : {QKeyCombination(Qt::Key_Escape), Qt::CTRL | Qt::Key_W}) {
            controller->showWindow();
            QWidget* window = controller->window();
            ASSERT_TRUE(QTest::qWaitForWindowActive(window)) << window->windowTitle().toStdString();
            QTest::keyClick(window, keys.key(), keys.keyboardModifiers());
            EXPECT_FALSE(window->isVisible())
                << window->windowTitle().toStdString() << " " << QKeySequence(keys).toString().toStdString();
        }
}
