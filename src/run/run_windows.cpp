// SPDX-License-Identifier: Apache-2.0
#include "run/run_windows.h"

#include "model/number_format.h"
#include "run/window_presenter.h"

#include <QUuid>

#include <cmath>

namespace quarbel {

RunWindows::RunWindows(WindowPresenter* presenter, std::function<void()> requestChanged,
                       std::function<void()> liveStatsChanged)
    : presenter_(presenter), requestChanged_(std::move(requestChanged)),
      liveStatsChanged_(std::move(liveStatsChanged)) {
    watchdog_.setSingleShot(true);
    QObject::connect(&watchdog_, &QTimer::timeout, &watchdog_, [this] { stalled(); });
}

bool RunWindows::hasAnimationWindow(BenchmarkID id) {
    switch (id) {
    case BenchmarkID::cineTile:
    case BenchmarkID::metalCompute:
    case BenchmarkID::openCLCompute:
    case BenchmarkID::rawCPUDecode:
    case BenchmarkID::rawMetalDecode: return true;
    default: return false;
    }
}

void RunWindows::showAnimation(BenchmarkID id, int passes) {
    close();
    if (presenter_ == nullptr) return;
    presenter_->showAnimationWindow(id, passes);
    open_ = true;
}

void RunWindows::close() {
    if (!open_) return;
    open_ = false;
    if (presenter_ != nullptr) presenter_->closeWindow();
}

void RunWindows::clearLiveStats() {
    if (!liveStats_) return;
    liveStats_.reset();
    liveStatsChanged_();
}

void RunWindows::runVisual(double seconds, Completion completion) {
    if (presenter_ == nullptr || !presenter_->hasVisualDevice()) {
        completion(skippedOutcome("Metal is not available on this machine."));
        return;
    }
    VisualBenchmarkRequest request{QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(),
                                   seconds, kVisualWorkload};
    runID_ = request.id;
    liveStats_.reset();
    liveStatsChanged_();
    continuation_ = std::move(completion);
    request_ = request;
    requestChanged_();
    open_ = true;
    // Started before the window opens: a window that fails at once still ends the wait.
    watchdog_.start(static_cast<int>(std::lround(stallLimit_ * 1000.0)));
    std::weak_ptr<RunWindows*> self = self_;
    presenter_->showVisualBenchmark(
        request,
        [self, id = request.id](const VisualBenchmarkLiveStats& stats) {
            if (const auto windows = self.lock()) (*windows)->update(id, stats);
        },
        [self, id = request.id](const BenchmarkOutcome& outcome) {
            if (const auto windows = self.lock()) (*windows)->finish(id, outcome);
        });
}

void RunWindows::update(const std::string& id, const VisualBenchmarkLiveStats& stats) {
    if (runID_ != id) return;
    if (watchdog_.isActive()) watchdog_.start();
    liveStats_ = stats;
    liveStatsChanged_();
}

void RunWindows::finish(const std::optional<std::string>& id, const BenchmarkOutcome& outcome) {
    if (id && runID_ != id) return;
    if (!continuation_) return;
    Completion continuation = std::move(*continuation_);
    continuation_.reset();
    watchdog_.stop();
    runID_.reset();
    request_.reset();
    requestChanged_();
    liveStats_.reset();
    liveStatsChanged_();
    close();
    // Resumed from the event loop, as an awaiting task would be: a stop that gets here
    // finishes its own steps before the run sees the outcome.
    QMetaObject::invokeMethod(
        &watchdog_, [continuation = std::move(continuation), outcome] { continuation(outcome); },
        Qt::QueuedConnection);
}

void RunWindows::stalled() {
    const std::string problem = presenter_ != nullptr ? presenter_->visualProblem() : std::string();
    const std::string detail = problem.empty() ? "The visual benchmark window showed no frame for " +
                                                     format(stallLimit_, 0) + " seconds."
                                               : "The visual benchmark could not render: " + problem + ".";
    finish(runID_, failedOutcome(detail));
}

} // namespace quarbel
