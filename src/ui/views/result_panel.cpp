#include "ui/views/result_panel.h"

#include "model/number_format.h"
#include "model/stability.h"
#include "results/run_report.h"
#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>

namespace quarbel::ui {
namespace {

// A labelled value tile; returns nothing, draws inside `box`.
void drawTile(QPainter& painter, const QRectF& box, const QString& label, const QString& value) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::panelAlt());
    painter.drawRoundedRect(box, 10, 10);
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(box.adjusted(12, 8, -12, 0), Qt::AlignLeft | Qt::AlignTop, label.toUpper());
    painter.setFont(theme::font(16, QFont::DemiBold));
    painter.setPen(theme::text());
    painter.drawText(box.adjusted(12, 0, -12, -9), Qt::AlignLeft | Qt::AlignBottom,
                     QFontMetrics(painter.font()).elidedText(value, Qt::ElideRight, int(box.width() - 24)));
}

} // namespace

ResultPanel::ResultPanel(BenchmarkStore& store, QWidget* parent)
    : QWidget(parent), store_(store), saveCard_(new QPushButton(tr("Save Result Card"), this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    saveCard_->setObjectName(QStringLiteral("secondaryButton"));
    saveCard_->setToolTip(tr("Save this result as a PNG card"));
    connect(&store_, &BenchmarkStore::rowsChanged, this, &ResultPanel::refresh);
    connect(&store_, &BenchmarkStore::selectedIDChanged, this, &ResultPanel::refresh);
    refresh();
}

void ResultPanel::refresh() {
    // A card needs an outcome; a benchmark running again has none to show yet.
    const BenchmarkRowState& row = store_.rows()[store_.selectedID()];
    saveCard_->setEnabled(row.outcome.has_value() && row.state != TestRunState::running);
    update();
}

void ResultPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QSize hint = saveCard_->sizeHint();
    saveCard_->setGeometry(width() - 24 - hint.width(), 22, hint.width(), hint.height());
}

void ResultPanel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);

    const BenchmarkID id = store_.selectedID();
    const BenchmarkRowState& row = store_.rows()[id];
    const QColor accent = theme::accent(category(id));
    const QRectF area = panel.adjusted(24, 20, -24, -20);

    painter.drawPixmap(QPointF(area.left(), area.top() + 2),
                       theme::icon(icon(id), 26, accent, devicePixelRatioF()));
    painter.setFont(theme::font(18, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left() + 36, area.top(), area.width() - 200, 30),
                     Qt::AlignLeft | Qt::AlignVCenter, theme::qstring(title(id)));
    painter.setFont(theme::font(12.5));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left() + 36, area.top() + 28, area.width() - 200, 18),
                     Qt::AlignLeft | Qt::AlignVCenter, theme::qstring(subtitle(id)));

    qreal y = area.top() + 64;
    if (!row.outcome) {
        painter.setFont(theme::font(15, QFont::DemiBold));
        painter.setPen(row.state == TestRunState::running ? theme::stateColor(row.state) : theme::muted());
        painter.drawText(QRectF(area.left(), y, area.width(), 24), Qt::AlignLeft | Qt::AlignVCenter,
                         row.state == TestRunState::running ? tr("Running now") : tr("Not run yet"));
        painter.setFont(theme::font(13.5));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(area.left(), y + 34, area.width(), area.bottom() - y - 34),
                         Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop,
                         theme::qstring(runningExplanation(id)) +
                             tr("\n\nTarget duration: %1 s per pass.").arg(targetSeconds(id)));
        return;
    }

    const BenchmarkOutcome& outcome = *row.outcome;
    if (outcome.status == OutcomeStatus::ok) {
        painter.setFont(theme::font(40, QFont::Bold));
        painter.setPen(accent);
        const QString score = theme::qstring(scoreText(outcome.score));
        painter.drawText(QRectF(area.left(), y, area.width(), 48), Qt::AlignLeft | Qt::AlignVCenter, score);
        const qreal scoreWidth = QFontMetricsF(painter.font()).horizontalAdvance(score);
        painter.setFont(theme::font(14, QFont::DemiBold));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(area.left() + scoreWidth + 10, y + 12, 200, 30),
                         Qt::AlignLeft | Qt::AlignVCenter, tr("Quarbel points"));
        // Whether the workload kept its pace to the end: amber when it fell below 90 %.
        if (const auto stability = store_.endState(id).stabilityPercent) {
            const QString text = tr("Stability %1").arg(theme::qstring(stabilityText(*stability)));
            const qreal width = theme::pillWidth(text, 26);
            const qreal left = area.left() + scoreWidth + 10 + 130;
            if (left + width <= area.right())
                theme::drawPill(painter, QRectF(area.right() - width, y + 14, width, 26), text,
                                theme::stateColor(*stability < kThrottlingStabilityPercent
                                                      ? TestRunState::skipped
                                                      : TestRunState::done));
        }
    } else {
        const QColor color = theme::stateColor(rowStateFor(outcome.status));
        const QString status = outcome.status == OutcomeStatus::failed ? tr("Failed") : tr("Skipped");
        theme::drawPill(painter, QRectF(area.left(), y + 8, theme::pillWidth(status, 30), 30), status, color);
    }
    y += 62;

    // Three tiles: primary, secondary, duration.
    const qreal gap = 10;
    const qreal tileWidth = (area.width() - 2 * gap) / 3;
    const auto lineText = [](const MeasurementLine& line) { return theme::qstring(cardValue(line)); };
    drawTile(painter, QRectF(area.left(), y, tileWidth, 62), theme::qstring(outcome.primary.label),
             lineText(outcome.primary));
    drawTile(painter, QRectF(area.left() + tileWidth + gap, y, tileWidth, 62),
             outcome.secondary ? theme::qstring(outcome.secondary->label) : tr("Secondary"),
             outcome.secondary ? lineText(*outcome.secondary) : tr("Unavailable"));
    drawTile(painter, QRectF(area.left() + 2 * (tileWidth + gap), y, tileWidth, 62), tr("Duration"),
             theme::qstring(format(outcome.duration, 2)) + QStringLiteral(" s"));
    y += 62 + 16;

    painter.setFont(theme::font(13));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left(), y, area.width(), area.bottom() - y),
                     Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, theme::qstring(outcome.detail));
}

} // namespace quarbel::ui
