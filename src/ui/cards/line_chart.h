// SPDX-License-Identifier: Apache-2.0
// The small charts the window, the result cards and the HTML export share: a titled chart of
// values left to right, painted into a rectangle of any QPainter (a widget, a QImage, a
// QSvgGenerator), in colours and fonts handed in so that each place keeps its own look.
#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <array>
#include <vector>

class QPainter;

namespace quarbel::cards {

// The sensor lines of a trace chart, in the order their colours are given.
enum class TraceLine { coreClock, cpuTemperature, cpuPower, gpuPower, gpuClock, otherCores };
inline constexpr std::size_t kTraceLineCount = 6;

struct ChartPalette {
    QColor panel;     // behind the chart
    QColor text;      // the title and the selected point's ring
    QColor secondary; // interval whiskers and bands
    QColor muted;     // values and labels along the axes
    QColor border;    // the axis
    QColor warning;   // a point measured on a noisy machine, throttled spans
    std::array<QColor, kTraceLineCount> traceLines;
    QString fontFamily;
    qreal radius = 8; // of the panel's corners

    // The chart font at a pixel size and weight, unhinted.
    QFont font(qreal pixelSize, QFont::Weight weight = QFont::Normal) const;
};

// The result cards' colours in the built-in Inter: what a card and the window look like.
ChartPalette cardChartPalette();

struct ChartPoint {
    QString label; // under the axis; none drawn when every label is empty
    double value = 0;
    double plusMinus = 0;  // half the interval, in the value's units; 0 for none
    bool selected = false; // ringed
    bool flagged = false;  // measured on a noisy machine: drawn in the warning colour
};

struct LineChart {
    enum class Style {
        line, // a line through dots, each interval a whisker, the range fitted to the values
        band, // a line with the intervals as one shaded band
        bars, // bars from zero
    };
    QString title;
    QColor color;
    std::vector<ChartPoint> points; // left to right
    Style style = Style::line;
};

// The chart on a rounded panel filling `box`: its title, the highest and lowest values of
// its range at the left, the points, and their labels along the bottom when they have any.
// Leaves the painter as it found it.
// The rounded panel every chart stands on; leaves antialiasing on.
void paintChartPanel(QPainter& painter, const QRectF& box, const ChartPalette& palette);

void paintLineChart(QPainter& painter, const QRectF& box, const LineChart& chart,
                    const ChartPalette& palette);

} // namespace quarbel::cards
