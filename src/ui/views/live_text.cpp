// SPDX-License-Identifier: Apache-2.0
#include "ui/views/live_text.h"

#include "model/number_format.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QPainter>

namespace quarbel::ui {

QString elapsedText(double elapsedSeconds, double targetSeconds) {
    return QStringLiteral("%1 / %2 s")
        .arg(theme::qstring(format(std::max(elapsedSeconds, 0.0), 1)))
        // Quick budgets are fractions of a second: "1.5", not "2".
        .arg(theme::qstring(format(targetSeconds, targetSeconds < 10 ? 1 : 0)));
}

QString liveMetricText(const LiveProgress& progress, const OptionalVisualLiveStats& visual) {
    if (visual && visual->frames > 0) {
        return QCoreApplication::translate("quarbel::ui::LiveText",
                                           "%1 FPS average, %2 min, %3 max, %4 frames")
            .arg(theme::qstring(format(visual->averageFPS, 1)))
            .arg(theme::qstring(format(visual->minFPS, 1)))
            .arg(theme::qstring(format(visual->maxFPS, 1)))
            .arg(visual->frames);
    }
    const auto rate = liveRate(progress.unitsDone, progress.elapsedSeconds, progress.unit);
    if (!rate) return {};
    return theme::qstring(format(rate->value, rate->value < 100 ? 2 : 1)) + QLatin1Char(' ') +
           theme::qstring(rate->unit);
}

void drawProgressRow(QPainter& painter, const QRectF& row, const BenchmarkStore& store, const QColor& accent,
                     const ProgressRowStyle& style) {
    theme::drawProgressBar(painter, QRectF(row.left(), row.top(), row.width(), style.barHeight),
                           store.currentRunProgress(), accent);
    const QRectF texts(row.left(), row.top() + style.textTop, row.width(), style.textHeight);
    painter.setFont(theme::font(style.elapsedPixels));
    painter.setPen(theme::secondary());
    painter.drawText(texts, Qt::AlignLeft | Qt::AlignVCenter,
                     elapsedText(store.currentRunElapsed(), store.currentRunTargetSeconds()));
    painter.setFont(theme::font(style.metricPixels, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(texts, Qt::AlignRight | Qt::AlignVCenter,
                     liveMetricText(store.liveProgress(), store.visualLiveStats()));
}

} // namespace quarbel::ui
