// SPDX-License-Identifier: Apache-2.0
#include "ui/views/toggle_switch.h"

#include "ui/views/theme.h"

#include <QPainter>

namespace quarbel::ui {

ToggleSwitch::ToggleSwitch(const QString& label, QWidget* parent) : QAbstractButton(parent) {
    setText(label);
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
}

QSize ToggleSwitch::sizeHint() const {
    return {44 + 8 + QFontMetrics(theme::font(13)).horizontalAdvance(text()) + 4, 30};
}

void ToggleSwitch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track(1, (height() - 22) / 2.0, 40, 22);
    const QColor on = theme::stateColor(TestRunState::running);
    QColor trackColor = isChecked() ? on : QColor(255, 255, 255, 40);
    if (!isEnabled()) trackColor.setAlphaF(trackColor.alphaF() * 0.5f);
    painter.setPen(hasFocus() ? QPen(theme::text(), 1) : Qt::NoPen);
    painter.setBrush(trackColor);
    painter.drawRoundedRect(track, 11, 11);
    const qreal knobX = isChecked() ? track.right() - 20 : track.left() + 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? QColor(250, 250, 252) : QColor(160, 160, 165));
    painter.drawEllipse(QRectF(knobX, track.top() + 2, 18, 18));
    painter.setFont(theme::font(13));
    painter.setPen(isEnabled() ? theme::text() : theme::muted());
    painter.drawText(QRectF(track.right() + 8, 0, width() - track.right() - 8, height()),
                     Qt::AlignVCenter | Qt::AlignLeft, text());
}

} // namespace quarbel::ui
