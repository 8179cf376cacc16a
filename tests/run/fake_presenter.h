// SPDX-License-Identifier: Apache-2.0
// A presenter that opens no window: it counts the windows asked for and keeps the visual
// benchmark's callbacks for the test to call.
#pragma once

#include "run/window_presenter.h"

namespace quarbel::test {

class FakePresenter final : public WindowPresenter {
  public:
    bool device = true;
    int animationWindows = 0;
    int closes = 0;
    std::string problem;
    VisualBenchmarkRequest lastRequest;
    std::function<void(const VisualBenchmarkLiveStats&)> live;
    std::function<void(const BenchmarkOutcome&)> completion;

    bool hasVisualDevice() const override { return device; }
    void showAnimationWindow(BenchmarkID, int) override { ++animationWindows; }
    void showVisualBenchmark(const VisualBenchmarkRequest& request,
                             std::function<void(const VisualBenchmarkLiveStats&)> liveUpdate,
                             std::function<void(const BenchmarkOutcome&)> done) override {
        lastRequest = request;
        live = std::move(liveUpdate);
        completion = std::move(done);
    }
    void closeWindow() override { ++closes; }
    std::string visualProblem() const override { return problem; }
};

} // namespace quarbel::test
