// What the running benchmark is doing. The CPU, memory and storage benchmarks get an
// inline stage: their explanation, the live status line (a new line every two seconds),
// a growing progress bar and the live rate. The others run in a window of their own
// and show a poster of their workload here: the same themed animation as their window,
// advanced at the store's quarter-second clock.
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

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void sampleRate();
    void paintRateTrace(QPainter& painter, const QRectF& area, const QColor& color);
    void paintInlineStage(QPainter& painter, BenchmarkID id, const QRectF& area);
    void paintPoster(QPainter& painter, BenchmarkID id, const QRectF& area);

    BenchmarkStore& store_;
    // The rate between successive clock ticks of the pass now running, for the trace.
    std::vector<double> rates_;
    LiveProgress lastSample_;
    std::optional<WorkloadAnimation> poster_; // of the benchmark now running
};

} // namespace quarbel::ui
