// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/trace_chart.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <optional>

namespace quarbel::cards {
namespace {

constexpr qreal kPad = 10;
constexpr qreal kLegendRow = 14;
constexpr qreal kSwatch = 12;     // a legend entry's line or square, and the gap after it
constexpr qreal kTimeLabels = 17; // under the plot

bool finite(double v) { return std::isfinite(v); }

// One line of the chart: its samples and how they read.
struct Column {
    TraceLine line = TraceLine::coreClock;
    const std::vector<float>* values = nullptr;
    const std::vector<float>* low = nullptr; // a band under the line, for the core clock
    const std::vector<float>* high = nullptr;
    QString name;
    QString unit;
    double divisor = 1; // MHz shown as GHz
    int decimals = 0;
    std::optional<double> limit; // dashed, on this column's scale
    double min = 0, max = 0;     // of the line, in the column's units
    double scaleLow = 0, scaleHigh = 0;
};

// The lowest and highest finite sample of the first `count` of `values`, if any.
std::optional<std::pair<double, double>> extent(const std::vector<float>* values, std::size_t count) {
    if (values == nullptr) return std::nullopt;
    std::optional<std::pair<double, double>> found;
    for (std::size_t i = 0; i < std::min(count, values->size()); ++i) {
        const double v = (*values)[i];
        if (!finite(v)) continue;
        found = found ? std::pair(std::min(found->first, v), std::max(found->second, v)) : std::pair(v, v);
    }
    return found;
}

int powerDecimals(double high) { return high < 10 ? 1 : 0; }

// The columns with at least one readable sample, in the order of TraceLine.
std::vector<Column> columnsOf(const SensorTrace& trace) {
    const std::size_t n = trace.seconds.size();
    std::vector<Column> columns;
    // Adds the column of `values` when it has a readable sample, with its extent worked out.
    const auto add = [&](TraceLine line, const std::vector<float>& values, const QString& name,
                         const QString& unit, int decimals, double divisor = 1,
                         const std::vector<float>* low = nullptr, const std::vector<float>* high = nullptr,
                         std::optional<double> limit = std::nullopt) {
        const auto own = extent(&values, n);
        if (!own) return;
        Column c;
        c.line = line;
        c.values = &values;
        c.low = low;
        c.high = high;
        c.name = name;
        c.unit = unit;
        c.divisor = divisor;
        c.decimals = decimals;
        c.limit = limit;
        c.min = c.scaleLow = own->first;
        c.max = c.scaleHigh = own->second;
        for (const auto* edge : {low, high})
            if (const auto band = extent(edge, n)) {
                c.scaleLow = std::min(c.scaleLow, band->first);
                c.scaleHigh = std::max(c.scaleHigh, band->second);
            }
        if (limit) {
            c.scaleLow = std::min(c.scaleLow, *limit);
            c.scaleHigh = std::max(c.scaleHigh, *limit);
        }
        columns.push_back(std::move(c));
    };
    // A clock reads in GHz from 1000 MHz up.
    const auto giga = [&](const std::vector<float>& values) {
        const auto top = extent(&values, n);
        return top && top->second >= 1000;
    };
    const auto clock = [&](TraceLine line, const std::vector<float>& mean, const QString& name,
                           const std::vector<float>* low, const std::vector<float>* high) {
        const bool g = giga(high ? *high : mean);
        add(line, mean, name, g ? QStringLiteral("GHz") : QStringLiteral("MHz"), g ? 2 : 0, g ? 1000.0 : 1.0,
            low, high);
    };
    const auto watts = [&](TraceLine line, const std::vector<float>& values, const QString& name,
                           std::optional<double> limit) {
        const auto own = extent(&values, n);
        add(line, values, name, QStringLiteral("W"), powerDecimals(own ? own->second : 0), 1, nullptr,
            nullptr, limit);
    };
    const auto present = [](const std::vector<float>& column) { return column.empty() ? nullptr : &column; };

    clock(TraceLine::coreClock, trace.coreMHzMean, QStringLiteral("CPU clock"), present(trace.coreMHzLow),
          present(trace.coreMHzHigh));
    add(TraceLine::cpuTemperature, trace.cpuCelsius, QStringLiteral("CPU"), QStringLiteral("°C"), 0);
    const auto& limit = trace.packageLimitWatts;
    watts(TraceLine::cpuPower, trace.cpuWatts, QStringLiteral("CPU"),
          limit && finite(*limit) && *limit > 0 ? limit : std::nullopt);
    watts(TraceLine::gpuPower, trace.gpuWatts, QStringLiteral("GPU"), std::nullopt);
    clock(TraceLine::gpuClock, trace.gpuMHz, QStringLiteral("GPU clock"), nullptr, nullptr);
    add(TraceLine::otherCores, trace.otherCores, QStringLiteral("Other processes"), QStringLiteral("cores"),
        1);
    // Each line gets a scale of its own, but never so narrow that a flicker of a reading's
    // last digit fills the chart: power and core counts from zero, a core count over one core
    // at least, temperatures over 10 degrees, clocks over a fifth of their top.
    for (Column& c : columns) {
        double floor = c.scaleLow, span = 0;
        switch (c.line) {
        case TraceLine::cpuPower:
        case TraceLine::gpuPower: floor = 0; break;
        case TraceLine::otherCores: floor = 0, span = 1; break;
        case TraceLine::cpuTemperature: span = 10; break;
        case TraceLine::coreClock:
        case TraceLine::gpuClock: span = 0.2 * c.scaleHigh; break;
        }
        c.scaleLow = std::min(c.scaleLow, floor);
        c.scaleHigh = std::max(c.scaleHigh, c.scaleLow + span);
    }
    return columns;
}

QString legendText(const Column& c) {
    const QString low = QString::number(c.min / c.divisor, 'f', c.decimals);
    const QString high = QString::number(c.max / c.divisor, 'f', c.decimals);
    QString text = c.name + u' ' + (low == high ? low : low + u'–' + high) + u' ' + c.unit;
    if (c.limit)
        text += QStringLiteral(", limit %1 W").arg(QString::number(*c.limit, 'f', powerDecimals(*c.limit)));
    return text;
}

// The spans of time, in seconds, during which the GPU reported a reason for holding its
// clocks back: each throttled sample covers half the way to its neighbours.
std::vector<std::pair<double, double>> throttledSpans(const SensorTrace& trace) {
    const std::vector<float>& t = trace.seconds;
    const std::size_t n = std::min(t.size(), trace.gpuThrottleReasons.size());
    std::vector<std::pair<double, double>> spans;
    for (std::size_t i = 0; i < n; ++i) {
        if (trace.gpuThrottleReasons[i] == 0 || !finite(t[i])) continue;
        const double from = i > 0 && finite(t[i - 1]) ? (t[i - 1] + t[i]) / 2.0 : t[i];
        const double to = i + 1 < t.size() && finite(t[i + 1]) ? (t[i] + t[i + 1]) / 2.0 : t[i];
        if (!spans.empty() && spans.back().second >= from)
            spans.back().second = to;
        else
            spans.emplace_back(from, to);
    }
    return spans;
}

// Ticks along the time axis at a round step, at most `most` of them past zero.
double timeStep(double seconds, int most) {
    for (double step : {0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 1200.0})
        if (seconds / step <= most) return step;
    return std::ceil(seconds / most / 600.0) * 600.0;
}

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(float(alpha));
    return color;
}

struct LegendEntry {
    QString text;
    QColor color;
    bool area = false; // a shaded square rather than a line
};

// Lays the entries out in rows from the top of `box`, wrapping where one would not fit;
// returns the height used.
qreal paintLegend(QPainter& painter, const QRectF& box, const std::vector<LegendEntry>& entries,
                  const ChartPalette& palette) {
    painter.setFont(palette.font(10));
    const QFontMetricsF metrics(painter.font());
    qreal x = box.left(), y = box.top();
    for (const LegendEntry& entry : entries) {
        const QString text = metrics.elidedText(entry.text, Qt::ElideRight, box.width() - kSwatch - 4);
        const qreal width = kSwatch + 4 + metrics.horizontalAdvance(text);
        if (x > box.left() && x + width > box.right()) {
            x = box.left();
            y += kLegendRow;
        }
        const qreal middle = y + kLegendRow / 2;
        if (entry.area) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(entry.color);
            painter.drawRect(QRectF(x, middle - 4, kSwatch - 2, 8));
        } else {
            painter.setPen(QPen(entry.color, 2.5, Qt::SolidLine, Qt::RoundCap));
            painter.drawLine(QPointF(x + 1, middle), QPointF(x + kSwatch - 3, middle));
        }
        painter.setPen(palette.secondary);
        painter.drawText(QRectF(x + kSwatch + 2, y, width, kLegendRow), Qt::AlignLeft | Qt::AlignVCenter,
                         text);
        x += width + 12;
    }
    return entries.empty() ? 0 : y + kLegendRow - box.top();
}

} // namespace

