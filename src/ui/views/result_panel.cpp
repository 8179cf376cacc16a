// SPDX-License-Identifier: Apache-2.0
#include "ui/views/result_panel.h"

#include "model/number_format.h"
#include "model/stability.h"
#include "results/run_report.h"
#include "run/benchmark_store.h"
#include "ui/cards/card_content.h"
#include "ui/cards/trace_chart.h"
#include "ui/views/result_panel_text.h"
#include "ui/views/theme.h"
#include "ui/views/trend_view.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QStackedWidget>

#include <algorithm>
#include <cmath>

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

constexpr qreal kPadding = 20;          // above and below the content
constexpr qreal kHeaderHeight = 64;     // icon, title and subtitle
constexpr qreal kScoreRowHeight = 62;   // the score, or the status pill
constexpr qreal kTilesHeight = 62 + 16; // the three tiles and the gap under them
constexpr qreal kAdvicePadding = 12;    // inside the box that says how to enable a device
constexpr qreal kAdviceLabelHeight = 20;

QFont detailFont() { return theme::font(13); }
QFont adviceFont() { return theme::font(13); }
QFont explanationFont() { return theme::font(13.5); }

// The height `text` takes wrapped at `width`: long details go over several lines instead
// of being cut.
qreal wrappedHeight(const QFont& font, const QString& text, qreal width) {
    if (text.isEmpty() || width <= 0) return 0;
    return QFontMetricsF(font)
        .boundingRect(QRectF(0, 0, width, 1e6), Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, text)
        .height();
}

constexpr qreal kSectionGap = 16;   // between the detail and the sensors
constexpr qreal kSectionLabel = 22; // the section's small title and the space under it
constexpr qreal kLineGap = 3;       // between the section's lines
constexpr qreal kChartHeight = 150; // the sensor trace, at the panel's width
constexpr qreal kChartGap = 10;     // above the chart

// What the sensors showed while a result was measured and the energy it took: a line on the
// trace and the start temperature, a line per power domain (the missing ones muted, with
// their reason), and the trace drawn as a chart. Empty for a result without any of it (the
// recording was off).
struct SensorSection {
    std::vector<std::pair<QString, bool>> lines; // text, and whether it is muted
    const SensorTrace* trace = nullptr;          // null: no chart
    bool empty() const { return lines.empty() && trace == nullptr; }
};

SensorSection sensorSection(BenchmarkID id, const BenchmarkOutcome& outcome, const BenchmarkEndState& end) {
    SensorSection section;
    if (const std::string sensors = cards::sensorsText(end.traceSummary, end.startCelsius); !sensors.empty())
        section.lines.emplace_back(theme::qstring(sensors), false);
    for (const cards::EnergyLine& line :
         cards::energyLines(end.energy, outcome.score, outcome.primary, cards::judgedByGpu(id, outcome)))
        section.lines.emplace_back(theme::qstring(line.text), !line.measured);
    if (!end.trace.empty()) section.trace = &end.trace;
    return section;
}

qreal sectionHeight(const SensorSection& section, qreal width) {
    if (section.empty()) return 0;
    qreal height = kSectionGap + kSectionLabel;
    for (const auto& [text, muted] : section.lines)
        height += wrappedHeight(detailFont(), text, width) + kLineGap;
    if (section.trace) height += kChartGap + kChartHeight;
    return height;
}

// The chart's colours are the window's, on a tile's ground, as the tiles above it.
cards::ChartPalette panelChartPalette() {
    cards::ChartPalette palette = themeChartPalette();
    palette.panel = theme::panelAlt();
    palette.radius = 10;
    return palette;
}

void paintSection(QPainter& painter, const QRectF& area, qreal y, const SensorSection& section) {
    if (section.empty()) return;
    y += kSectionGap;
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(area.left(), y, area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     QCoreApplication::translate("quarbel::ui::ResultPanel", "SENSORS AND ENERGY"));
    y += kSectionLabel;
    painter.setFont(detailFont());
    for (const auto& [text, muted] : section.lines) {
        const qreal height = wrappedHeight(detailFont(), text, area.width());
        painter.setPen(muted ? theme::muted() : theme::text());
        painter.drawText(QRectF(area.left(), y, area.width(), height),
                         Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, text);
        y += height + kLineGap;
    }
    if (section.trace)
        cards::paintTraceChart(painter, QRectF(area.left(), y + kChartGap, area.width(), kChartHeight),
                               *section.trace, panelChartPalette());
}

} // namespace

