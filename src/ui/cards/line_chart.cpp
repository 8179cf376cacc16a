// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/line_chart.h"

#include "model/outcome.h"
#include "ui/cards/card_fonts.h"
#include "ui/cards/result_card_palette.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace quarbel::cards {

QFont ChartPalette::font(qreal pixelSize, QFont::Weight weight) const {
    QFont f(fontFamily);
    f.setPixelSize(qRound(pixelSize));
    f.setWeight(weight);
    f.setHintingPreference(QFont::PreferNoHinting);
    return f;
}

ChartPalette cardChartPalette() {
    namespace P = ResultCardPalette;
    const auto rgb = [](double r, double g, double b) {
        return QColor::fromRgbF(float(r), float(g), float(b));
    };
    return {P::panel(),
            P::text(),
            P::secondary(),
            P::muted(),
            P::border(),
            P::stateColor(TestRunState::skipped),
            {P::stateColor(TestRunState::running), P::stateColor(TestRunState::failed),
             P::stateColor(TestRunState::skipped), P::stateColor(TestRunState::done), rgb(0.68, 0.58, 0.98),
             P::secondary()},
            cardFontFamily()};
}

namespace {

constexpr qreal kValueColumn = 70; // left of the plot: the range's values
constexpr qreal kTitleHeight = 34;
constexpr qreal kLabelRow = 16; // under the plot, when points have labels

struct Range {
    double low = 0;
    double high = 1;
};

Range rangeOf(const LineChart& chart) {
    if (chart.style == LineChart::Style::bars) {
        double high = 0;
        for (const ChartPoint& p : chart.points)
            high = std::max(high, p.value);
        return {0, high > 0 ? high * 1.08 : 1};
    }
    double low = chart.points.front().value, high = low;
    for (const ChartPoint& p : chart.points) {
        low = std::min(low, p.value - p.plusMinus);
        high = std::max(high, p.value + p.plusMinus);
    }
    // A little room above and below, and never a flat range.
    const double pad = std::max((high - low) * 0.1, std::abs(high) * 0.01);
    low = std::max(0.0, low - pad);
    high += pad;
    return {low, high > low ? high : low + 1};
}

// Run labels along the bottom: every one while they fit, else every second, third, ...,
// each elided to the room it has, kept inside the panel and clear of the range's values and
// of the label before it (one that cannot be is left out).
void paintLabels(QPainter& painter, const QRectF& box, const QRectF& plot, const LineChart& chart,
                 const std::vector<qreal>& xs, const ChartPalette& palette) {
    painter.setFont(palette.font(10.5));
    painter.setPen(palette.muted);
    const QFontMetricsF metrics(painter.font());
    const std::size_t n = xs.size();
    const qreal spacing = n > 1 ? xs[1] - xs[0] : plot.width();
    qreal widest = 0;
    for (const ChartPoint& p : chart.points)
        widest = std::max(widest, metrics.horizontalAdvance(p.label));
    const qreal wanted = std::min(widest, 120.0) + 10;
    std::size_t every = 1;
    while (every < n && spacing * qreal(every) < wanted)
        ++every;
    const qreal room = std::min(spacing * qreal(every) - 8, 140.0);
    qreal free = plot.left() - 4; // the values' column ends 6 px left of the plot
    for (std::size_t i = 0; i < n; i += every) {
        const QString text = metrics.elidedText(chart.points[i].label, Qt::ElideMiddle, room);
        const qreal width = metrics.horizontalAdvance(text) + 2;
        const qreal left = std::min(std::max(xs[i] - width / 2, free), box.right() - 4 - width);
        if (left < free) continue;
        painter.drawText(QRectF(left, plot.bottom() + 3, width, kLabelRow - 2), Qt::AlignCenter, text);
        free = left + width + 6;
    }
}

} // namespace

void paintChartPanel(QPainter& painter, const QRectF& box, const ChartPalette& palette) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette.panel);
    painter.drawRoundedRect(box, palette.radius, palette.radius);
}

