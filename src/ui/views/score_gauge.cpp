// SPDX-License-Identifier: Apache-2.0
#include "ui/views/score_gauge.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace quarbel::ui {
namespace {

constexpr double kDialDecades = 6;  // 1 ... 1,000,000 points
constexpr double kStartAngle = 215; // degrees, counter-clockwise from three o'clock
constexpr double kSpan = 250;

} // namespace

double gaugeFraction(double score) {
    if (!(score > 1)) return 0;
    return std::min(1.0, std::log10(score) / kDialDecades);
}

ScoreGauge::ScoreGauge(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(220, 200);
    sweep_.setDuration(700);
    sweep_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&sweep_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shownScore_ = value.toDouble();
        update();
    });
    connect(&store_, &BenchmarkStore::rowsChanged, this, [this] {
        const double target = store_.totalScore();
        if (target == shownScore_ && sweep_.state() != QAbstractAnimation::Running) {
            update();
            return;
        }
        sweep_.stop();
        sweep_.setStartValue(shownScore_);
        sweep_.setEndValue(target);
        sweep_.start();
    });
    shownScore_ = store_.totalScore();
}

void ScoreGauge::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);

    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(panel.adjusted(18, 14, -18, 0), Qt::AlignLeft | Qt::AlignTop, tr("GLOBAL SCORE"));

    const qreal side = std::min(panel.width() - 60, panel.height() - 50);
    const QRectF dial(panel.center().x() - side / 2, panel.top() + 40, side, side);
    const qreal thickness = std::max(8.0, side * 0.07);
    const QRectF arc = dial.adjusted(thickness / 2, thickness / 2, -thickness / 2, -thickness / 2);

    QPen track(QColor(255, 255, 255, 26), thickness, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(track);
    painter.drawArc(arc, int(kStartAngle * 16), int(-kSpan * 16));

    const double fraction = gaugeFraction(shownScore_);
    if (fraction > 0) {
        QConicalGradient gradient(arc.center(), kStartAngle - kSpan);
        // Sweep through the category accents, cool to warm.
        gradient.setColorAt(0.0, theme::accent(BenchmarkCategory::system));
        gradient.setColorAt(0.35, theme::accent(BenchmarkCategory::cpu));
        gradient.setColorAt(0.7, theme::accent(BenchmarkCategory::render));
        gradient.setColorAt(1.0, theme::accent(BenchmarkCategory::gpu));
        painter.setPen(QPen(QBrush(gradient), thickness, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(arc, int(kStartAngle * 16), int(-kSpan * fraction * 16));
    }

    painter.setPen(theme::text());
    painter.setFont(theme::font(side * 0.17, QFont::Bold));
    painter.drawText(QRectF(dial.left(), dial.center().y() - side * 0.16, dial.width(), side * 0.22),
                     Qt::AlignCenter, theme::qstring(scoreText(shownScore_)));
    painter.setFont(theme::font(12));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(dial.left(), dial.center().y() + side * 0.07, dial.width(), 18), Qt::AlignCenter,
                     tr("Quarbel points"));
    painter.drawText(QRectF(dial.left(), dial.bottom() - side * 0.12, dial.width(), 18), Qt::AlignCenter,
                     tr("%1/13 complete").arg(store_.completedCount()));
}

} // namespace quarbel::ui
