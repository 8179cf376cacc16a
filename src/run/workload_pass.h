// SPDX-License-Identifier: Apache-2.0
// One pass of a workload on a background thread: the cancellation it checks, the progress it
// reports (read by the display clock, and kept both as slices and as the series the stability
// check reads), and the hand-back of its outcome to the main thread. A pass whose thread cannot
// start fails with a message, and the run goes on.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/progress_series.h"
#include "model/stability.h"
#include "model/workload_context.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quarbel {

class BackgroundTasks;

class WorkloadPass {
  public:
    using Run = std::function<BenchmarkOutcome(BenchmarkID, const WorkloadContext&)>;
    struct Ended {
        BenchmarkOutcome outcome;
        std::vector<PhaseSlice> slices; // empty when the workload reported no progress
        // The last fifth's rate over the first fifth's: for an ok pass of a full budget, but not
        // for the storage benchmarks, which change pace by design.
        std::optional<double> stability;
    };

    // `run` runs on a thread of `background`; `receiver` is whose event loop hands back.
    WorkloadPass(QObject* receiver, BackgroundTasks& background, Run run);
    ~WorkloadPass();

    // Starts a pass of `id` at `budgetScale`; `done` gets it from the event loop, also when it
    // was cancelled or let go.
    void start(BenchmarkID id, double budgetScale, std::function<void(Ended)> done);
    // Lets go of the running pass, telling it to stop at its next check point.
    void cancel();
    // Lets go of it (it has ended, or ends on its own).
    void release();
    bool running() const { return token_ != nullptr; }
    // The running pass's latest report, also added to its series; none when none runs.
    std::optional<ProgressReport> sample();

  private:
    class Progress;
    void addToSeries(const ProgressReport& report);

    QObject* receiver_;
    BackgroundTasks& background_;
    Run run_;
    std::shared_ptr<CancellationToken> token_;
    std::shared_ptr<Progress> progress_;
    std::vector<ProgressPoint> series_; // the running pass's progress, as sampled
};

} // namespace quarbel
