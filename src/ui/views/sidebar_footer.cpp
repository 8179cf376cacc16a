// SPDX-License-Identifier: Apache-2.0
#include "ui/views/sidebar_footer.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {

SidebarFooter::SidebarFooter(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedHeight(64);
    connect(&store_, &BenchmarkStore::rowsChanged, this, qOverload<>(&QWidget::update));
}

void SidebarFooter::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::background());
    painter.setPen(theme::border());
    painter.drawLine(0, 0, width(), 0);
    const QRectF area = QRectF(rect()).adjusted(20, 10, -20, -10);
    const QRectF left(area.left(), area.top(), area.width() / 2, area.height());
    const QRectF right(area.center().x(), area.top(), area.width() / 2, area.height());

    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(left, Qt::AlignLeft | Qt::AlignTop, tr("COMPLETED"));
    painter.drawText(right, Qt::AlignRight | Qt::AlignTop, tr("GLOBAL SCORE"));
    painter.setFont(theme::font(18, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(left, Qt::AlignLeft | Qt::AlignBottom,
                     QStringLiteral("%1/13").arg(store_.completedCount()));
    painter.drawText(right, Qt::AlignRight | Qt::AlignBottom, theme::qstring(scoreText(store_.totalScore())));
}

} // namespace quarbel::ui
