// SPDX-License-Identifier: Apache-2.0
// The global card: the run's result, a table row for each of the thirteen benchmarks,
// the ones skipped or failed with their reasons, and the machine.
#include "model/number_format.h"
#include "ui/cards/card_fonts.h"
#include "ui/cards/card_parts.h"
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_palette.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace quarbel::cards {

namespace Palette = ResultCardPalette;
using parts::qstring;

QString summaryDurationText(double seconds) {
    if (seconds < 60) return qstring(format(seconds, 1)) + QLatin1Char('s');
    return qstring(format(seconds / 60, 1)) + QLatin1Char('m');
}

QString rowStatusText(TestRunState state) {
    switch (state) {
    case TestRunState::idle: return QStringLiteral("Not Run");
    case TestRunState::running: return QStringLiteral("Running");
    case TestRunState::done: return QStringLiteral("Completed");
    case TestRunState::skipped: return QStringLiteral("Skipped");
    case TestRunState::failed: return QStringLiteral("Failed");
    }
    return {};
}

namespace {

constexpr qreal kMargin = 56;
constexpr qreal kRowHeight = 40;
constexpr qreal kTilesLeft = 640; // where the result panel's metric tiles begin, from its inner left

// The table's columns, left to right, as widths in pixels of the table's 1332.
constexpr qreal kColumnWidths[] = {372, 150, 140, 270, 250, 150};
constexpr const char* kColumnTitles[] = {"Benchmark", "Status", "Score", "Primary", "Secondary", "Duration"};

void drawResultPanel(QPainter& painter, const QRectF& rect, const SummaryCardContent& content) {
    parts::drawPanel(painter, rect);
    const QRectF inner = rect.adjusted(32, 24, -32, -24);
    parts::drawSectionTitle(painter, QRectF(inner.left(), inner.top(), 500, 18),
                            QStringLiteral("Global Benchmark Result"));
    const RunSummary& summary = content.summary;
    painter.save();
    const QString score = qstring(scoreText(summary.score));
    painter.setFont(cardFont(60, QFont::Bold));
    const QFontMetricsF metrics(painter.font());
    const qreal baseline = inner.top() + 24 + metrics.ascent();
    painter.setPen(Palette::stateColor(TestRunState::done));
    painter.drawText(QPointF(inner.left() - 2, baseline), score);
    painter.setFont(cardFont(20, QFont::DemiBold));
    painter.setPen(Palette::secondary());
    painter.drawText(QPointF(inner.left() + metrics.horizontalAdvance(score) + 12, baseline),
                     QStringLiteral("Quarbel points"));
    painter.setFont(cardFont(16, QFont::DemiBold));
    painter.setPen(Palette::text());
    const QString title = parts::elided(painter, qstring(summary.title), 540);
    const QRectF titleBox(inner.left(), inner.bottom() - 22, 540, 22);
    painter.drawText(titleBox, Qt::AlignLeft | Qt::AlignVCenter, title);
    painter.setFont(cardFont(15));
    painter.setPen(Palette::muted());
    const qreal titleWidth = QFontMetricsF(cardFont(16, QFont::DemiBold)).horizontalAdvance(title);
    // The note ends before the metric tiles, which start kTilesLeft from the left.
    const QRectF noteBox(titleBox.left() + titleWidth + 10, titleBox.top(), kTilesLeft - 16 - titleWidth - 10,
                         titleBox.height());
    painter.drawText(noteBox, Qt::AlignLeft | Qt::AlignVCenter,
                     parts::elided(painter,
                                   QStringLiteral("\u00B7  global score %1 over all thirteen benchmarks")
                                       .arg(qstring(scoreText(content.globalScore))),
                                   noteBox.width()));
    painter.restore();

    const QString values[] = {
        QStringLiteral("%1 / %2").arg(summary.completed).arg(summary.total),
        summaryDurationText(summary.duration),
        qstring(temperatureText(summary.peakCPU)),
        qstring(temperatureText(summary.peakGPU)),
    };
    const QString labels[] = {QStringLiteral("Completed"), QStringLiteral("Duration"),
                              QStringLiteral("Peak CPU"), QStringLiteral("Peak GPU")};
    const qreal gap = 14;
    const qreal left = inner.left() + kTilesLeft;
    const qreal width = (inner.right() - left - 3 * gap) / 4;
    for (int i = 0; i < 4; ++i)
        parts::drawMetric(
            painter, QRectF(left + qreal(i) * (width + gap), inner.top() + 10, width, inner.height() - 10),
            labels[i], values[i],
            values[i] == QStringLiteral("Unavailable") ? Palette::muted() : Palette::text(), 28);
}

void drawTableRow(QPainter& painter, const QRectF& rect, BenchmarkID id, const BenchmarkRowState& row,
                  const RateUncertainty* uncertainty, bool noisy, bool shaded) {
    painter.save();
    if (shaded) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Palette::panelAlt());
        painter.drawRoundedRect(rect, 8, 8);
    }
    qreal x = rect.left();
    const auto cell = [&](int column) {
        const QRectF box(x + 14, rect.top(), kColumnWidths[column] - 24, rect.height());
        x += kColumnWidths[column];
        return box;
    };
    // Benchmark: an accent dot, the title and its short description.
    QRectF box = cell(0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::accent(category(id)));
    painter.drawEllipse(QPointF(box.left() + 4, box.center().y()), 4, 4);
    box.adjust(18, 0, 0, 0);
    painter.setFont(cardFont(16, QFont::DemiBold));
    painter.setPen(Palette::text());
    painter.drawText(QRectF(box.left(), rect.top() + 2, box.width(), 20), Qt::AlignLeft | Qt::AlignVCenter,
                     parts::elided(painter, qstring(title(id)), box.width()));
    painter.setFont(cardFont(12.5));
    painter.setPen(Palette::muted());
    painter.drawText(QRectF(box.left(), rect.top() + 21, box.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     parts::elided(painter, qstring(subtitle(id)), box.width()));

    box = cell(1);
    const QString status = rowStatusText(row.state);
    parts::drawPill(
        painter,
        QRectF(box.left(), box.center().y() - 13, std::min(box.width(), parts::pillWidth(status, 26)), 26),
        status, Palette::stateColor(row.state));

    const std::optional<BenchmarkOutcome>& outcome = row.outcome;
    const bool scored = outcome && outcome->status == OutcomeStatus::ok && row.state == TestRunState::done;
    const auto text = [&](const QRectF& where, const QString& value, const QColor& color, const QFont& font) {
        painter.setFont(font);
        painter.setPen(color);
        painter.drawText(where, Qt::AlignLeft | Qt::AlignVCenter,
                         parts::elided(painter, value, where.width()));
    };
    // A measurement names what it is: its label in small muted type, then its value.
    const auto measurement = [&](const QRectF& where, const MeasurementLine& line) {
        const QFont valueFont = cardFont(15);
        const QFontMetricsF value(valueFont);
        // The label sits on the value's baseline, as the value is centred in the row.
        const qreal baseline = where.top() + (where.height() - value.height()) / 2 + value.ascent();
        painter.setFont(cardFont(13, QFont::DemiBold));
        const QString label = parts::elided(painter, qstring(line.label), where.width() * 0.45);
        const qreal labelWidth =
            label.isEmpty() ? 0 : QFontMetricsF(painter.font()).horizontalAdvance(label) + 7;
        painter.setPen(Palette::muted());
        painter.drawText(QPointF(where.left(), baseline), label);
        text(where.adjusted(labelWidth, 0, 0, 0), qstring(cardValue(line)), Palette::text(), valueFont);
    };
    const QString none = QStringLiteral("-");
    const QRectF scoreBox = cell(2);
    if (scored && uncertainty != nullptr) {
        // The score and, under it as under a title, its 95 % interval.
        text(QRectF(scoreBox.left(), rect.top() + 2, scoreBox.width(), 20),
             qstring(scoreText(outcome->score)), Palette::text(), cardFont(17, QFont::Bold));
        text(QRectF(scoreBox.left(), rect.top() + 21, scoreBox.width(), 16),
             qstring(uncertaintyText(*uncertainty)) +
                 (noisy ? QStringLiteral(", noisy") : QStringLiteral(" (95 %)")),
             noisy ? Palette::stateColor(TestRunState::skipped) : Palette::muted(), cardFont(12.5));
    } else {
        text(scoreBox, scored ? qstring(scoreText(outcome->score)) : none,
             scored ? Palette::text() : Palette::muted(), cardFont(17, QFont::Bold));
    }
    if (outcome)
        measurement(cell(3), outcome->primary);
    else
        text(cell(3), none, Palette::muted(), cardFont(15));
    if (outcome && outcome->secondary)
        measurement(cell(4), *outcome->secondary);
    else
        text(cell(4), outcome ? QStringLiteral("Unavailable") : none, Palette::muted(), cardFont(15));
    text(cell(5), outcome ? cardDurationText(outcome->duration) : none,
         outcome ? Palette::secondary() : Palette::muted(), cardFont(15));
    painter.restore();
}

void drawTable(QPainter& painter, const QRectF& rect, const BenchmarkRows& rows,
               const std::map<BenchmarkID, RateUncertainty>& uncertainties,
               const std::set<BenchmarkID>& noisy, const QString& energy, bool energyMeasured) {
    parts::drawPanel(painter, rect);
    const QRectF inner = rect.adjusted(28, 22, -28, -18);
    parts::drawSectionTitle(painter, QRectF(inner.left(), inner.top(), 500, 18),
                            QStringLiteral("All Benchmark Results"));
    painter.save();
    // The run's energy, or why it was not measured, on the title's line at the right.
    painter.setFont(cardFont(15));
    painter.setPen(energyMeasured ? Palette::secondary() : Palette::muted());
    const QRectF energyBox(inner.left() + 520, inner.top() - 2, inner.width() - 534, 22);
    painter.drawText(energyBox, Qt::AlignRight | Qt::AlignVCenter,
                     parts::elided(painter, energy, energyBox.width()));
    painter.setFont(cardFont(14, QFont::DemiBold));
    painter.setPen(Palette::secondary());
    qreal x = inner.left();
    const qreal headerTop = inner.top() + 28;
    for (std::size_t i = 0; i < std::size(kColumnTitles); ++i) {
        painter.drawText(QRectF(x + 14, headerTop, kColumnWidths[i] - 24, 28),
                         Qt::AlignLeft | Qt::AlignVCenter, QString::fromLatin1(kColumnTitles[i]));
        x += kColumnWidths[i];
    }
    painter.setPen(QPen(Palette::border(), 1));
    painter.drawLine(QPointF(inner.left(), headerTop + 32.5), QPointF(inner.right(), headerTop + 32.5));
    painter.restore();
    qreal y = headerTop + 38;
    for (std::size_t i = 0; i < kAllBenchmarks.size(); ++i, y += kRowHeight) {
        const auto found = uncertainties.find(kAllBenchmarks[i]);
        drawTableRow(painter, QRectF(inner.left(), y, inner.width(), kRowHeight), kAllBenchmarks[i],
                     rows[kAllBenchmarks[i]], found == uncertainties.end() ? nullptr : &found->second,
                     noisy.contains(kAllBenchmarks[i]), i % 2 == 1);
    }
}

void drawSkippedAndFailed(QPainter& painter, const QRectF& rect, const BenchmarkRows& rows) {
    parts::drawPanel(painter, rect, 18);
    const QRectF inner = rect.adjusted(28, 18, -28, -16);
    parts::drawSectionTitle(painter, QRectF(inner.left(), inner.top(), 400, 18),
                            QStringLiteral("Skipped / Failed"));
    std::vector<BenchmarkID> listed;
    for (BenchmarkID id : kAllBenchmarks)
        if (rows[id].state == TestRunState::skipped || rows[id].state == TestRunState::failed)
            listed.push_back(id);

    painter.save();
    const qreal top = inner.top() + 30;
    if (listed.empty()) {
        painter.setFont(cardFont(16));
        painter.setPen(Palette::secondary());
        painter.drawText(QRectF(inner.left(), top, inner.width(), 26), Qt::AlignLeft | Qt::AlignVCenter,
                         QStringLiteral("None: every benchmark that ran completed."));
        painter.restore();
        return;
    }
    const qreal lineHeight = 27;
    const int perColumn = std::max(1, int((inner.bottom() - top) / lineHeight));
    const int columns = int(listed.size()) > perColumn ? 2 : 1;
    const int slots = perColumn * columns;
    const qreal gap = 28;
    const qreal columnWidth = (inner.width() - gap * (columns - 1)) / columns;
    for (int i = 0; i < int(listed.size()) && i < slots; ++i) {
        const qreal x = inner.left() + qreal(i / perColumn) * (columnWidth + gap);
        const QRectF line(x, top + qreal(i % perColumn) * lineHeight, columnWidth, lineHeight - 5);
        if (i == slots - 1 && int(listed.size()) > slots) {
            painter.setFont(cardFont(15, QFont::DemiBold));
            painter.setPen(Palette::secondary());
            painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                             QStringLiteral("and %1 more").arg(int(listed.size()) - slots + 1));
            break;
        }
        const BenchmarkRowState& row = rows[listed[std::size_t(i)]];
        const QString status = rowStatusText(row.state);
        const qreal pill = parts::pillWidth(QStringLiteral("Skipped"), 22);
        parts::drawPill(painter, QRectF(line.left(), line.center().y() - 11, pill, 22), status,
                        Palette::stateColor(row.state));
        painter.setFont(cardFont(15, QFont::DemiBold));
        painter.setPen(Palette::text());
        const QString name = qstring(title(listed[std::size_t(i)]));
        const qreal nameLeft = line.left() + pill + 12;
        painter.drawText(QRectF(nameLeft, line.top(), line.right() - nameLeft, line.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, name);
        const qreal detailLeft = nameLeft + QFontMetricsF(painter.font()).horizontalAdvance(name) + 12;
        painter.setFont(cardFont(14));
        painter.setPen(Palette::secondary());
        const QString detail = row.outcome ? qstring(row.outcome->detail) : QString();
        painter.drawText(QRectF(detailLeft, line.top(), line.right() - detailLeft, line.height()),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         parts::elided(painter, detail, line.right() - detailLeft));
    }
    painter.restore();
}

} // namespace

