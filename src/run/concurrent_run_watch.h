// SPDX-License-Identifier: Apache-2.0
// Another Quarbel run on this machine skews this one (and this one skews it). The watch marks
// this run for the others to find while it lasts, and looks for theirs: as the run starts and
// again whenever the owner asks, keeping a warning that names the runs going on now and
// saying once about each run that appears. Plain C++; use from one thread.
#pragma once

#include "run/run_lock.h"

#include <memory>
#include <string>
#include <vector>

namespace quarbel {

class ConcurrentRunWatch {
  public:
    explicit ConcurrentRunWatch(std::string directory) : directory_(std::move(directory)) {}

    // The other runs marked now, whether or not this one is.
    std::vector<RunLock::OtherRun> others() const { return RunLock::runsIn(directory_); }

    // This run starts: it marks itself. Returns the lines to log, in order: the runs already
    // going on (as the mark found them), and why the run could not be marked; each may be empty.
    struct Start {
        std::string othersWarning;
        std::string unmarkedWarning;
    };
    Start begin();
    // Whether a run is marked (begun and not ended).
    bool active() const { return lock_ != nullptr; }
    // Names the benchmark this run is on, for the others.
    void setBenchmark(const std::string& title);

    // Looks again. Returns a line to log for each run not seen before in this run; warning()
    // then names every run going on now (empty: none).
    std::vector<std::string> look();
    const std::string& warning() const { return warning_; }

    // The run ended: its mark goes, and the runs it saw are forgotten.
    void end();

  private:
    std::string directory_;
    std::unique_ptr<RunLock> lock_;
    std::vector<pid_t> seen_; // of this run, so that each is said once
    std::string warning_;
};

} // namespace quarbel
