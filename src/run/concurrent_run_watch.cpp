// SPDX-License-Identifier: Apache-2.0
#include "run/concurrent_run_watch.h"

#include <algorithm>

namespace quarbel {

ConcurrentRunWatch::Start ConcurrentRunWatch::begin() {
    lock_ = std::make_unique<RunLock>(directory_);
    seen_ = lock_->otherRuns();
    return {concurrentRunWarning(lock_->otherRuns()), unmarkedRunWarning(*lock_)};
}

void ConcurrentRunWatch::setBenchmark(const std::string& title) {
    if (lock_) lock_->setBenchmark(title);
}

std::vector<std::string> ConcurrentRunWatch::look() {
    const std::vector<RunLock::OtherRun> runs = others();
    warning_ = runsBesideThisWarning(runs);
    // A run that started after this one is said once, here as in its own window.
    std::vector<std::string> lines;
    for (const RunLock::OtherRun& other : runs) {
        if (std::find(seen_.begin(), seen_.end(), other.pid) != seen_.end()) continue;
        seen_.push_back(other.pid);
        lines.push_back(runsBesideThisWarning({other}));
    }
    return lines;
}

void ConcurrentRunWatch::end() {
    lock_.reset();
    seen_.clear();
    warning_.clear();
}

} // namespace quarbel
