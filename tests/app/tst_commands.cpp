// SPDX-License-Identifier: Apache-2.0
// The command line, the menu commands, Ctrl+Q and quitting (which stops a run first), and the
// shared windows.
#include "app/about_window.h"
#include "app/app_delegate.h"
#include "app/commands.h"
#include "app/display_check.h"
#include "app/help_window.h"
#include "app/history_window.h"
#include "app/launch_arguments.h"
#include "support/window_fixture.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>

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

    EXPECT_EQ(std::ranges::count_if(QApplication::topLevelWidgets(),
                                    [](const QWidget* w) { return w->windowTitle() == "Quarbel Help"; }),
              1);
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

TEST(QuitShortcutFilter, ControlQAloneAmongControlAltMetaQuitsAndIsSwallowed) {
    const struct Case {
        const char* name;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        bool quits;
    } cases[] = {
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
        QObject& asFilter = filter; // eventFilter is public on QObject
        QKeyEvent press(QEvent::KeyPress, c.key, c.modifiers);
        EXPECT_EQ(asFilter.eventFilter(&filter, &press), c.quits) << c.name << ": swallowed";
        QKeyEvent release(QEvent::KeyRelease, c.key, c.modifiers);
        asFilter.eventFilter(&filter, &release);
        EXPECT_EQ(quits, c.quits ? 1 : 0) << c.name;
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

namespace {

auto parse(const std::vector<std::string>& arguments) {
    std::vector<std::string> args{"quarbel-gui"};
    args.insert(args.end(), arguments.begin(), arguments.end());
    return parseLaunchArguments(args);
}

} // namespace

TEST(LaunchArguments, GoodArgumentsGiveTheRunToStart) {
    const std::string report = (std::filesystem::temp_directory_path() / "quarbel-gui-report.json").string();
    const struct Case {
        std::vector<std::string> args;
        std::vector<BenchmarkID> ids; // empty: no run
        bool accuracy, quick, quitWhenDone;
        std::string jsonPath;
    } cases[] = {
        {{}, {}, false, false, false, ""},
        {{"--accuracy"}, {}, true, false, false, ""},
        {{"--quick", "--history"}, {}, false, true, false, ""},
        {{"--run", "all"}, {kAllBenchmarks.begin(), kAllBenchmarks.end()}, false, false, false, ""},
        {{"--run", "cpuInteger,ssdRandom", "--quick", "--quit-when-done", "--json", report},
         {BenchmarkID::cpuInteger, BenchmarkID::ssdRandom},
         false,
         true,
         true,
         report},
        {{"--run=memoryStream", "--accuracy"}, {BenchmarkID::memoryStream}, true, false, false, ""},
    };
    for (const Case& c : cases) {
        const auto parsed = parse(c.args);
        ASSERT_TRUE(std::holds_alternative<LaunchOptions>(parsed)) << std::get<LaunchExit>(parsed).text;
        const auto& options = std::get<LaunchOptions>(parsed);
        EXPECT_EQ(options.accuracy, c.accuracy);
        EXPECT_EQ(options.quick, c.quick);
        EXPECT_EQ(options.quitWhenDone, c.quitWhenDone);
        EXPECT_EQ(options.history, std::ranges::count(c.args, "--history") == 1);
        ASSERT_EQ(options.run.has_value(), !c.ids.empty());
        if (!options.run) continue;
        EXPECT_EQ(options.run->ids, c.ids);
        EXPECT_EQ(options.run->accuracy, c.accuracy);
        EXPECT_EQ(options.run->quick, c.quick);
        EXPECT_EQ(options.run->report ? options.run->report->path : std::string(), c.jsonPath);
    }
}

TEST(LaunchArguments, BadArgumentsExitWith2AndSayWhyHelpAndVersionWith0) {
    const struct Case {
        std::vector<std::string> args;
        std::string message;
        int exitCode = 2;
    } cases[] = {
        {{"--help"}, "--quit-when-done", 0},
        {{"--version"}, std::string("quarbel-gui ") + QUARBEL_VERSION + "\n", 0},
        {{"--bogus"}, "--bogus"},
        {{"--run"}, "--run"},
        {{"--run", "cpuInteger,warpDrive"}, "unknown benchmark 'warpDrive'"},
        {{"--run", "cpuInteger,cpuInteger"}, "named more than once"},
        {{"--run", "all,cpuInteger"}, "--run all runs every benchmark"},
        {{"--json", "out.json"}, "--json needs --run"},
        {{"--quit-when-done"}, "--quit-when-done needs --run"},
        {{"--run", "all", "--json", "/nonexistent-quarbel-dir/out.json"}, "does not exist"},
        {{"--run", "all", "--json", "/"}, "is a directory"},
    };
    for (const Case& c : cases) {
        const auto parsed = parse(c.args);
        ASSERT_TRUE(std::holds_alternative<LaunchExit>(parsed)) << c.message;
        const auto& exit = std::get<LaunchExit>(parsed);
        EXPECT_EQ(exit.exitCode, c.exitCode) << c.message;
        EXPECT_TRUE(c.args[0] != "--version" || exit.text == c.message) << exit.text;
        EXPECT_NE(exit.text.find(c.message), std::string::npos) << exit.text;
        EXPECT_EQ(exit.text.rfind(c.exitCode == 2 ? "quarbel-gui: " : "", 0), 0u) << exit.text;
    }
}

TEST(LaunchArguments, AMissingDisplayIsNamedBeforeQtWouldAbort) {
    // No X server listens on display 987 here: nothing creates it.
    const struct Case {
        const char* name;
        std::vector<const char*> args;
        const char* platform; // QT_QPA_PLATFORM; nullptr: unset
        const char* wayland;  // WAYLAND_DISPLAY
        const char* display;  // DISPLAY
        std::optional<std::string> problem;
    } cases[] = {
        {"no display at all", {}, nullptr, nullptr, nullptr, "no display is set (DISPLAY is empty)"},
        {"an unreachable X display", {}, nullptr, nullptr, ":987", "the display \":987\" cannot be reached"},
        {"a platform asked for by name", {"-platform", "offscreen"}, nullptr, nullptr, ":987", std::nullopt},
        {"a platform set in the environment", {}, "offscreen", nullptr, nullptr, std::nullopt},
        {"a Wayland session is Qt's to judge", {}, nullptr, "wayland-0", nullptr, std::nullopt},
    };
    // The variables as they were, put back at the end.
    std::vector<std::pair<const char*, std::optional<std::string>>> environment;
    for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"})
        environment.emplace_back(name, std::getenv(name) ? std::optional<std::string>(std::getenv(name))
                                                         : std::nullopt);
    const auto set = [](const char* name, const char* v) { v ? ::setenv(name, v, 1) : ::unsetenv(name); };
    for (const Case& c : cases) {
        set("QT_QPA_PLATFORM", c.platform);
        set("WAYLAND_DISPLAY", c.wayland);
        set("DISPLAY", c.display);
        std::vector<const char*> argv{"quarbel-gui"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        EXPECT_EQ(missingDisplayProblem(static_cast<int>(argv.size()), argv.data()), c.problem) << c.name;
    }
    for (const auto& [name, value] : environment)
        set(name, value ? value->c_str() : nullptr);
}
