// SPDX-License-Identifier: Apache-2.0
// Ctrl+Q and quitting: which keys quit, and that quitting stops a run first.
#include "app/app_delegate.h"
#include "app/help_window.h"
#include "support/window_fixture.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTest>

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::app;
using namespace quarbel::test;

namespace {

// Counts the key presses that reach the object it watches.
class KeyCounter : public QObject {
  public:
    int presses = 0;

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) ++presses;
        return false;
    }
};

} // namespace

TEST(QuitShortcutFilter, ControlQAloneAmongControlAltMetaQuitsAndIsSwallowed) {
    struct Case {
        const char* name;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        bool quits;
    };
    const Case cases[] = {
        {"Ctrl+Q", Qt::Key_Q, Qt::ControlModifier, true},
        {"Ctrl+Shift+Q", Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier, true},
        {"Ctrl+Q on the keypad", Qt::Key_Q, Qt::ControlModifier | Qt::KeypadModifier, true},
        {"Q", Qt::Key_Q, Qt::NoModifier, false},
        {"Shift+Q", Qt::Key_Q, Qt::ShiftModifier, false},
        {"Alt+Q", Qt::Key_Q, Qt::AltModifier, false},
        {"Ctrl+Alt+Q", Qt::Key_Q, Qt::ControlModifier | Qt::AltModifier, false},
        {"Ctrl+Meta+Q", Qt::Key_Q, Qt::ControlModifier | Qt::MetaModifier, false},
        {"Ctrl+W", Qt::Key_W, Qt::ControlModifier, false},
    };
    for (const Case& c : cases) {
        int quits = 0;
        QuitShortcutFilter filter([&] { ++quits; });
        qApp->installEventFilter(&filter);
        QObject target;
        KeyCounter counter;
        target.installEventFilter(&counter);
        QKeyEvent press(QEvent::KeyPress, c.key, c.modifiers);
        QCoreApplication::sendEvent(&target, &press);
        QKeyEvent release(QEvent::KeyRelease, c.key, c.modifiers);
        QCoreApplication::sendEvent(&target, &release);
        qApp->removeEventFilter(&filter);
        EXPECT_EQ(quits, c.quits ? 1 : 0) << c.name;
        EXPECT_EQ(counter.presses, c.quits ? 0 : 1) << c.name;
    }
}

// The program as launched: its delegate over a store, the main window and the help window shown.
struct LaunchedWithHelpOpen {
    FakeWorkloads fakes;
    BenchmarkStore store{fakes.services()};
    QuarbelAppDelegate delegate{store};
    QWidget mainWindow;
    QuarbelHelpWindowController help;
    LaunchedWithHelpOpen() {
        delegate.applicationDidFinishLaunching();
        mainWindow.show();
        help.showWindow();
    }
};

TEST(QuarbelAppDelegate, ControlQInTheHelpWindowStopsTheRunClosesEveryWindowAndQuits) {
    LaunchedWithHelpOpen app;
    auto& [fakes, store, delegate, mainWindow, help] = app;
    fakes.set(BenchmarkID::cpuFloating, FakeBehaviour::untilCancelled);
    store.run({BenchmarkID::cpuFloating}, false);
    ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));

    int aboutToQuit = 0;
    const auto connection = QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&] { ++aboutToQuit; });
    EXPECT_TRUE(quitsAfter([&] { QTest::keyClick(help.window(), Qt::Key_Q, Qt::ControlModifier); }));
    QObject::disconnect(connection);

    EXPECT_EQ(aboutToQuit, 1);
    EXPECT_FALSE(store.busy()) << "quitting waits for the stopped benchmark";
    EXPECT_EQ(store.logLines().filter("] Run stopped").size(), 1) << "stopped once";
    EXPECT_EQ(fakes.cancelledSeen(), 1);
    EXPECT_EQ(fakes.running(), 0);
    EXPECT_FALSE(mainWindow.isVisible());
    EXPECT_FALSE(help.window()->isVisible());
    EXPECT_FALSE(delegate.monitorsQuitShortcut());
}

TEST(QuarbelAppDelegate, ClosingTheMainWindowQuitsWhileHelpIsOpen) {
    LaunchedWithHelpOpen app;
    EXPECT_TRUE(quitsAfter([&] { app.mainWindow.close(); }));
    EXPECT_FALSE(app.help.window()->isVisible());
}
