// SPDX-License-Identifier: Apache-2.0
#include "ui/views/trend_view.h"

#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>

namespace quarbel::ui {
namespace {

constexpr qreal kChartHeight = 150;
constexpr qreal kGap = 14;
constexpr qreal kCaptionHeight = 30;

int columnsFor(qreal width) { return width >= 760 ? 2 : 1; }

void paintChart(QPainter& painter, const QRectF& box, const TrendSeries& series) {
    cards::LineChart chart{series.title, series.color, {}, cards::LineChart::Style::line};
    for (const TrendPoint& p : series.points)
        chart.points.push_back({QString(), p.score, p.plusMinus, p.selected, p.noisy});
    cards::paintLineChart(painter, box, chart, themeChartPalette());
}

} // namespace

cards::ChartPalette themeChartPalette() {
    cards::ChartPalette palette = cards::cardChartPalette();
    palette.panel = theme::panel();
    palette.text = theme::text();
    palette.secondary = theme::secondary();
    palette.muted = theme::muted();
    palette.border = theme::border();
    // A result measured on a noisy machine is amber, as its row is.
    palette.warning = theme::stateColor(TestRunState::skipped);
    palette.fontFamily = theme::font(12).family();
    return palette;
}

TrendView::TrendView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(400, 200);
}

void TrendView::setSeries(std::vector<TrendSeries> series, QString caption, QString emptyText) {
    series_ = std::move(series);
    caption_ = std::move(caption);
    emptyText_ = std::move(emptyText);
    updateGeometry();
    update();
}

QSize TrendView::sizeHint() const {
    const int rows = int((series_.size() + 1) / 2);
    return {720, int(kCaptionHeight + rows * (kChartHeight + kGap) + 40)};
}

void TrendView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRectF area = theme::beginPage(painter, rect(), event->rect(), {caption_});
    const bool any =
        std::any_of(series_.begin(), series_.end(), [](const TrendSeries& s) { return s.points.size() > 1; });
    if (!any) {
        theme::drawEmptyNote(painter, area, kCaptionHeight + 10, emptyText_);
        return;
    }
    const int columns = columnsFor(area.width());
    const qreal width = (area.width() - kGap * (columns - 1)) / columns;
    std::size_t drawn = 0;
    for (const TrendSeries& series : series_) {
        if (series.points.empty()) continue;
        const qreal left = area.left() + qreal(drawn % std::size_t(columns)) * (width + kGap);
        const qreal top =
            area.top() + kCaptionHeight + qreal(drawn / std::size_t(columns)) * (kChartHeight + kGap);
        paintChart(painter, QRectF(left, top, width, kChartHeight), series);
        ++drawn;
    }
}

} // namespace quarbel::ui