void paintLineChart(QPainter& painter, const QRectF& box, const LineChart& chart,
                    const ChartPalette& palette) {
    painter.save();
    paintChartPanel(painter, box, palette);
    painter.setFont(palette.font(13, QFont::DemiBold));
    painter.setPen(palette.text);
    const QRectF titleBox = box.adjusted(12, 8, -12, 0);
    painter.drawText(QRectF(titleBox.left(), titleBox.top(), titleBox.width(), 18),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetricsF(painter.font()).elidedText(chart.title, Qt::ElideRight, titleBox.width()));
    if (chart.points.empty()) {
        painter.restore();
        return;
    }

    const bool labelled = std::any_of(chart.points.begin(), chart.points.end(),
                                      [](const ChartPoint& p) { return !p.label.isEmpty(); });
    const Range range = rangeOf(chart);
    const QRectF plot = box.adjusted(kValueColumn, kTitleHeight, -14, labelled ? -14 - kLabelRow : -14);
    painter.setFont(palette.font(10.5));
    painter.setPen(palette.muted);
    painter.drawText(QRectF(box.left() + 6, plot.top() - 7, kValueColumn - 12, 14),
                     Qt::AlignRight | Qt::AlignVCenter, QString::fromStdString(scoreText(range.high)));
    painter.drawText(QRectF(box.left() + 6, plot.bottom() - 7, kValueColumn - 12, 14),
                     Qt::AlignRight | Qt::AlignVCenter, QString::fromStdString(scoreText(range.low)));
    painter.setPen(QPen(palette.border, 1));
    painter.drawLine(plot.bottomLeft(), plot.bottomRight());

    // Bars stand in slots; a line runs from edge to edge.
    const std::size_t n = chart.points.size();
    const bool bars = chart.style == LineChart::Style::bars;
    std::vector<qreal> xs(n);
    for (std::size_t i = 0; i < n; ++i)
        xs[i] = bars     ? plot.left() + plot.width() * (qreal(i) + 0.5) / qreal(n)
                : n == 1 ? plot.center().x()
                         : plot.left() + plot.width() * qreal(i) / qreal(n - 1);
    const auto y = [&](double v) {
        const double clamped = std::clamp(v, range.low, range.high);
        return plot.bottom() - plot.height() * (clamped - range.low) / (range.high - range.low);
    };

    if (bars) {
        const qreal width = std::min(plot.width() / qreal(n) * 0.7, 48.0);
        painter.setPen(Qt::NoPen);
        for (std::size_t i = 0; i < n; ++i) {
            const ChartPoint& p = chart.points[i];
            painter.setBrush(p.flagged ? palette.warning : chart.color);
            painter.drawRect(
                QRectF(QPointF(xs[i] - width / 2, y(p.value)), QPointF(xs[i] + width / 2, plot.bottom())));
        }
    } else {
        if (chart.style == LineChart::Style::band) {
            QPolygonF band;
            for (std::size_t i = 0; i < n; ++i)
                band << QPointF(xs[i], y(chart.points[i].value + chart.points[i].plusMinus));
            for (std::size_t i = n; i-- > 0;)
                band << QPointF(xs[i], y(chart.points[i].value - chart.points[i].plusMinus));
            QColor fill = chart.color;
            fill.setAlphaF(0.2f);
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawPolygon(band);
        }
        QPainterPath line;
        for (std::size_t i = 0; i < n; ++i) {
            const QPointF point(xs[i], y(chart.points[i].value));
            i == 0 ? line.moveTo(point) : line.lineTo(point);
        }
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(chart.color, 2));
        painter.drawPath(line);
        for (std::size_t i = 0; i < n; ++i) {
            const ChartPoint& p = chart.points[i];
            if (p.plusMinus > 0 && chart.style == LineChart::Style::line) {
                painter.setPen(QPen(palette.secondary, 1.2));
                painter.drawLine(QPointF(xs[i], y(p.value + p.plusMinus)),
                                 QPointF(xs[i], y(p.value - p.plusMinus)));
            }
            painter.setPen(p.selected ? QPen(palette.text, 2) : Qt::NoPen);
            painter.setBrush(p.flagged ? palette.warning : chart.color);
            const qreal radius = p.selected ? 5.0 : 3.5;
            painter.drawEllipse(QPointF(xs[i], y(p.value)), radius, radius);
        }
    }
    if (labelled) paintLabels(painter, box, plot, chart, xs, palette);
    painter.restore();
}

} // namespace quarbel::cards
