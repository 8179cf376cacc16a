// SPDX-License-Identifier: Apache-2.0
#include "run/workload_pass.h"

#include "run/background_tasks.h"

#include <mutex>

namespace quarbel {

// Written by the workload's thread after each unit, read on the main thread.
class WorkloadPass::Progress final : public ProgressSink {
  public:
    void report(const ProgressReport& progress) noexcept override {
        std::lock_guard lock(mutex_);
        latest_ = progress;
        series_.add(progress);
    }
    ProgressReport latest() const {
        std::lock_guard lock(mutex_);
        return latest_;
    }
    // Once the pass has ended: its reports, sliced.
    std::vector<PhaseSlice> slices() const {
        std::lock_guard lock(mutex_);
        return slicePhases(series_);
    }

  private:
    mutable std::mutex mutex_;
    ProgressReport latest_;
    ProgressSeries series_;
};

WorkloadPass::WorkloadPass(QObject* receiver, BackgroundTasks& background, Run run)
    : receiver_(receiver), background_(background), run_(std::move(run)) {}

WorkloadPass::~WorkloadPass() = default;

void WorkloadPass::start(BenchmarkID id, double budgetScale, std::function<void(Ended)> done) {
    auto token = std::make_shared<CancellationToken>();
    auto progress = std::make_shared<Progress>();
    series_.clear();
    token_ = token;
    progress_ = progress;
    WorkloadContext context;
    context.cancellation = token.get();
    context.progress = progress.get();
    context.budgetScale = budgetScale;
    // Shared so that the pass can still be answered when its thread never starts.
    auto pending = std::make_shared<std::function<void(Ended)>>(std::move(done));
    const auto problem = background_.start(
        // The thread keeps the token and sink alive even after this lets go of them.
        [run = run_, id, context, token, progress] { return run(id, context); },
        [this, id, token, progress, pending, fullBudget = budgetScale >= 1.0](BenchmarkOutcome outcome) {
            addToSeries(progress->latest());
            Ended ended{std::move(outcome), progress->slices(), std::nullopt};
            // In a quick run a fifth lasts a fraction of a second, short enough for one
            // preempted tick to look like heat.
            if (ended.outcome.status == OutcomeStatus::ok && fullBudget &&
                category(id) != BenchmarkCategory::storage)
                ended.stability = stabilityPercent(series_);
            if (token_ == token) release();
            (*pending)(std::move(ended));
        });
    if (!problem) return;
    release();
    QMetaObject::invokeMethod(
        receiver_,
        [pending, outcome = failedOutcome("Quarbel could not start a worker thread: " + *problem + ".")] {
            (*pending)({outcome, {}, std::nullopt});
        },
        Qt::QueuedConnection);
}

void WorkloadPass::cancel() {
    if (token_) token_->cancel();
    release();
}

void WorkloadPass::release() {
    token_.reset();
    progress_.reset();
}

std::optional<ProgressReport> WorkloadPass::sample() {
    if (!progress_) return std::nullopt;
    const ProgressReport report = progress_->latest();
    addToSeries(report);
    return report;
}

void WorkloadPass::addToSeries(const ProgressReport& report) {
    if (report.elapsedSeconds <= 0) return;
    if (!series_.empty() && series_.back().elapsedSeconds >= report.elapsedSeconds) return;
    series_.push_back({report.elapsedSeconds, report.unitsDone});
}

} // namespace quarbel
