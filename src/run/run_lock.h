// SPDX-License-Identifier: Apache-2.0
// Marks a benchmark run as in progress on this machine for as long as it lasts, so that a
// second Quarbel process that starts a run meanwhile can say that the two skew each other
// (they share the cores, the memory bus and, worst of all, the disk).
//
// Each process holds an flock on its own file, "run-<pid>.lock", in a directory private
// to the user. The kernel drops the lock when the process ends, however it ends, so a
// killed run never makes a later one warn: its file is found unlocked and removed.
// Plain C++; use from one thread.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace quarbel {

class RunLock {
  public:
    // /tmp/quarbel-<uid>: the same for every session of the user (desktop, ssh, cron),
    // which the session-specific runtime directory is not. QUARBEL_RUN_LOCK_DIR, when an
    // absolute path, replaces it (for tests that must not see each other's runs).
    static std::string defaultDirectory();

    // Marks this process's run in `directory` (created, private to the user, when
    // missing) and finds the processes whose runs are marked there now. A directory that
    // is not the user's own (another owner, a symbolic link) or cannot be made is not
    // used: nothing is marked and no other run is found, and the run goes ahead unchecked;
    // problem() says why.
    // `kind` names what is marked: "run-" a benchmark run, "window-" an open desktop window
    // (so that a second one opens beside the first).
    explicit RunLock(const std::string& directory, std::string_view kind = kRunMark);
    ~RunLock(); // removes the mark
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;

    // Whether this process's run is marked.
    bool held() const { return fd_ >= 0; }
    // Why it is not: "cannot use /tmp/quarbel-1000: it belongs to another user", …
    const std::string& problem() const { return problem_; }
    // The other processes with a run in progress as this one started, lowest pid first.
    const std::vector<pid_t>& otherRuns() const { return otherRuns_; }

    // Names the benchmark this run is on, for another run that finds it (see runsIn).
    void setBenchmark(const std::string& title);

    struct OtherRun {
        pid_t pid = 0;
        std::string benchmark; // what it said it is on; empty when it has not said
        bool operator==(const OtherRun&) const = default;
    };
    // The runs in progress marked in `directory` now, other than this process's, lowest pid
    // first; nothing is created or removed.
    static std::vector<OtherRun> runsIn(const std::string& directory, std::string_view kind = kRunMark);

    static constexpr std::string_view kRunMark = "run-";
    static constexpr std::string_view kWindowMark = "window-";

  private:
    // The runs marked in the open `directoryFd` (at `directory`) other than this process's,
    // lowest pid first; with `clearLeftOvers`, the unlocked marks of ended processes go.
    static std::vector<OtherRun> marksIn(int directoryFd, const std::string& directory, std::string_view kind,
                                         bool clearLeftOvers);

    std::string kind_;
    int fd_ = -1;      // the locked file of this process, open while the run lasts
    std::string path_; // its path
    std::string problem_;
    std::vector<pid_t> otherRuns_;
};

// The log line for runs found in progress: "Another Quarbel run is in progress (pid 1234):
// both runs' results will be skewed."; empty when there are none.
std::string concurrentRunWarning(const std::vector<pid_t>& otherRuns);
// The same for runs found while this one goes on: "Another Quarbel run started beside this one
// (pid 1234, on SSD Sequential): both runs' results will be skewed."
std::string runsBesideThisWarning(const std::vector<RunLock::OtherRun>& otherRuns);
// "pid 1234, on SSD Sequential; pid 5678"
std::string otherRunsText(const std::vector<RunLock::OtherRun>& otherRuns);

// The log line for a run that could not be marked: "Another Quarbel run would not be noticed:
// cannot use DIR: …"; empty when the lock is held.
std::string unmarkedRunWarning(const RunLock& lock);

} // namespace quarbel
