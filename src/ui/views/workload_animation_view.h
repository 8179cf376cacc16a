// SPDX-License-Identifier: Apache-2.0
// The content of a workload animation window: the benchmark's title and explanation, its
// themed animation, elapsed against target time and the live rate. It reads only what the
// store has already published on the main thread; the animation itself follows a clock of
// its own at no more than 30 frames per second and repaints only what moved.
#pragma once

#include "run/benchmark_store.h"
#include "ui/views/workload_animation.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

namespace quarbel::ui {

class WorkloadAnimationView : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kFrameIntervalMs = 34; // just under 30 frames per second

    WorkloadAnimationView(BenchmarkStore& store, BenchmarkID id, QWidget* parent = nullptr);

    BenchmarkID benchmarkID() const { return id_; }
    // Where the animation is drawn, and where the changing texts are.
    QRect animationArea() const;
    QRect statusArea() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void advance();

    BenchmarkStore& store_;
    BenchmarkID id_;
    WorkloadAnimation animation_;
    QTimer frameTimer_;
    QElapsedTimer clock_;
    double shownSeconds_ = 0; // the animation time last painted
};

} // namespace quarbel::ui
