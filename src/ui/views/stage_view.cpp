#include "ui/views/stage_view.h"

#include "run/benchmark_store.h"
#include "ui/views/live_text.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace quarbel::ui {
namespace {

// Draws wrapped text from `top`; returns the y below it.
qreal drawWrapped(QPainter& painter, const QString& text, const QRectF& box) {
    const QRectF used = painter.boundingRect(box, Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, text);
    painter.drawText(box, Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, text);
    return used.bottom();
}

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
    connect(&store_, &BenchmarkStore::currentRunTickChanged, this, [this] {
        sampleRate();
        update();
    });
    connect(&store_, &BenchmarkStore::runningIDChanged, this, [this] {
        rates_.clear();
        lastSample_ = {};
        poster_.reset();
        update();
    });
    connect(&store_, &BenchmarkStore::visualLiveStatsChanged, this, qOverload<>(&QWidget::update));
}

void StageView::sampleRate() {
    const LiveProgress now = store_.liveProgress();
    if (now.unit.empty() || now.elapsedSeconds <= lastSample_.elapsedSeconds) return;
    // A new pass (Accuracy Mode) starts its counts again.
    if (now.unitsDone < lastSample_.unitsDone) lastSample_ = {};
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
    return theme::qstring(liveStatusLine(*running, std::max(0.0, store_.currentRunElapsed())));
}

void StageView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);
    const auto running = store_.runningID();
    if (!running) return;
    const QRectF area = panel.adjusted(24, 20, -24, -20);
    if (hasInlineStage(*running))
        paintInlineStage(painter, *running, area);
    else
        paintPoster(painter, *running, area);
}

void StageView::paintInlineStage(QPainter& painter, BenchmarkID id, const QRectF& area) {
    const QColor accent = theme::accent(category(id));
    painter.drawPixmap(QPointF(area.left(), area.top()),
                       theme::icon(icon(id), 26, accent, devicePixelRatioF()));
    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(accent);
    painter.drawText(QRectF(area.left() + 36, area.top(), area.width() - 36, 26),
                     Qt::AlignVCenter | Qt::AlignLeft,
                     tr("LIVE STAGE  ·  %1").arg(theme::qstring(categoryTitle(category(id)))));

    painter.setFont(theme::font(15));
    painter.setPen(theme::text());
    qreal y = drawWrapped(painter, theme::qstring(runningExplanation(id)),
                          QRectF(area.left(), area.top() + 42, area.width(), area.height()));

    // The status line in a tinted strip, so the eye finds what changes; it wraps rather
    // than run past the panel.
    painter.setFont(theme::font(14, QFont::DemiBold));
    const QRectF textBox(area.left() + 30, y + 18, area.width() - 42, 200);
    const qreal textHeight =
        painter.boundingRect(textBox, Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, statusLine()).height();
    const QRectF strip(area.left(), y + 18, area.width(), std::max<qreal>(40, textHeight + 20));
    QColor fill = accent;
    fill.setAlphaF(0.10f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(strip, 10, 10);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(strip.left() + 16, strip.center().y()), 4, 4);
    painter.setPen(theme::text());
    painter.drawText(strip.adjusted(30, 0, -12, 0), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap,
                     statusLine());

    y = strip.bottom() + 22;
    theme::drawProgressBar(painter, QRectF(area.left(), y, area.width(), 10), store_.currentRunProgress(),
                           accent);
    painter.setFont(theme::font(13));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left(), y + 16, area.width(), 20), Qt::AlignLeft | Qt::AlignVCenter,
                     elapsedText(store_.currentRunElapsed(), store_.currentRunTargetSeconds()));
    painter.setFont(theme::font(20, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left(), y + 12, area.width(), 28), Qt::AlignRight | Qt::AlignVCenter,
                     liveMetricText(store_.liveProgress(), store_.visualLiveStats()));
    paintRateTrace(painter, QRectF(area.left(), y + 56, area.width(), area.bottom() - y - 56), accent);
}

void StageView::paintPoster(QPainter& painter, BenchmarkID id, const QRectF& area) {
    const QColor accent = theme::accent(category(id));
    if (!poster_ || poster_->theme() != animationTheme(id)) poster_.emplace(id);
    // The picture of the workload window, framed, above the title.
    const QRect picture =
        QRectF(area.left(), area.top(), area.width(), std::round(area.height() * 0.52)).toAlignedRect();
    QPainterPath frame;
    frame.addRoundedRect(QRectF(picture), 10, 10);
    painter.save();
    painter.setClipPath(frame);
    poster_->paint(painter, picture, store_.currentRunElapsed());
    painter.restore();
    painter.setPen(QPen(theme::border(), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(frame);

    const qreal textTop = picture.bottom() + 18;
    painter.drawPixmap(QPointF(area.left(), textTop), theme::icon(icon(id), 26, accent, devicePixelRatioF()));
    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(accent);
    painter.drawText(
        QRectF(area.left() + 36, textTop, area.width() - 36, 26), Qt::AlignVCenter | Qt::AlignLeft,
        tr("%1  ·  IN ITS OWN WINDOW").arg(theme::qstring(categoryTitle(category(id))).toUpper()));
    painter.setFont(theme::font(20, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left(), textTop + 34, area.width(), 28), Qt::AlignLeft | Qt::AlignVCenter,
                     theme::qstring(title(id)));
    painter.setFont(theme::font(13.5));
    painter.setPen(theme::secondary());
    const qreal y =
        drawWrapped(painter, theme::qstring(runningExplanation(id)),
                    QRectF(area.left(), textTop + 68, area.width(), area.bottom() - textTop - 68));
    const qreal barTop = std::min(y + 16, area.bottom() - 36);
    theme::drawProgressBar(painter, QRectF(area.left(), barTop, area.width(), 8), store_.currentRunProgress(),
                           accent);
    painter.setFont(theme::font(13));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left(), barTop + 12, area.width(), 22), Qt::AlignLeft | Qt::AlignVCenter,
                     elapsedText(store_.currentRunElapsed(), store_.currentRunTargetSeconds()));
    const QString metric = liveMetricText(store_.liveProgress(), store_.visualLiveStats());
    if (!metric.isEmpty()) {
        painter.setFont(theme::font(16, QFont::Bold));
        painter.setPen(theme::text());
        painter.drawText(QRectF(area.left(), barTop + 12, area.width(), 22),
                         Qt::AlignRight | Qt::AlignVCenter, metric);
    }
}

} // namespace quarbel::ui
