// SPDX-License-Identifier: Apache-2.0
// The single-benchmark card: header, the benchmark's detail panel with score and
// measurement tiles, the machine, a footer.
#include "model/number_format.h"
#include "model/stability.h"
#include "ui/cards/card_fonts.h"
#include "ui/cards/card_parts.h"
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_palette.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quarbel::cards {

namespace Palette = ResultCardPalette;
using parts::qstring;

QString cardDurationText(double seconds) { return qstring(format(seconds, 2)) + QLatin1Char('s'); }

QString temperaturePairText(const TemperatureSnapshot& temperature) {
    if (!temperature.cpuCelsius && !temperature.gpuCelsius) return QStringLiteral("Unavailable");
    return qstring(temperatureText(temperature.cpuCelsius)) + QStringLiteral(" / ") +
           qstring(temperatureText(temperature.gpuCelsius));
}

namespace {

constexpr qreal kMargin = 56;

// The score in large accent figures followed by its unit, or the status pill of an
// outcome that has no score.
void drawScore(QPainter& painter, const QRectF& rect, const BenchmarkOutcome& outcome, const QColor& accent,
               const std::optional<RateUncertainty>& uncertainty) {
    painter.save();
    if (outcome.status == OutcomeStatus::ok) {
        const QString score = qstring(scoreText(outcome.score));
        const QString unit = QStringLiteral("Quarbel points");
        const QFont unitFont = cardFont(24, QFont::DemiBold);
        const qreal unitWidth = QFontMetricsF(unitFont).horizontalAdvance(unit) + 14;
        // The figures shrink until score and unit fit beside the measurement tiles; they
        // keep the baseline of the full size, so the texts under them never move.
        const qreal baseline = rect.top() + QFontMetricsF(cardFont(104, QFont::Bold)).ascent();
        QFont scoreFont = cardFont(104, QFont::Bold);
        const qreal fullWidth = QFontMetricsF(scoreFont).horizontalAdvance(score);
        if (fullWidth + unitWidth > rect.width() + 4)
            scoreFont = cardFont(std::floor(104 * (rect.width() + 4 - unitWidth) / fullWidth), QFont::Bold);
        painter.setFont(scoreFont);
        const QString shown = parts::elided(painter, score, rect.width() + 4 - unitWidth);
        painter.setPen(accent);
        painter.drawText(QPointF(rect.left() - 4, baseline), shown);
        const qreal scoreWidth = QFontMetricsF(scoreFont).horizontalAdvance(shown);
        painter.setFont(unitFont);
        painter.setPen(Palette::secondary());
        painter.drawText(QPointF(rect.left() - 4 + scoreWidth + 14, baseline), unit);
        // The score's 95 % interval stands over its unit: a score without it is half a result.
        if (const std::string interval = uncertaintyText(uncertainty); !interval.empty()) {
            painter.setFont(cardFont(20, QFont::DemiBold));
            painter.setPen(Palette::muted());
            painter.drawText(QPointF(rect.left() - 4 + scoreWidth + 14, baseline - 36),
                             qstring(interval) + QStringLiteral(" (95 %)"));
        }
    } else {
        const QString status =
            outcome.status == OutcomeStatus::failed ? QStringLiteral("Failed") : QStringLiteral("Skipped");
        const QColor color = Palette::stateColor(rowStateFor(outcome.status));
        parts::drawPill(painter, QRectF(rect.left(), rect.top() + 20, parts::pillWidth(status, 56), 56),
                        status, color);
        painter.setFont(cardFont(24, QFont::DemiBold));
        painter.setPen(Palette::secondary());
        painter.drawText(
            QRectF(rect.left() + parts::pillWidth(status, 56) + 18, rect.top() + 20, rect.width(), 56),
            Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("No score"));
    }
    painter.restore();
}

// The result's efficiency (in the secondary colour when nothing was measured, with the reason)
// over what the sensors showed while it ran, in two lines at most, in a tile like the
// measurements'.
void drawSensorTile(QPainter& painter, const QRectF& rect, const QString& efficiency, bool unmeasured,
                    const QString& sensors) {
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::panelAlt());
    painter.drawRoundedRect(rect, 14, 14);
    const QRectF inner = rect.adjusted(20, 14, -20, -14);
    // The lines stand together in the middle of the tile, however many the sensors take.
    const QFont sensorsFont = cardFont(15);
    const QFontMetricsF metrics(sensorsFont);
    const qreal wrapped =
        metrics.boundingRect(QRectF(0, 0, inner.width(), 1e6), Qt::TextWordWrap, sensors).height();
    const int sensorLines =
        sensors.isEmpty() ? 0 : std::min(2, int(std::lround(wrapped / metrics.lineSpacing())));
    const qreal efficiencyHeight = efficiency.isEmpty() ? 0 : 26;
    const qreal top =
        inner.top() + (inner.height() - efficiencyHeight - sensorLines * metrics.lineSpacing()) / 2;
    painter.setFont(parts::fittingFont(efficiency, inner.width(), unmeasured ? 16 : 18,
                                       unmeasured ? QFont::Normal : QFont::DemiBold));
    painter.setPen(unmeasured ? Palette::secondary() : Palette::text());
    painter.drawText(QRectF(inner.left(), top, inner.width(), 24), Qt::AlignLeft | Qt::AlignVCenter,
                     parts::elided(painter, efficiency, inner.width()));
    painter.setFont(sensorsFont);
    painter.setPen(Palette::secondary());
    parts::drawWrapped(painter, QRectF(inner.left(), top + efficiencyHeight, inner.width(), 40), sensors, 2);
    painter.restore();
}

} // namespace

