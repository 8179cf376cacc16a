// SPDX-License-Identifier: Apache-2.0
// How the program ends: Ctrl+Q from any of its windows, or closing the main window.
// Either way a running benchmark is stopped first and the program waits for it, so
// that its scratch files are removed, and no other window keeps the program alive.
#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

class QKeyEvent;

namespace quarbel {

class BenchmarkStore;

namespace app {

// An application-wide event filter that turns Ctrl+Q into `quit()` and swallows it.
class QuitShortcutFilter : public QObject {
    Q_OBJECT
  public:
    explicit QuitShortcutFilter(std::function<void()> quit, QObject* parent = nullptr);

    // The Q key with exactly Control among Control, Alt and Meta held; Shift and the
    // other modifiers are not looked at.
    static bool isQuitShortcut(const QKeyEvent& event);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<void()> quit_;
};

// Processes events until `store` is idle (a stopped pass hands its outcome back through the
// event loop) or `limit` has passed. Returns whether the store is idle. Main thread only.
bool waitUntilIdle(BenchmarkStore& store, std::chrono::milliseconds limit);

class QuarbelAppDelegate : public QObject {
    Q_OBJECT
  public:
    static constexpr std::chrono::milliseconds kStopWaitLimit{10'000};

    // Construct after the QApplication, on the main thread; `store` must outlive this.
    // `stopWaitLimit` bounds how long quitting waits for a stopped benchmark to return.
    explicit QuarbelAppDelegate(BenchmarkStore& store,
                                std::chrono::milliseconds stopWaitLimit = kStopWaitLimit,
                                QObject* parent = nullptr);
    ~QuarbelAppDelegate() override;

    // Installs the Ctrl+Q monitor and lets the closing of the last window quit.
    void applicationDidFinishLaunching();
    // Asks the application to quit: stops a run, closes every window, leaves the event
    // loop. The wait for the stopped run happens as the event loop ends.
    void terminate();

    bool monitorsQuitShortcut() const { return commandQMonitor_ != nullptr; }

  private:
    // On aboutToQuit: removes the monitor, stops the run, closes what is still open, waits
    // for the run.
    void applicationWillTerminate();
    // Stops the run once per quit: Ctrl+Q and the end of the event loop both ask.
    void stopRun();
    void closeAllWindows();

    BenchmarkStore& store_;
    std::chrono::milliseconds stopWaitLimit_;
    std::unique_ptr<QuitShortcutFilter> commandQMonitor_;
    bool runStopped_ = false;
};

} // namespace app
} // namespace quarbel
