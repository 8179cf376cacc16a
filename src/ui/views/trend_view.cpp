#include "ui/views/trend_view.h"

#include "model/outcome.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quarbel::ui {
namespace {

constexpr qreal kChartHeight = 150;
constexpr qreal kGap = 14;
constexpr qreal kCaptionHeight = 30;

int columnsFor(qreal width) { return width >= 760 ? 2 : 1; }

void paintChart(QPainter& painter, const QRectF& box, const TrendSeries& series) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::panel());
    painter.drawRoundedRect(box, 8, 8);
    painter.setFont(theme::font(13, QFont::DemiBold));
    painter.setPen(theme::text());
    const QRectF titleBox = box.adjusted(12, 8, -12, 0);
    painter.drawText(
        QRectF(titleBox.left(), titleBox.top(), titleBox.width(), 18), Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(painter.font()).elidedText(series.title, Qt::ElideRight, int(titleBox.width())));

    double low = series.points.front().score, high = low;
    for (const TrendPoint& p : series.points) {
        low = std::min(low, p.score - p.plusMinus);
        high = std::max(high, p.score + p.plusMinus);
    }
    // A little room above and below, and never a flat range.
    const double pad = std::max((high - low) * 0.1, high * 0.01);
    low = std::max(0.0, low - pad);
    high += pad;
    const QRectF plot = box.adjusted(70, 34, -14, -14);
    painter.setFont(theme::font(10.5));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(box.left() + 6, plot.top() - 7, 58, 14), Qt::AlignRight | Qt::AlignVCenter,
                     theme::qstring(scoreText(high)));
    painter.drawText(QRectF(box.left() + 6, plot.bottom() - 7, 58, 14), Qt::AlignRight | Qt::AlignVCenter,
                     theme::qstring(scoreText(low)));
    painter.setPen(QPen(theme::border(), 1));
    painter.drawLine(plot.bottomLeft(), plot.bottomRight());

    const std::size_t n = series.points.size();
    const auto x = [&](std::size_t i) {
        return n == 1 ? plot.center().x() : plot.left() + plot.width() * qreal(i) / qreal(n - 1);
    };
    const auto y = [&](double v) { return plot.bottom() - plot.height() * (v - low) / (high - low); };
    QPainterPath line;
    for (std::size_t i = 0; i < n; ++i) {
        const QPointF point(x(i), y(series.points[i].score));
        i == 0 ? line.moveTo(point) : line.lineTo(point);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(series.color, 2));
    painter.drawPath(line);
    for (std::size_t i = 0; i < n; ++i) {
        const TrendPoint& p = series.points[i];
        if (p.plusMinus > 0) {
            painter.setPen(QPen(theme::secondary(), 1.2));
            painter.drawLine(QPointF(x(i), y(p.score + p.plusMinus)),
                             QPointF(x(i), y(p.score - p.plusMinus)));
        }
        // The selected run stands out; a result measured on a noisy machine is amber.
        const QColor fill = p.noisy ? theme::stateColor(TestRunState::skipped) : series.color;
        painter.setPen(p.selected ? QPen(theme::text(), 2) : Qt::NoPen);
        painter.setBrush(fill);
        painter.drawEllipse(QPointF(x(i), y(p.score)), p.selected ? 5.0 : 3.5, p.selected ? 5.0 : 3.5);
    }
}

} // namespace

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
