// SPDX-License-Identifier: Apache-2.0
#include "ui/views/system_panel.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {

SystemPanel::SystemPanel(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumHeight(236);
    connect(&store_, &BenchmarkStore::temperatureSnapshotChanged, this, qOverload<>(&QWidget::update));
}

void SystemPanel::setRows(std::vector<SystemRow> rows) {
    rows_ = std::move(rows);
    update();
}

void SystemPanel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);
    const QRectF area = panel.adjusted(18, 14, -18, -14);

    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(area.left(), area.top(), area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("SYSTEM"));

    // Temperature pills: warm colours when a sensor reads, muted when it does not.
    const TemperatureSnapshot temperatures = store_.temperatureSnapshot();
    const qreal pillTop = area.top() + 24;
    const qreal pillWidth = (area.width() - 8) / 2;
    const auto pill = [&](qreal left, const QString& name, std::optional<double> celsius,
                          const QColor& color) {
        theme::drawPill(painter, QRectF(left, pillTop, pillWidth, 26),
                        name + QLatin1Char(' ') +
                            (celsius ? theme::qstring(temperatureText(celsius)) : tr("Unavailable")),
                        celsius ? color : theme::muted());
    };
    pill(area.left(), tr("CPU"), temperatures.cpuCelsius, theme::accent(BenchmarkCategory::cpu));
    pill(area.left() + pillWidth + 8, tr("GPU"), temperatures.gpuCelsius,
         theme::accent(BenchmarkCategory::gpu));

    qreal y = pillTop + 36;
    if (rows_.empty()) {
        painter.setFont(theme::font(12.5));
        painter.setPen(theme::muted());
        painter.drawText(QRectF(area.left(), y, area.width(), 18), Qt::AlignLeft | Qt::AlignVCenter,
                         tr("Reading system facts..."));
        return;
    }
    // As wide as the longest label, but never more than two fifths of the panel.
    qreal labelWidth = 0;
    const QFontMetricsF labelMetrics(theme::font(12));
    for (const SystemRow& row : rows_)
        labelWidth = std::max(labelWidth, labelMetrics.horizontalAdvance(theme::qstring(row.label)) + 12);
    labelWidth = std::min(labelWidth, area.width() * 0.4);
    const qreal rowHeight = std::min(26.0, (area.bottom() - y) / qreal(rows_.size()));
    for (const SystemRow& row : rows_) {
        painter.setFont(theme::font(12));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(area.left(), y, labelWidth, rowHeight), Qt::AlignLeft | Qt::AlignVCenter,
                         theme::qstring(row.label));
        painter.setFont(theme::font(12.5, QFont::DemiBold));
        painter.setPen(theme::text());
        const qreal valueWidth = area.width() - labelWidth;
        const QString value =
            QFontMetrics(painter.font())
                .elidedText(theme::qstring(row.value).trimmed(), Qt::ElideRight, int(valueWidth));
        painter.drawText(QRectF(area.left() + labelWidth, y, valueWidth, rowHeight),
                         Qt::AlignLeft | Qt::AlignVCenter, value);
        y += rowHeight;
    }
}

} // namespace quarbel::ui
