// SPDX-License-Identifier: Apache-2.0
#include "ui/views/stage_view.h"

#include "run/benchmark_store.h"
#include "ui/views/live_text.h"
#include "ui/views/run_header.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quarbel::ui {
namespace {

constexpr qreal kPanelRadius = 14;
constexpr int kPanelPaddingX = 24;
constexpr int kPanelPaddingY = 20;
constexpr int kTextFlags = Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop;

QFont explanationFont(bool inlineStage) { return theme::font(inlineStage ? 15 : 13.5); }
QFont statusFont() { return theme::font(14, QFont::DemiBold); }

} // namespace

bool hasInlineStage(BenchmarkID id) {
    switch (category(id)) {
    case BenchmarkCategory::cpu:
    case BenchmarkCategory::storage:
    case BenchmarkCategory::system: return true;
    case BenchmarkCategory::render:
    case BenchmarkCategory::gpu:
    case BenchmarkCategory::raw: return false;
    }
    return false;
}

StageView::StageView(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    // Repaints follow the store's 0.25 s clock, not every progress report of the workload.
    connect(&store_, &BenchmarkStore::currentRunTickChanged, this, &StageView::onTick);
    connect(&store_, &BenchmarkStore::runningIDChanged, this, [this] {
        rates_.clear();
        lastSample_ = {};
        poster_.reset();
        painted_.reset();
        update();
    });
    connect(&store_, &BenchmarkStore::passTextChanged, this, qOverload<>(&QWidget::update));
    connect(&store_, &BenchmarkStore::cooldownTextChanged, this, qOverload<>(&QWidget::update));
    connect(&store_, &BenchmarkStore::visualLiveStatsChanged, this, [this] {
        if (painted_)
            update(painted_->progress.toAlignedRect().adjusted(-2, -2, 2, 2));
        else
            update();
    });
}

StageView::Layout StageView::layout(BenchmarkID id) const {
    Layout parts;
    parts.area =
        QRectF(rect()).adjusted(kPanelPaddingX, kPanelPaddingY, -kPanelPaddingX - 1, -kPanelPaddingY - 1);
    const QRectF& area = parts.area;
    const bool inlineStage = hasInlineStage(id);
    const auto wrappedHeight = [this](const QFont& font, const QRectF& box, const QString& text) {
        return QFontMetricsF(font, this).boundingRect(box, kTextFlags, text).height();
    };
    const QString explanation = theme::uiText(runningExplanation(id));
    if (inlineStage) {
        const QRectF box(area.left(), area.top() + 42, area.width(), area.height());
        parts.explanation = QRectF(
            box.topLeft(), QSizeF(box.width(), wrappedHeight(explanationFont(true), box, explanation)));
        const qreal y = parts.explanation.bottom();
        const QRectF textBox(area.left() + 30, y + 18, area.width() - 42, 200);
        const qreal textHeight = wrappedHeight(statusFont(), textBox, statusLine());
        parts.strip = QRectF(area.left(), y + 18, area.width(), std::max<qreal>(40, textHeight + 20));
        const qreal barTop = parts.strip.bottom() + 22;
        parts.progress = QRectF(area.left(), barTop, area.width(), 40);
        parts.trace = QRectF(area.left(), barTop + 56, area.width(), area.bottom() - barTop - 56);
        return parts;
    }
    parts.picture =
        QRectF(area.left(), area.top(), area.width(), std::round(area.height() * 0.52)).toAlignedRect();
    const qreal textTop = parts.picture.bottom() + 18;
    const QRectF box(area.left(), textTop + 68, area.width(), area.bottom() - textTop - 68);
    parts.explanation =
        QRectF(box.topLeft(), QSizeF(box.width(), wrappedHeight(explanationFont(false), box, explanation)));
    const qreal barTop = std::min(parts.explanation.bottom() + 16, area.bottom() - 36);
    parts.progress = QRectF(area.left(), barTop, area.width(), 34);
    return parts;
}

void StageView::onTick() {
    sampleRate();
    const auto running = store_.runningID();
    const Layout parts = running ? layout(*running) : Layout{};
    const double shownSeconds = std::exchange(posterSeconds_, store_.currentRunElapsed());
    // A status line that wraps differently moves what lies below it: repaint it all.
    if (!running || !painted_ || !(*painted_ == parts)) {
        update();
        return;
    }
    QRegion moved;
    for (const QRectF& live : {parts.strip, parts.progress, parts.trace})
        if (!live.isEmpty()) moved += live.toAlignedRect().adjusted(-2, -2, 2, 2);
    if (poster_ && !parts.picture.isEmpty())
        moved += poster_->changed(parts.picture, shownSeconds, posterSeconds_).intersected(parts.picture);
    update(moved);
}