ResultPanel::ResultPanel(BenchmarkStore& store, QWidget* parent)
    : QWidget(parent), store_(store), saveCard_(new QPushButton(tr("Save Result Card"), this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    saveCard_->setObjectName(QStringLiteral("secondaryButton"));
    connect(&store_, &BenchmarkStore::rowsChanged, this, &ResultPanel::refresh);
    connect(&store_, &BenchmarkStore::selectedIDChanged, this, &ResultPanel::refresh);
    refresh();
}

void ResultPanel::refresh() {
    // A card needs a completed result; a benchmark running again has none to show yet, and
    // a skipped or failed one has no score to put on a card.
    const BenchmarkRowState& row = store_.rows()[store_.selectedID()];
    const bool hasScore = row.outcome && row.outcome->status == OutcomeStatus::ok;
    saveCard_->setEnabled(hasScore && row.state != TestRunState::running);
    saveCard_->setToolTip(row.outcome && !hasScore ? tr("Only a completed result can be saved as a card")
                                                   : tr("Save this result as a PNG card"));
    fitHeight();
    update();
}

void ResultPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QSize hint = saveCard_->sizeHint();
    saveCard_->setGeometry(width() - 24 - hint.width(), 22, hint.width(), hint.height());
    fitHeight();
}

qreal ResultPanel::contentHeight(qreal width) const {
    const qreal textWidth = width - 48;
    const BenchmarkID id = store_.selectedID();
    const BenchmarkRowState& row = store_.rows()[id];
    qreal height = kPadding + kHeaderHeight;
    if (!row.outcome)
        return height + 34 + wrappedHeight(explanationFont(), resultExplanation(id), textWidth) + kPadding;
    const BenchmarkOutcome& outcome = *row.outcome;
    height += kScoreRowHeight;
    if (outcome.status == OutcomeStatus::ok) {
        const BenchmarkEndState& end = store_.endState(id);
        height += kTilesHeight +
                  wrappedHeight(detailFont(), resultDetail(outcome, end, store_.runCondition().atStart),
                                textWidth) +
                  sectionHeight(sensorSection(id, outcome, end), textWidth);
    } else {
        height += wrappedHeight(detailFont(), theme::qstring(outcome.detail), textWidth);
        if (const QString advice = skipAdvice(id);
            outcome.status == OutcomeStatus::skipped && !advice.isEmpty())
            height += 14 + 2 * kAdvicePadding + kAdviceLabelHeight +
                      wrappedHeight(adviceFont(), advice, textWidth - 2 * kAdvicePadding);
    }
    return height + kPadding;
}