void paintBenchmarkCard(QPainter& painter, const BenchmarkCardContent& content) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.fillRect(QRect(QPoint(0, 0), kBenchmarkCardSize), Palette::background());

    const qreal width = kBenchmarkCardSize.width();
    const BenchmarkOutcome& outcome = content.outcome;
    const QColor accent = Palette::accent(category(content.id));

    const QRectF header(kMargin, 40, width - 2 * kMargin, 72);
    parts::drawHeader(painter, header, QStringLiteral("Quarbel Result Card"), content.generatedAt, accent);
    std::vector<std::pair<QString, QColor>> pills{{qstring(categoryTitle(category(content.id))), accent}};
    if (content.accuracyMode)
        pills.emplace_back(QStringLiteral("Accuracy Mode"), Palette::stateColor(TestRunState::running));
    if (content.quick)
        pills.emplace_back(QStringLiteral("Quick run"), Palette::stateColor(TestRunState::skipped));
    if (content.noisy)
        pills.emplace_back(QStringLiteral("Noisy machine"), Palette::stateColor(TestRunState::skipped));
    if (content.stabilityPercent) {
        const bool throttled = *content.stabilityPercent < kThrottlingStabilityPercent;
        pills.emplace_back(QStringLiteral("Stability ") + qstring(stabilityText(*content.stabilityPercent)),
                           Palette::stateColor(throttled ? TestRunState::skipped : TestRunState::done));
    }
    parts::drawPillsRightAligned(painter, header.right(), header.top() + 19, 36, pills);

    // The detail panel: what ran and what it scored on the left, its measurements on the right.
    const QRectF panel(kMargin, 136, width - 2 * kMargin, 520);
    parts::drawPanel(painter, panel);
    const QRectF inner = panel.adjusted(36, 28, -36, -32);
    parts::drawSectionTitle(painter, QRectF(inner.left(), inner.top(), 400, 18),
                            QStringLiteral("Benchmark Detail"));
    const qreal tilesWidth = 500;
    const qreal leftWidth = inner.width() - tilesWidth - 48;

    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(inner.left(), inner.top() + 36, 6, 50), 3, 3);
    painter.setFont(cardFont(46, QFont::Bold));
    painter.setPen(Palette::text());
    painter.drawText(QRectF(inner.left() + 24, inner.top() + 30, leftWidth - 24, 62),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     parts::elided(painter, qstring(title(content.id)), leftWidth - 24));
    painter.setFont(cardFont(17));
    painter.setPen(Palette::secondary());
    parts::drawWrapped(painter, QRectF(inner.left(), inner.top() + 102, leftWidth, 48),
                       qstring(runningExplanation(content.id)), 2);

    drawScore(painter, QRectF(inner.left(), inner.top() + 158, leftWidth, 120), outcome, accent,
              content.uncertainty);
    painter.setFont(cardFont(16));
    painter.setPen(Palette::muted());
    parts::drawWrapped(painter, QRectF(inner.left(), inner.top() + 284, leftWidth, 66),
                       qstring(outcome.detail), 3);

    // The measurements on the right; under them, where a result has them, its energy and what
    // the sensors showed, which take some of the measurements' height.
    const qreal tilesLeft = inner.right() - tilesWidth;
    const QString efficiency =
        qstring(efficiencyText(content.energy, outcome.score, judgedByGpu(content.id, outcome)));
    const QString sensors = qstring(sensorsText(content.traceSummary, content.startCelsius));
    const bool sensorTile =
        outcome.status == OutcomeStatus::ok && !(efficiency.isEmpty() && sensors.isEmpty());
    const qreal tileHeight = sensorTile ? 94 : 118;
    parts::drawMetric(painter, QRectF(tilesLeft, inner.top() + 36, tilesWidth, tileHeight),
                      qstring(outcome.primary.label), qstring(cardValue(outcome.primary)), Palette::text(),
                      32);
    parts::drawMetric(painter, QRectF(tilesLeft, inner.top() + 52 + tileHeight, tilesWidth, tileHeight),
                      outcome.secondary ? qstring(outcome.secondary->label) : QStringLiteral("Secondary"),
                      outcome.secondary ? qstring(cardValue(*outcome.secondary))
                                        : QStringLiteral("Unavailable"),
                      outcome.secondary ? Palette::text() : Palette::muted(), 32);
    if (sensorTile)
        drawSensorTile(painter, QRectF(tilesLeft, inner.top() + 68 + 2 * tileHeight, tilesWidth, 94),
                       efficiency, content.energy.measured.empty(), sensors);

    const qreal gap = 16;
    const qreal metricWidth = (inner.width() - 2 * gap) / 3;
    const qreal metricTop = inner.bottom() - 96;
    const struct {
        QString label;
        QString value;
    } metrics[] = {
        {QStringLiteral("Duration"), cardDurationText(outcome.duration)},
        {QStringLiteral("CPU / GPU"), temperaturePairText(content.temperature)},
        {QStringLiteral("Workload"), qstring(subtitle(content.id))},
    };
    for (std::size_t i = 0; i < std::size(metrics); ++i)
        parts::drawMetric(painter,
                          QRectF(inner.left() + qreal(i) * (metricWidth + gap), metricTop, metricWidth, 96),
                          metrics[i].label, metrics[i].value, Palette::text(), 24);

    parts::drawHardware(painter, QRectF(kMargin, 672, width - 2 * kMargin, 156), content.hardware, 3);
    parts::drawFooter(painter, QRectF(kMargin, 842, width - 2 * kMargin, 26), content.appVersion,
                      content.quick);
    painter.restore();
}

QImage renderBenchmarkCard(const BenchmarkCardContent& content) {
    QImage image(kBenchmarkCardSize, QImage::Format_RGB32);
    if (image.isNull()) return image;
    image.setDevicePixelRatio(1);
    QPainter painter(&image);
    paintBenchmarkCard(painter, content);
    painter.end();
    return image;
}

} // namespace quarbel::cards