void StageView::sampleRate() {
    const LiveProgress now = store_.liveProgress();
    if (now.unit.name.empty()) return;
    // A new pass (Accuracy Mode) starts its counts and its clock again.
    if (now.unitsDone < lastSample_.unitsDone || now.elapsedSeconds < lastSample_.elapsedSeconds)
        lastSample_ = {};
    if (now.elapsedSeconds <= lastSample_.elapsedSeconds) return;
    rates_.push_back(static_cast<double>(now.unitsDone - lastSample_.unitsDone) /
                     (now.elapsedSeconds - lastSample_.elapsedSeconds));
    lastSample_ = now;
}

void StageView::paintRateTrace(QPainter& painter, const QRectF& area, const QColor& color) {
    if (rates_.size() < 2 || area.height() < 40) return;
    const double peak = *std::max_element(rates_.begin(), rates_.end());
    if (!(peak > 0)) return;
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(area.left(), area.top(), area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("RATE OVER TIME"));
    const QRectF plot = area.adjusted(0, 22, 0, 0);
    QPainterPath line;
    const qreal step = plot.width() / qreal(std::max<std::size_t>(rates_.size() - 1, 1));
    for (std::size_t i = 0; i < rates_.size(); ++i) {
        const QPointF point(plot.left() + step * qreal(i),
                            plot.bottom() - plot.height() * (rates_[i] / peak) * 0.92);
        if (i == 0)
            line.moveTo(point);
        else
            line.lineTo(point);
    }
    QPainterPath filled = line;
    filled.lineTo(plot.left() + step * qreal(rates_.size() - 1), plot.bottom());
    filled.lineTo(plot.bottomLeft());
    filled.closeSubpath();
    QLinearGradient fill(plot.topLeft(), plot.bottomLeft());
    QColor top = color;
    top.setAlphaF(0.28f);
    fill.setColorAt(0, top);
    fill.setColorAt(1, Qt::transparent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(filled);
    painter.setPen(QPen(color, 1.6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(line);
}

QString StageView::statusLine() const {
    const auto running = store_.runningID();
    if (!running) return {};
    return theme::uiText(liveStatusLine(*running, std::max(0.0, store_.currentRunElapsed())));
}

void StageView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    theme::drawPanel(painter, QRectF(rect()).adjusted(0, 0, -1, -1), kPanelRadius);
    const auto running = store_.runningID();
    if (!running) return;
    if (!store_.cooldownText().isEmpty()) {
        paintCooldown(painter);
        return;
    }
    const Layout parts = layout(*running);
    painted_ = parts;
    if (hasInlineStage(*running))
        paintInlineStage(painter, *running, parts, event->region());
    else
        paintPoster(painter, *running, parts, event->region());
}

void StageView::paintCooldown(QPainter& painter) {
    // The benchmark that ended stays the running one through the wait: the stage names the
    // next one, and why nothing runs.
    const BenchmarkID next = nextInRun(store_).value_or(*store_.runningID());
    const QColor accent = theme::accent(category(next));
    const QRectF area =
        QRectF(rect()).adjusted(kPanelPaddingX, kPanelPaddingY, -kPanelPaddingX - 1, -kPanelPaddingY - 1);
    painter.drawPixmap(QPointF(area.left(), area.top()),
                       theme::icon(icon(next), 26, accent, devicePixelRatioF()));
    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(accent);
    painter.drawText(QRectF(area.left() + 36, area.top(), area.width() - 36, 26),
                     Qt::AlignVCenter | Qt::AlignLeft,
                     tr("NEXT  ·  %1").arg(theme::uiText(categoryTitle(category(next)))));
    painter.setFont(theme::font(20, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left(), area.top() + 40, area.width(), 28), Qt::AlignLeft | Qt::AlignVCenter,
                     theme::uiText(title(next)));
    painter.setFont(statusFont());
    const QRectF strip(area.left(), area.top() + 84, area.width(), 40);
    QColor fill = accent;
    fill.setAlphaF(0.10f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(strip, 10, 10);
    painter.setPen(theme::text());
    painter.drawText(strip.adjusted(16, 0, -12, 0), Qt::AlignVCenter | Qt::AlignLeft, store_.cooldownText());
    painter.setFont(explanationFont(false));
    painter.setPen(theme::secondary());
    painter.drawText(
        QRectF(area.left(), strip.bottom() + 16, area.width(), area.bottom() - strip.bottom() - 16),
        kTextFlags,
        tr("Each benchmark starts on a machine back near idle, so that the heat the one before it "
           "left does not slow it down. Stop ends the wait."));
}

void StageView::paintInlineStage(QPainter& painter, BenchmarkID id, const Layout& parts,
                                 const QRegion& dirty) {
    const QColor accent = theme::accent(category(id));
    const QRectF& area = parts.area;
    if (dirty.intersects(
            QRectF(area.left(), area.top(), area.width(), parts.explanation.bottom() - area.top() + 1)
                .toAlignedRect())) {
        painter.drawPixmap(QPointF(area.left(), area.top()),
                           theme::icon(icon(id), 26, accent, devicePixelRatioF()));
        painter.setFont(theme::font(12, QFont::DemiBold));
        painter.setPen(accent);
        painter.drawText(
            QRectF(area.left() + 36, area.top(), area.width() - 36, 26), Qt::AlignVCenter | Qt::AlignLeft,
            store_.passText().isEmpty()
                ? tr("LIVE STAGE  ·  %1").arg(theme::uiText(categoryTitle(category(id))))
                : tr("LIVE STAGE  ·  %1  ·  %2")
                      .arg(theme::uiText(categoryTitle(category(id))), store_.passText().toUpper()));
        painter.setFont(explanationFont(true));
        painter.setPen(theme::text());
        painter.drawText(parts.explanation, kTextFlags, theme::uiText(runningExplanation(id)));
    }

    // The status line in a tinted strip, so the eye finds what changes; it wraps rather
    // than run past the panel.
    const QRectF& strip = parts.strip;
    if (dirty.intersects(strip.toAlignedRect())) {
        QColor fill = accent;
        fill.setAlphaF(0.10f);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(strip, 10, 10);
        painter.setBrush(accent);
        painter.drawEllipse(QPointF(strip.left() + 16, strip.center().y()), 4, 4);
        painter.setFont(statusFont());
        painter.setPen(theme::text());
        painter.drawText(strip.adjusted(30, 0, -12, 0), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap,
                         statusLine());
    }

    if (dirty.intersects(parts.progress.toAlignedRect()))
        drawProgressRow(painter, parts.progress, store_, accent, {10, 12, 28, 13, 20});
    if (dirty.intersects(parts.trace.toAlignedRect())) paintRateTrace(painter, parts.trace, accent);
}

void StageView::paintPoster(QPainter& painter, BenchmarkID id, const Layout& parts, const QRegion& dirty) {
    const QColor accent = theme::accent(category(id));
    const QRectF& area = parts.area;
    if (!poster_ || poster_->theme() != animationTheme(id)) poster_.emplace(id);
    // The picture of the workload window, framed, above the title.
    const QRect& picture = parts.picture;
    if (dirty.intersects(picture.adjusted(-1, -1, 1, 1))) {
        QPainterPath frame;
        frame.addRoundedRect(QRectF(picture), 10, 10);
        painter.save();
        painter.setClipPath(frame, Qt::IntersectClip);
        poster_->paint(painter, picture, store_.currentRunElapsed(), dirty);
        painter.restore();
        painter.setPen(QPen(theme::border(), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(frame);
    }

    const qreal textTop = picture.bottom() + 18;
    if (dirty.intersects(QRectF(area.left(), textTop, area.width(), parts.explanation.bottom() - textTop + 1)
                             .toAlignedRect())) {
        painter.drawPixmap(QPointF(area.left(), textTop),
                           theme::icon(icon(id), 26, accent, devicePixelRatioF()));
        painter.setFont(theme::font(12, QFont::DemiBold));
        painter.setPen(accent);
        painter.drawText(
            QRectF(area.left() + 36, textTop, area.width() - 36, 26), Qt::AlignVCenter | Qt::AlignLeft,
            tr("%1  ·  IN ITS OWN WINDOW").arg(theme::uiText(categoryTitle(category(id))).toUpper()));
        painter.setFont(theme::font(20, QFont::Bold));
        painter.setPen(theme::text());
        painter.drawText(QRectF(area.left(), textTop + 34, area.width(), 28),
                         Qt::AlignLeft | Qt::AlignVCenter, theme::uiText(title(id)));
        painter.setFont(explanationFont(false));
        painter.setPen(theme::secondary());
        painter.drawText(parts.explanation, kTextFlags, theme::uiText(runningExplanation(id)));
    }

    if (dirty.intersects(parts.progress.toAlignedRect()))
        drawProgressRow(painter, parts.progress, store_, accent, {8, 12, 22, 13, 16});
}

} // namespace quarbel::ui