void paintSummaryCard(QPainter& painter, const SummaryCardContent& content) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.fillRect(QRect(QPoint(0, 0), kSummaryCardSize), Palette::background());
    const qreal width = kSummaryCardSize.width();
    const qreal inner = width - 2 * kMargin;

    const QRectF header(kMargin, 40, inner, 72);
    parts::drawHeader(painter, header, QStringLiteral("Quarbel Global Result Card"), content.generatedAt,
                      Palette::stateColor(TestRunState::done));
    std::vector<std::pair<QString, QColor>> pills;
    for (const auto& badge : content.badges)
        pills.emplace_back(qstring(badge), Palette::stateColor(TestRunState::skipped));
    if (content.quick)
        pills.emplace_back(QStringLiteral("Quick run"), Palette::stateColor(TestRunState::skipped));
    parts::drawPillsRightAligned(painter, header.right(), header.top() + 19, 36, pills);

    drawResultPanel(painter, QRectF(kMargin, 128, inner, 170), content);
    drawTable(painter, QRectF(kMargin, 316, inner, 28 + 22 + 38 + 13 * kRowHeight + 18), content.rows,
              content.uncertainties, content.noisy, qstring(runEnergyText(content.energy)),
              !content.energy.measured.empty());
    const qreal bottomTop = 962;
    const qreal listWidth = 800;
    drawSkippedAndFailed(painter, QRectF(kMargin, bottomTop, listWidth, 198), content.rows);
    parts::drawHardware(painter, QRectF(kMargin + listWidth + 20, bottomTop, inner - listWidth - 20, 198),
                        content.hardware, 2);
    parts::drawFooter(painter, QRectF(kMargin, 1176, inner, 26), content.appVersion, content.quick);
    painter.restore();
}

QImage renderSummaryCard(const SummaryCardContent& content) {
    QImage image(kSummaryCardSize, QImage::Format_RGB32);
    if (image.isNull()) return image;
    image.setDevicePixelRatio(1);
    QPainter painter(&image);
    paintSummaryCard(painter, content);
    painter.end();
    return image;
}

} // namespace quarbel::cards
