// SPDX-License-Identifier: Apache-2.0
// The seam through which the run controller opens windows. The desktop application
// implements it; the headless command line has none, and then no window opens and
// the visual benchmark runs offscreen.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"
#include "model/visual.h"

#include <functional>
#include <string>

namespace quarbel {

// All calls come from the main thread.
class WindowPresenter {
  public:
    virtual ~WindowPresenter() = default;

    // Whether the visual benchmark has a GPU device to render with.
    virtual bool hasVisualDevice() const = 0;

    // Opens the workload animation window of `id` (closing any open one).
    virtual void showAnimationWindow(BenchmarkID id, int passes) = 0;

    // Opens the visual benchmark window. `liveUpdate` may be called many times and
    // `completion` once, both on the main thread; late calls are ignored by the store.
    virtual void showVisualBenchmark(const VisualBenchmarkRequest& request,
                                     std::function<void(const VisualBenchmarkLiveStats&)> liveUpdate,
                                     std::function<void(const BenchmarkOutcome&)> completion) = 0;

    // Closes whichever window is open without it reporting a result of its own.
    virtual void closeWindow() = 0;

    // Why the visual benchmark window draws nothing (a pipeline that failed to build, a device
    // that stopped answering, a window system without GPU surfaces), or empty when it does not
    // know. The store asks when the scene has not shown a frame for too long.
    virtual std::string visualProblem() const { return {}; }
};

} // namespace quarbel
