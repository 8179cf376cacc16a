// SPDX-License-Identifier: Apache-2.0
// The menu commands of the main window: "Quarbel" (about, quit), "Run" (the store's run
// operations, the run history and the devices) and "Help". The run commands are enabled exactly when they can
// act.
#pragma once

#include <QObject>

#include <functional>

class QAction;
class QMenuBar;

namespace quarbel {

class BenchmarkStore;

namespace app {

struct CommandHandlers {
    std::function<void()> showAbout;
    std::function<void()> showHelp;
    std::function<void()> quit;
    std::function<void()> showHistory;
    std::function<void()> showDevices = nullptr;
};

class QuarbelCommands : public QObject {
    Q_OBJECT
  public:
    // Adds the menus to `menuBar`, which becomes the parent of this object. `store` must
    // outlive it. Main thread only.
    QuarbelCommands(QMenuBar& menuBar, BenchmarkStore& store, CommandHandlers handlers);

    QAction* aboutAction() const { return about_; }
    QAction* quitAction() const { return quit_; }
    QAction* runSelectedAction() const { return runSelected_; }
    QAction* runAllAction() const { return runAll_; }
    QAction* stopAction() const { return stop_; }
    QAction* accuracyModeAction() const { return accuracyMode_; }
    QAction* helpAction() const { return help_; }
    QAction* historyAction() const { return history_; }
    QAction* devicesAction() const { return devices_; }

  private:
    void updateFromStore();

    BenchmarkStore& store_;
    CommandHandlers handlers_;
    QAction* about_ = nullptr;
    QAction* quit_ = nullptr;
    QAction* runSelected_ = nullptr;
    QAction* runAll_ = nullptr;
    QAction* stop_ = nullptr;
    QAction* accuracyMode_ = nullptr;
    QAction* help_ = nullptr;
    QAction* history_ = nullptr;
    QAction* devices_ = nullptr;
};

} // namespace app
} // namespace quarbel
