// SPDX-License-Identifier: Apache-2.0
// Each benchmark's score over the runs of the history, oldest on the left: one small chart
// per benchmark, with every score's 95 % interval as a whisker and the selected run marked.
// Fed with ready-made series; knows nothing of where runs are kept.
#pragma once

#include "ui/cards/line_chart.h"

#include <QColor>
#include <QString>
#include <QWidget>

#include <vector>

namespace quarbel::ui {

struct TrendPoint {
    double score = 0;
    double plusMinus = 0; // half the 95 % interval, in points; 0 without one
    bool selected = false;
    bool noisy = false;
};

struct TrendSeries {
    QString title;
    QColor color;                   // of the benchmark's category
    std::vector<TrendPoint> points; // oldest first
};

// The window's chart colours and font, those of the theme, for every chart it draws.
cards::ChartPalette themeChartPalette();

class TrendView : public QWidget {
    Q_OBJECT
  public:
    explicit TrendView(QWidget* parent = nullptr);
    // `emptyText` is shown when no series has two points.
    void setSeries(std::vector<TrendSeries> series, QString caption, QString emptyText);
    const std::vector<TrendSeries>& series() const { return series_; }
    const QString& caption() const { return caption_; }
    const QString& emptyText() const { return emptyText_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<TrendSeries> series_;
    QString caption_;
    QString emptyText_;
};

} // namespace quarbel::ui
