// SPDX-License-Identifier: Apache-2.0
// What the sensors said while a benchmark ran, as one small chart: time along the bottom,
// one line per sensor the machine has, each on its own scale, and a legend giving each
// line's unit and range. Drawn under a result in the window, on its card and in the HTML
// export; legible down to about 520 x 150 pixels.
#pragma once

#include "model/sensor_trace.h"
#include "ui/cards/line_chart.h"

#include <QRectF>
#include <QString>

#include <vector>

class QPainter;

namespace quarbel::cards {

// The legend, one text per line drawn, in the order of TraceLine, then "GPU throttled" when
// the GPU held its clocks back at some point: "Core clock 3.12–4.85 GHz", "CPU temp 45–88 °C",
// "CPU power 12–60 W, limit 65 W", ... A column without a readable sample has none.
std::vector<QString> traceLegend(const SensorTrace& trace);

// The trace on a rounded panel filling `box`: the core clock's mean with the slowest and
// fastest cores as a band, the other columns as lines, the GPU's throttled spans shaded, the
// CPU package's power limit dashed on the CPU power scale. "No sensor readings" when the
// trace has nothing to draw. Leaves the painter as it found it.
void paintTraceChart(QPainter& painter, const QRectF& box, const SensorTrace& trace,
                     const ChartPalette& palette);

} // namespace quarbel::cards
