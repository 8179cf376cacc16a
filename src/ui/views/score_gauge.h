// SPDX-License-Identifier: Apache-2.0
// The global score as a dial: an arc on a logarithmic scale that sweeps to a new value
// when the score changes, with the score text and the completed count in its middle.
#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

// Where `score` sits on the dial, 0 ... 1: logarithmic, so that one point and a million
// points both have a place.
double gaugeFraction(double score);

class ScoreGauge : public QWidget {
    Q_OBJECT
  public:
    explicit ScoreGauge(BenchmarkStore& store, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {300, 230}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    BenchmarkStore& store_;
    QVariantAnimation sweep_;
    double shownScore_ = 0;
};

} // namespace quarbel::ui