void ResultPanel::fitHeight() {
    // The window scrolls below its header, so the panel may ask for all the height its
    // text needs at the width it has.
    const int needed = int(std::ceil(contentHeight(width())));
    if (needed != minimumHeight()) setMinimumHeight(needed);
    // The stack that shows this panel or the stage has a floor of its own, which as a set
    // minimum would override this one and clip the panel: it goes up with the text, and
    // back down to that floor.
    if (auto* stack = qobject_cast<QStackedWidget*>(parentWidget())) {
        if (!stackFloor_) stackFloor_ = stack->minimumHeight();
        const int stackMinimum = std::max(*stackFloor_, needed);
        if (stack->minimumHeight() != stackMinimum) stack->setMinimumHeight(stackMinimum);
    }
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
    const QRectF area = QRectF(rect()).adjusted(24, kPadding, -24, -kPadding);
    const qreal headerTextWidth = std::max<qreal>(0, saveCard_->x() - 12 - (area.left() + 36));

    painter.drawPixmap(QPointF(area.left(), area.top() + 2),
                       theme::icon(icon(id), 26, accent, devicePixelRatioF()));
    painter.setFont(theme::font(18, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left() + 36, area.top(), headerTextWidth, 30),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(painter.font())
                         .elidedText(theme::uiText(title(id)), Qt::ElideRight, int(headerTextWidth)));
    painter.setFont(theme::font(12.5));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left() + 36, area.top() + 28, headerTextWidth, 18),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(painter.font())
                         .elidedText(theme::uiText(subtitle(id)), Qt::ElideRight, int(headerTextWidth)));

    qreal y = area.top() + kHeaderHeight;
    if (!row.outcome) {
        painter.setFont(theme::font(15, QFont::DemiBold));
        painter.setPen(row.state == TestRunState::running ? theme::stateColor(row.state) : theme::muted());
        painter.drawText(QRectF(area.left(), y, area.width(), 24), Qt::AlignLeft | Qt::AlignVCenter,
                         row.state == TestRunState::running ? tr("Running now") : tr("Not run yet"));
        painter.setFont(explanationFont());
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(area.left(), y + 34, area.width(), area.bottom() - y - 34),
                         Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, resultExplanation(id));
        return;
    }

    const BenchmarkOutcome& outcome = *row.outcome;
    const QString detail = resultDetail(outcome, store_.endState(id), store_.runCondition().atStart);
    if (outcome.status != OutcomeStatus::ok) {
        // No score, no tiles: the status, the system's reason, and on a skip what would let
        // the benchmark run here.
        const TestRunState state = rowStateFor(outcome.status);
        const QString status = outcome.status == OutcomeStatus::failed ? tr("Failed") : tr("Skipped");
        theme::drawPill(painter, QRectF(area.left(), y + 8, theme::pillWidth(status, 30), 30), status,
                        theme::stateColor(state));
        y += kScoreRowHeight;
        painter.setFont(detailFont());
        painter.setPen(theme::text());
        const qreal detailHeight = wrappedHeight(detailFont(), detail, area.width());
        painter.drawText(QRectF(area.left(), y, area.width(), detailHeight),
                         Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, detail);
        y += detailHeight + 14;
        const QString advice = skipAdvice(id);
        if (outcome.status != OutcomeStatus::skipped || advice.isEmpty()) return;
        const qreal adviceWidth = area.width() - 2 * kAdvicePadding;
        const qreal adviceHeight = wrappedHeight(adviceFont(), advice, adviceWidth);
        const QRectF box(area.left(), y, area.width(),
                         2 * kAdvicePadding + kAdviceLabelHeight + adviceHeight);
        QColor tint = theme::stateColor(state);
        tint.setAlphaF(0.10f);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tint);
        painter.drawRoundedRect(box, 10, 10);
        const QRectF inside = box.adjusted(kAdvicePadding, kAdvicePadding, -kAdvicePadding, -kAdvicePadding);
        painter.setFont(theme::font(11, QFont::DemiBold));
        painter.setPen(theme::stateColor(state));
        painter.drawText(QRectF(inside.left(), inside.top(), inside.width(), 16),
                         Qt::AlignLeft | Qt::AlignVCenter, tr("TO RUN IT ON THIS MACHINE"));
        painter.setFont(adviceFont());
        painter.setPen(theme::text());
        painter.drawText(QRectF(inside.left(), inside.top() + kAdviceLabelHeight, adviceWidth, adviceHeight),
                         Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, advice);
        return;
    }

    painter.setFont(theme::font(40, QFont::Bold));
    painter.setPen(accent);
    const QString score = theme::qstring(scoreText(outcome.score));
    painter.drawText(QRectF(area.left(), y, area.width(), 48), Qt::AlignLeft | Qt::AlignVCenter, score);
    const qreal labelLeft = area.left() + QFontMetricsF(painter.font()).horizontalAdvance(score) + 10;
    // Beside the score: its unit, and under it the score's 95 % interval where one is known.
    const BenchmarkEndState& end = store_.endState(id);
    const QString interval = resultIntervalText(end);
    const QFont unitFont = theme::font(14, QFont::DemiBold);
    const QFont intervalFont = theme::font(12.5);
    painter.setFont(unitFont);
    painter.setPen(theme::secondary());
    const QString unit = tr("Quarbel points");
    qreal labelWidth = QFontMetricsF(unitFont).horizontalAdvance(unit);
    if (interval.isEmpty()) {
        painter.drawText(QRectF(labelLeft, y + 12, 200, 30), Qt::AlignLeft | Qt::AlignVCenter, unit);
    } else {
        painter.drawText(QRectF(labelLeft, y + 5, 200, 20), Qt::AlignLeft | Qt::AlignVCenter, unit);
        painter.setFont(intervalFont);
        painter.drawText(QRectF(labelLeft, y + 25, 260, 18), Qt::AlignLeft | Qt::AlignVCenter, interval);
        labelWidth = std::max(labelWidth, QFontMetricsF(intervalFont).horizontalAdvance(interval));
    }
    // At the right edge: whether other work disturbed the machine, and whether the workload
    // kept its pace to the end (amber when it fell below 90 %).
    std::vector<std::pair<QString, QColor>> pills;
    if (end.noisy) pills.emplace_back(tr("Noisy machine"), theme::stateColor(TestRunState::skipped));
    if (end.stabilityPercent)
        pills.emplace_back(tr("Stability %1").arg(theme::qstring(stabilityText(*end.stabilityPercent))),
                           theme::stateColor(*end.stabilityPercent < kThrottlingStabilityPercent
                                                 ? TestRunState::skipped
                                                 : TestRunState::done));
    // Placed from the right in order of importance: the noisy mark first, shortened to "Noisy"
    // when the interval leaves too little room, and drawn whatever the room; the stability only
    // where it fits beside it.
    qreal right = area.right();
    const qreal leftmost = labelLeft + labelWidth + 16;
    for (std::size_t i = 0; i < pills.size(); ++i) {
        QString text = pills[i].first;
        qreal width = theme::pillWidth(text, 26);
        const bool noisyMark = end.noisy && i == 0;
        if (noisyMark && right - width < leftmost) {
            text = tr("Noisy");
            width = theme::pillWidth(text, 26);
        }
        if (!noisyMark && right - width < leftmost) break;
        theme::drawPill(painter, QRectF(right - width, y + 14, width, 26), text, pills[i].second);
        right -= width + 8;
    }
    y += kScoreRowHeight;

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
    y += kTilesHeight;

    // The whole detail (Accuracy Mode's pass scores, spread and confidence included), wrapped,
    // then what the sensors showed and the energy it took.
    painter.setFont(detailFont());
    painter.setPen(theme::secondary());
    const qreal detailHeight = wrappedHeight(detailFont(), detail, area.width());
    painter.drawText(QRectF(area.left(), y, area.width(), detailHeight),
                     Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, detail);
    paintSection(painter, area, y + detailHeight, sensorSection(id, outcome, end));
}

} // namespace quarbel::ui
