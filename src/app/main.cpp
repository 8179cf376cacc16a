// SPDX-License-Identifier: Apache-2.0
// quarbel-gui: the desktop program of the benchmark suite.
#include "app/about_window.h"
#include "app/app_delegate.h"
#include "app/app_font.h"
#include "app/commands.h"
#include "app/desktop_window_presenter.h"
#include "app/devices_dialog.h"
#include "app/display_check.h"
#include "app/first_paint_probe.h"
#include "app/help_window.h"
#include "app/history_window.h"
#include "app/launch_arguments.h"
#include "app/main_window_placement.h"
#include "app/other_runs_question.h"
#include "app/run_history_recorder.h"
#include "app/summary_actions.h"
#include "app/translations.h"
#include "results/learned_floors.h"
#include "results/run_history.h"
#include "results/store_report.h"
#include "run/benchmark_store.h"
#include "run/run_lock.h"
#include "sensors/system_manifest.h"
#include "sensors/system_snapshot.h"
#include "session/run_session.h"
#include "session/stop_signals.h"
#include "ui/views/accessibility.h"
#include "ui/views/main_window.h"
#include "ui/views/result_card_saver.h"
#include "workloads/gpu/device_inventory.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/storage/storage_workloads.h"

#include <QApplication>
#include <QIcon>
#include <QMenuBar>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <unistd.h>

using namespace quarbel;

