// SPDX-License-Identifier: Apache-2.0
// A comparison with a baseline as a CI job reads it: which benchmarks are slower than allowed,
// which could not be judged, the exit status that says which, and the same as JUnit XML.
// A gate can be fed several comparisons in turn (a run, then reruns of what it flagged):
// each benchmark keeps the verdict of the last comparison that held it.
#pragma once

#include "results/run_comparison.h"

#include <map>
#include <string>
#include <vector>

namespace quarbel {

// `compare --fail-on-slower` and `run --baseline`: nothing slower and everything judged (0),
// a benchmark slower than allowed (3), nothing slower but a benchmark not judged (4).
inline constexpr int kExitSlower = 3;
inline constexpr int kExitNotJudged = 4;

class CiGate {
  public:
    explicit CiGate(double allowedSlowdownPercent) : allowed_(allowedSlowdownPercent) {}

    // Takes the verdicts of `comparison`, replacing earlier ones of the same benchmarks.
    void add(const RunComparison& comparison);

    // The titles still slower than allowed, and those still not judged, in first-seen order.
    std::vector<std::string> slower() const;
    std::vector<UnjudgedBenchmark> unjudged() const;
    // The titles to run again to confirm: slower than allowed or not judged.
    std::vector<std::string> toConfirm() const;
    int exitCode() const;
    double allowedSlowdownPercent() const noexcept { return allowed_; }

    // One <testsuite> element (for a <testsuites> document) with a <testcase> per benchmark: a <failure> when
    // slower than allowed, an <error> when it could not be judged, <skipped> when it ran in neither run.
    std::string junitXml(const std::string& suiteName) const;

  private:
    double allowed_;
    std::vector<std::string> order_;
    std::map<std::string, ComparisonRow> last_;
    std::map<std::string, int> attempts_;
};

} // namespace quarbel