std::vector<QString> traceLegend(const SensorTrace& trace) {
    std::vector<QString> texts;
    for (const Column& column : columnsOf(trace))
        texts.push_back(legendText(column));
    if (!throttledSpans(trace).empty()) texts.push_back(QStringLiteral("GPU throttled"));
    return texts;
}

void paintTraceChart(QPainter& painter, const QRectF& box, const SensorTrace& trace,
                     const ChartPalette& palette) {
    painter.save();
    paintChartPanel(painter, box, palette);
    const std::vector<Column> columns = columnsOf(trace);
    const auto times = extent(&trace.seconds, trace.seconds.size());
    if (columns.empty() || !times) {
        painter.setFont(palette.font(12));
        painter.setPen(palette.muted);
        painter.drawText(box, Qt::AlignCenter, QStringLiteral("No sensor readings"));
        painter.restore();
        return;
    }
    const auto spans = throttledSpans(trace);
    const QColor shade = withAlpha(palette.warning, 0.2);
    std::vector<LegendEntry> entries;
    for (const Column& column : columns)
        entries.push_back({legendText(column), palette.traceLines[std::size_t(column.line)]});
    if (!spans.empty())
        entries.push_back({QStringLiteral("GPU throttled"), withAlpha(palette.warning, 0.5), true});
    const QRectF inner = box.adjusted(kPad, 6, -kPad, -2);
    const qreal legendHeight = paintLegend(painter, inner, entries, palette);
    const QRectF plot(inner.left(), inner.top() + legendHeight + 6, inner.width(),
                      std::max<qreal>(12, inner.height() - legendHeight - 6 - kTimeLabels));

    // Time from the benchmark's start to its last sample.
    const double end = times->second > 0 ? times->second : 1;
    const auto x = [&](double t) { return plot.left() + plot.width() * std::clamp(t / end, 0.0, 1.0); };

    painter.setPen(Qt::NoPen);
    painter.setBrush(shade);
    for (const auto& [from, to] : spans) {
        const qreal left = x(from), right = std::max(x(to), left + 2);
        painter.drawRect(
            QRectF(QPointF(left, plot.top()), QPointF(std::min(right, plot.right()), plot.bottom())));
    }

    painter.setPen(QPen(palette.border, 1));
    painter.drawLine(plot.bottomLeft(), plot.bottomRight());
    painter.setFont(palette.font(10.5));
    const QFontMetricsF metrics(painter.font());
    const double step = timeStep(end, std::max(2, int(plot.width() / 70)));
    const int decimals = step < 1 ? 1 : 0;
    for (double t = 0; t <= end + step * 1e-6; t += step) {
        const QString label = QString::number(t, 'f', decimals) + QStringLiteral(" s");
        const qreal width = metrics.horizontalAdvance(label) + 2;
        const qreal left = std::clamp(x(t) - width / 2, box.left() + 4, box.right() - 4 - width);
        painter.setPen(QPen(palette.border, 1));
        painter.drawLine(QPointF(x(t), plot.bottom()), QPointF(x(t), plot.bottom() + 3));
        painter.setPen(palette.muted);
        painter.drawText(QRectF(left, plot.bottom() + 3, width, kTimeLabels - 3), Qt::AlignCenter, label);
    }

    const std::size_t n = trace.seconds.size();
    for (auto column = columns.rbegin(); column != columns.rend(); ++column) {
        const QColor color = palette.traceLines[std::size_t(column->line)];
        // Each line on its own scale, a little inside the plot so that a 2 px line is whole.
        const double low = column->scaleLow, high = column->scaleHigh;
        const auto y = [&](double v) {
            const double f = high > low ? (v - low) / (high - low) : 0.5;
            return plot.bottom() - 3 - (plot.height() - 6) * std::clamp(f, 0.0, 1.0);
        };
        const auto sample = [&](const std::vector<float>* values, std::size_t i) {
            return values != nullptr && i < values->size() ? double((*values)[i]) : std::nan("");
        };
        if (column->limit) {
            painter.setPen(QPen(withAlpha(color, 0.8), 1.2, Qt::DashLine));
            painter.drawLine(QPointF(plot.left(), y(*column->limit)),
                             QPointF(plot.right(), y(*column->limit)));
        }
        // Runs of readable samples: a NaN, or a missing time, breaks the line.
        QPolygonF line, bandTop, bandBottom;
        const auto flush = [&] {
            if (bandTop.size() > 1) {
                QPolygonF band = bandTop;
                for (auto p = bandBottom.crbegin(); p != bandBottom.crend(); ++p)
                    band << *p;
                painter.setPen(Qt::NoPen);
                painter.setBrush(withAlpha(color, 0.22));
                painter.drawPolygon(band);
            }
            if (line.size() > 1) {
                painter.setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
                painter.setBrush(Qt::NoBrush);
                painter.drawPolyline(line);
            } else if (line.size() == 1) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(color);
                painter.drawEllipse(line.front(), 2.2, 2.2);
            }
            line.clear();
            bandTop.clear();
            bandBottom.clear();
        };
        for (std::size_t i = 0; i < n; ++i) {
            const double t = trace.seconds[i], v = sample(column->values, i);
            if (!finite(t) || !finite(v)) {
                flush();
                continue;
            }
            line << QPointF(x(t), y(v));
            if (column->low != nullptr || column->high != nullptr) {
                const double lo = sample(column->low ? column->low : column->values, i);
                const double hi = sample(column->high ? column->high : column->values, i);
                if (finite(lo) && finite(hi)) {
                    bandTop << QPointF(x(t), y(hi));
                    bandBottom << QPointF(x(t), y(lo));
                }
            }
        }
        flush();
    }
    painter.restore();
}

} // namespace quarbel::cards
