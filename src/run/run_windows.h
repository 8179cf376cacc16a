// SPDX-License-Identifier: Apache-2.0
// The windows a run opens through the presenter: the animation window of the benchmarks that
// show their workload, and the visual benchmark's window, whose scene runs the pass itself.
// That pass ends when the window reports its outcome, when the run stops, or when the scene
// has gone too long without a frame (a missing device or pipeline never reports). Callbacks
// of an earlier window, or late ones, change nothing.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/visual.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quarbel {

class WindowPresenter;

class RunWindows {
  public:
    using Completion = std::function<void(BenchmarkOutcome)>;
    static constexpr double kVisualSeconds = 20.0;
    static constexpr int kVisualWorkload = 2;

    // `presenter` may be null (headless): then nothing opens. The hooks follow request() and
    // liveStats().
    RunWindows(WindowPresenter* presenter, std::function<void()> requestChanged,
               std::function<void()> liveStatsChanged);

    bool headless() const { return presenter_ == nullptr; }
    // The benchmarks that show a workload animation window while they run.
    static bool hasAnimationWindow(BenchmarkID id);
    // Opens `id`'s animation window, closing any open one.
    void showAnimation(BenchmarkID id, int passes);
    // Closes whichever window is open.
    void close();
    bool open() const { return open_; }

    // Runs the visual benchmark for `seconds` in its window; `completion` gets its outcome once,
    // from the event loop (at once when there is no device to render with).
    void runVisual(double seconds, Completion completion);
    // Ends the visual pass now with `outcome`; nothing when none runs.
    void endVisual(const BenchmarkOutcome& outcome) { finish(runID_, outcome); }
    // How long the scene may go without a frame before its pass fails.
    void setStallLimit(double seconds) { stallLimit_ = seconds; }
    void clearLiveStats();

    const std::optional<VisualBenchmarkRequest>& request() const { return request_; }
    const std::optional<VisualBenchmarkLiveStats>& liveStats() const { return liveStats_; }

  private:
    void update(const std::string& id, const VisualBenchmarkLiveStats& stats);
    void finish(const std::optional<std::string>& id, const BenchmarkOutcome& outcome);
    void stalled();

    WindowPresenter* presenter_;
    std::function<void()> requestChanged_;
    std::function<void()> liveStatsChanged_;
    bool open_ = false;
    std::optional<VisualBenchmarkRequest> request_;
    std::optional<VisualBenchmarkLiveStats> liveStats_;
    std::optional<std::string> runID_;
    std::optional<Completion> continuation_;
    double stallLimit_ = 20.0;
    QTimer watchdog_;
    // The presenter's callbacks hold it weakly: once this is gone they do nothing.
    std::shared_ptr<RunWindows*> self_ = std::make_shared<RunWindows*>(this);
};

} // namespace quarbel
