// SPDX-License-Identifier: Apache-2.0
// What the running benchmark is doing. The CPU, memory and storage benchmarks get an
// inline stage: their explanation, the live status line (a new line every two seconds),
// a growing progress bar and the live rate. The others run in a window of their own
// and show a poster of their workload here: the same themed animation as their window,
// advanced at the store's quarter-second clock. Each tick repaints only what moved (the
// status strip, the progress row, the trace, the changed part of the poster): whole-stage
// repaints would take CPU time from the benchmark that the stage is showing. While the run
// waits for the machine to cool before a benchmark, the stage shows that wait.
#pragma once

#include "run/benchmark_store.h"
#include "ui/views/workload_animation.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace quarbel::ui {

// Whether `id` shows the inline stage (rather than a poster) while it runs.
bool hasInlineStage(BenchmarkID id);

class StageView : public QWidget {
    Q_OBJECT
  public:
    explicit StageView(BenchmarkStore& store, QWidget* parent = nullptr);

    // The status line the stage shows now (empty when nothing runs).
    QString statusLine() const;
    // Rates sampled for the running benchmark's "rate over time" trace.
    std::size_t rateSampleCount() const { return rates_.size(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    // Where the stage of the running benchmark puts its parts.
    struct Layout {
        QRectF area;        // inside the panel's margins
        QRectF explanation; // the wrapped explanation
        QRect picture;      // the poster's animation (posters only)
        QRectF strip;       // the status line (inline stages only)
        QRectF progress;    // bar, elapsed time and live rate
        QRectF trace;       // the rate over time (inline stages only)
        bool operator==(const Layout&) const = default;
    };
    Layout layout(BenchmarkID id) const;
    void onTick();
    void sampleRate();
    void paintRateTrace(QPainter& painter, const QRectF& area, const QColor& color);
    void paintCooldown(QPainter& painter);
    void paintInlineStage(QPainter& painter, BenchmarkID id, const Layout& parts, const QRegion& dirty);
    void paintPoster(QPainter& painter, BenchmarkID id, const Layout& parts, const QRegion& dirty);

    BenchmarkStore& store_;
    // The rate between successive clock ticks of the pass now running, for the trace.
    std::vector<double> rates_;
    LiveProgress lastSample_;
    std::optional<WorkloadAnimation> poster_; // of the benchmark now running
    double posterSeconds_ = 0;                // the run time of the last tick
    std::optional<Layout> painted_;           // the layout of the last paint
};

} // namespace quarbel::ui
