// SPDX-License-Identifier: Apache-2.0
#include "ui/views/workload_animation_view.h"

#include "ui/views/live_text.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {
namespace {

constexpr int kMargin = 28;
constexpr int kHeaderHeight = 104;
constexpr int kStatusHeight = 64;

} // namespace

WorkloadAnimationView::WorkloadAnimationView(BenchmarkStore& store, BenchmarkID id, QWidget* parent)
    : QWidget(parent), store_(store), id_(id), animation_(id) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    frameTimer_.setInterval(kFrameIntervalMs);
    frameTimer_.setTimerType(Qt::CoarseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, &WorkloadAnimationView::advance);
    // The texts follow the store's quarter-second clock.
    connect(&store_, &BenchmarkStore::currentRunTickChanged, this, [this] { update(statusArea()); });
    clock_.start();
}

QRect WorkloadAnimationView::animationArea() const {
    return QRect(kMargin, kHeaderHeight, width() - 2 * kMargin,
                 height() - kHeaderHeight - kStatusHeight - 12);
}

QRect WorkloadAnimationView::statusArea() const {
    return QRect(kMargin, height() - kStatusHeight, width() - 2 * kMargin, kStatusHeight - 14);
}

void WorkloadAnimationView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    frameTimer_.start();
}

void WorkloadAnimationView::hideEvent(QHideEvent* event) {
    frameTimer_.stop();
    QWidget::hideEvent(event);
}

void WorkloadAnimationView::advance() {
    const double now = double(clock_.elapsed()) / 1000.0;
    const QRegion moved = animation_.changed(animationArea(), shownSeconds_, now);
    shownSeconds_ = now;
    if (!moved.isEmpty()) update(moved);
}

void WorkloadAnimationView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRegion& dirty = event->region();
    const QColor accent = theme::accent(category(id_));
    const QRect header(kMargin, 0, width() - 2 * kMargin, kHeaderHeight);
    if (dirty.intersects(QRect(0, 0, width(), kHeaderHeight))) {
        painter.fillRect(QRect(0, 0, width(), kHeaderHeight), theme::background());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawPixmap(QPoint(kMargin, 22), theme::icon(icon(id_), 30, accent, devicePixelRatioF()));
        painter.setFont(theme::font(12, QFont::DemiBold));
        painter.setPen(accent);
        painter.drawText(
            QRect(kMargin + 42, 16, header.width() - 42, 18), Qt::AlignLeft | Qt::AlignVCenter,
            tr("%1  ·  LIVE WORKLOAD").arg(theme::uiText(categoryTitle(category(id_))).toUpper()));
        painter.setFont(theme::font(22, QFont::Bold));
        painter.setPen(theme::text());
        painter.drawText(QRect(kMargin + 42, 34, header.width() - 42, 28), Qt::AlignLeft | Qt::AlignVCenter,
                         theme::uiText(title(id_)));
        painter.setFont(theme::font(13.5));
        painter.setPen(theme::secondary());
        painter.drawText(QRect(kMargin, 68, header.width(), kHeaderHeight - 72),
                         Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                         theme::uiText(runningExplanation(id_)));
    }
    const QRect area = animationArea();
    if (dirty.intersects(area)) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        animation_.paint(painter, area, shownSeconds_, dirty);
    }
    const QRect gaps[] = {QRect(0, kHeaderHeight, kMargin, height()),
                          QRect(width() - kMargin, kHeaderHeight, kMargin, height()),
                          QRect(0, area.bottom() + 1, width(), statusArea().top() - area.bottom() - 1)};
    for (const QRect& gap : gaps)
        if (dirty.intersects(gap)) painter.fillRect(gap, theme::background());
    const QRect status = statusArea();
    if (dirty.intersects(QRect(0, status.top(), width(), height() - status.top()))) {
        painter.fillRect(QRect(0, status.top(), width(), height() - status.top()), theme::background());
        painter.setRenderHint(QPainter::Antialiasing);
        drawProgressRow(painter, QRectF(status.left(), status.top() + 8, status.width(), status.height() - 8),
                        store_, accent, {8, 14, 26, 14, 18});
    }
}

} // namespace quarbel::ui
