// SPDX-License-Identifier: Apache-2.0
// The texts that describe a run while it goes: elapsed against target, and the live
// rate in the workload's own unit, pure functions of the store's published values; and
// the row that shows them under a progress bar.
#pragma once

#include "run/benchmark_store.h"

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace quarbel::ui {

// "12.3 / 15 s"; the target is the store's (one pass times the pass count).
QString elapsedText(double elapsedSeconds, double targetSeconds);

// The live rate of the pass now running: "1234.5 rounds/s", "812.4 MB/s" for bytes,
// or, for the visual benchmark, its frame statistics. Empty before the first report.
QString liveMetricText(const LiveProgress& progress, const OptionalVisualLiveStats& visual);

// Sizes of a progress row, in pixels from the top of its bar.
struct ProgressRowStyle {
    qreal barHeight = 8;
    qreal textTop = 12; // the band that holds both texts, centred in it
    qreal textHeight = 22;
    qreal elapsedPixels = 13;
    qreal metricPixels = 16;
};

// The bar of the store's run progress at the top of `row`, elapsed against target below it
// on the left and the live rate on the right.
void drawProgressRow(QPainter& painter, const QRectF& row, const BenchmarkStore& store, const QColor& accent,
                     const ProgressRowStyle& style);

} // namespace quarbel::ui