int main(int argc, char** argv) {
    QApplication::setOrganizationName(QStringLiteral("Quarbel"));
    QApplication::setApplicationName(QStringLiteral("Quarbel"));
    QApplication::setApplicationVersion(QStringLiteral(QUARBEL_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("io.github.quarbel.Quarbel"));
    // Without a display Qt would abort; --help and --version still answer.
    auto display = app::checkDisplay(argc, argv);
    if (const auto& problem = display.problem) {
        const auto early = app::parseLaunchArguments(std::vector<std::string>(argv, argv + argc));
        if (const auto* exit = std::get_if<app::LaunchExit>(&early); exit && exit->exitCode == 0) {
            std::fputs(exit->text.c_str(), stdout);
            return 0;
        }
        std::fprintf(stderr,
                     "quarbel-gui: cannot open a window: %s.\n"
                     "Start it from a desktop session, or use 'quarbel run' to benchmark without a window.\n",
                     problem->c_str());
        return 1;
    }
    // Qt takes its own options (-platform, -style, ...) out of argv here; ours remain.
    QApplication application(argc, argv);
    app::installTranslations(application);
    display.connection.reset();

    const auto parsed = app::parseLaunchArguments(std::vector<std::string>(argv, argv + argc));
    if (const auto* exit = std::get_if<app::LaunchExit>(&parsed)) {
        std::fputs(exit->text.c_str(), exit->exitCode == 0 ? stdout : stderr);
        return exit->exitCode;
    }
    const auto& options = std::get<app::LaunchOptions>(parsed);

    // The GPU row names the Vulkan device the GPU workloads would choose.
    SystemSnapshot::setGpuNameProvider([] { return gpu::defaultDeviceName().value_or(std::string{}); });
    setDriverDescriptionProvider(gpu::chosenDriverDescriptions);
    app::useInterFont();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/io.github.quarbel.Quarbel.svg")));

    // Declared before the store, so that it outlives the store's last call to it.
    app::DesktopWindowPresenter presenter;
    BenchmarkStore store(StoreServices::standard(), &presenter);
    ui::installAccessibility(store); // before the views, whose interfaces read the store
    presenter.observe(store);
    ui::MainWindow window(store);
    presenter.setMainWindow(&window);
    new ui::ResultCardSaver(store, window); // the Save Result Card buttons; owned by the window
    app::QuarbelHelpWindowController help;
    app::QuarbelAboutWindowController about(QStringLiteral(QUARBEL_VERSION));
    app::HistoryWindowController history(historyDirectory());
    app::RunHistoryRecorder historyRecorder(store, historyDirectory());
    // Each kept run teaches the intervals more of this machine's run-to-run noise.
    const std::string machineId = readMachineIdentity().machineId;
    const auto learnFloors = [&store, machineId] {
        store.setNoiseFloors(learnNoiseFloors(listHistory(historyDirectory(), HistoryDetail::results),
                                              machineId, QUARBEL_VERSION));
    };
    learnFloors();
    QObject::connect(&historyRecorder, &app::RunHistoryRecorder::runKept, [&history, learnFloors] {
        history.reload();
        learnFloors();
    });
    app::SummaryActions summaryActions(store, *window.summaryPanel(), historyRecorder, history);
    app::QuarbelAppDelegate delegate(store);
    app::UserFrameSettings frameSettings;
    new app::QuarbelCommands(*window.menuBar(), store,
                             {[&] { about.showWindow(); }, [&] { help.showWindow(); },
                              [&] { delegate.terminate(); }, [&] { history.showWindow(); },
                              [&] {
                                  app::DevicesDialog dialog(frameSettings, &window);
                                  dialog.exec();
                              }});

    app::MainWindowPlacement::configure(window, frameSettings, app::MainWindowPlacement::screenAreas(window));
    // A second Quarbel window opens beside the first, not exactly on top of it.
    const RunLock windowMark(RunLock::defaultDirectory(), RunLock::kWindowMark);
    app::MainWindowPlacement::cascade(window, static_cast<int>(windowMark.otherRuns().size()),
                                      app::MainWindowPlacement::screenAreas(window));
    app::MainWindowPlacement::Coordinator placement(frameSettings);
    placement.observe(window);

    // Notices from below the window (a device choice that found nothing, scratch space
    // reclaimed from an interrupted run) go to the log, on the main thread.
    setScratchNoticeSink([&store](const std::string& text) {
        QMetaObject::invokeMethod(
            &store, [&store, text] { store.logNotice(QString::fromStdString(text)); }, Qt::QueuedConnection);
    });
    if (const auto dropped = app::applySavedDeviceChoices(frameSettings)) store.logNotice(*dropped);
    if (const auto warning = gpu::deviceSelectionWarning()) {
        std::fprintf(stderr, "quarbel-gui: %s\n", warning->c_str());
        store.logNotice(QString::fromStdString(*warning));
    }
    if (options.accuracy) store.setAccuracyMode(true);
    if (options.quick) store.setQuickMode(true);
    app::FirstPaintProbe::watch(window);
    window.show();
    if (options.history) {
        history.showWindow();
        app::FirstPaintProbe::watch(*history.window(), "history-paint");
    }
    delegate.applicationDidFinishLaunching();

    // SIGINT and SIGTERM quit as Ctrl+Q does; a second one leaves at once, still taking
    // the scratch files along.
    session::StopSignals stopSignals;
    QObject::connect(&stopSignals, &session::StopSignals::stopRequested, &delegate, [&](int count) {
        if (count == 1) {
            delegate.terminate();
            return;
        }
        std::fputs("\nquarbel-gui: stopped at once\n", stderr);
        removeActiveScratchDirectories();
        std::_Exit(130);
    });

    // A run asked for on the command line goes through the same session as `quarbel run`:
    // the same log on standard output, the same JSON report, the same exit codes.
    std::unique_ptr<session::RunSession> requestedRun;
    std::optional<int> runExitCode;
    if (options.run) {
        store.setSelectedID(options.run->ids.front());
        requestedRun = std::make_unique<session::RunSession>(store, *options.run, stdout,
                                                             isatty(STDOUT_FILENO) != 0, systemRowPairs);
        QObject::connect(requestedRun.get(), &session::RunSession::finished, &delegate, [&](int code) {
            // A run stopped from the window or by quitting ends without a summary, like a
            // command-line run stopped with Ctrl-C.
            runExitCode = (code == 0 && !store.runSummary()) ? 130 : code;
            if (options.quitWhenDone) delegate.terminate();
        });
        QTimer::singleShot(0, requestedRun.get(), &session::RunSession::start);
    }
    // Runs asked for in the window meet a question when another Quarbel run goes on; a run
    // asked for on the command line (queued just before) goes ahead with its warning.
    QTimer::singleShot(0, &window, [&store, &window] {
        store.setOtherRunsQuestion(
            [&window](const QString& otherRuns) { return app::askAboutOtherRuns(&window, otherRuns); });
    });

    const int exitCode = QApplication::exec();
    setScratchNoticeSink({});
    placement.cleanup();
    // A requested run that never reported its end (quit before it began, or its stopped
    // pass outlived the wait) was interrupted all the same.
    if (options.run && !runExitCode) return 130;
    return runExitCode.value_or(exitCode);
}
