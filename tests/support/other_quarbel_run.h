// SPDX-License-Identifier: Apache-2.0
// Another Quarbel process with a run in progress: a child that marks its run in a lock
// directory, names its benchmark, and holds the mark until the object goes.
#pragma once

#include "run/run_lock.h"

#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quarbel::test {

class OtherQuarbelRun {
  public:
    OtherQuarbelRun(const std::string& lockDirectory, const std::string& benchmark) {
        int ready[2];
        if (::pipe(ready) != 0 || ::pipe(release_) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            RunLock lock(lockDirectory);
            lock.setBenchmark(benchmark);
            char byte = 1;
            [[maybe_unused]] auto written = ::write(ready[1], &byte, 1);
            [[maybe_unused]] auto read = ::read(release_[0], &byte, 1);
            ::_exit(0);
        }
        char byte = 0;
        marked_ = pid_ > 0 && ::read(ready[0], &byte, 1) == 1;
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~OtherQuarbelRun() { end(); }
    OtherQuarbelRun(const OtherQuarbelRun&) = delete;
    OtherQuarbelRun& operator=(const OtherQuarbelRun&) = delete;

    bool marked() const { return marked_; }
    pid_t pid() const { return pid_; }

    // Lets the child end and waits for it; its mark goes with it.
    void end() {
        if (pid_ <= 0) return;
        const char byte = 1;
        [[maybe_unused]] auto written = ::write(release_[1], &byte, 1);
        ::waitpid(pid_, nullptr, 0);
        ::close(release_[0]);
        ::close(release_[1]);
        pid_ = -1;
        marked_ = false;
    }

  private:
    int release_[2] = {-1, -1};
    pid_t pid_ = -1;
    bool marked_ = false;
};

} // namespace quarbel::test
