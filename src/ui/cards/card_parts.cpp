// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/card_parts.h"

#include "ui/cards/card_fonts.h"
#include "ui/cards/result_card_palette.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace quarbel::cards::parts {

namespace Palette = ResultCardPalette;

QString qstring(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

QString elided(const QPainter& painter, const QString& text, qreal width) {
    return QFontMetricsF(painter.font()).elidedText(text, Qt::ElideRight, width);
}

void drawWrapped(QPainter& painter, const QRectF& rect, const QString& text, int maxLines) {
    const QFontMetricsF metrics(painter.font());
    QTextLayout layout(text, painter.font(), painter.device());
    std::vector<std::pair<int, int>> lines; // start and length of each line
    layout.beginLayout();
    while (int(lines.size()) < maxLines) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        line.setLineWidth(rect.width());
        lines.emplace_back(line.textStart(), line.textLength());
    }
    layout.endLayout();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool last = i + 1 == lines.size();
        QString lineText = last ? text.mid(lines[i].first) : text.mid(lines[i].first, lines[i].second);
        lineText = elided(painter, lineText.trimmed(), rect.width());
        painter.drawText(
            QPointF(rect.left(), rect.top() + metrics.ascent() + qreal(i) * metrics.lineSpacing()), lineText);
    }
}

QFont fittingFont(const QString& text, qreal width, qreal pixelSize, QFont::Weight weight) {
    // Down to three quarters of the size before the text is elided.
    for (qreal size = pixelSize; size > pixelSize * 0.75; size -= 1) {
        QFont font = cardFont(size, weight);
        if (QFontMetricsF(font).horizontalAdvance(text) <= width) return font;
    }
    return cardFont(std::ceil(pixelSize * 0.75), weight);
}

void drawPanel(QPainter& painter, const QRectF& rect, qreal radius) {
    painter.save();
    painter.setPen(QPen(Palette::border(), 1));
    painter.setBrush(Palette::panel());
    painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.restore();
}

void drawHeader(QPainter& painter, const QRectF& rect, const QString& title, SystemTimePoint generatedAt,
                const QColor& accent) {
    painter.save();
    // The mark: the accent colour with the program's initial.
    const QRectF mark(rect.left(), rect.top() + (rect.height() - 56) / 2, 56, 56);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(mark, 16, 16);
    painter.setFont(cardFont(32, QFont::Bold));
    painter.setPen(Palette::background());
    painter.drawText(mark, Qt::AlignCenter, QStringLiteral("Q"));

    const qreal left = mark.right() + 20;
    painter.setFont(cardFont(30, QFont::Bold));
    painter.setPen(Palette::text());
    painter.drawText(QRectF(left, rect.top() + 2, rect.width() / 2, 38), Qt::AlignLeft | Qt::AlignVCenter,
                     title);
    const QDateTime local = QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(generatedAt));
    painter.setFont(cardFont(16));
    painter.setPen(Palette::secondary());
    painter.drawText(QRectF(left, rect.top() + 42, rect.width() / 2, 24), Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("Generated ") +
                         QLocale::c().toString(local, QStringLiteral("yyyy-MM-dd HH:mm")));
    painter.restore();
}

void drawSectionTitle(QPainter& painter, const QRectF& rect, const QString& title) {
    painter.save();
    painter.setFont(cardFont(15, QFont::DemiBold));
    painter.setPen(Palette::secondary());
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, title);
    painter.restore();
}

namespace {
QFont pillFont(qreal height) { return cardFont(std::round(height * 0.44), QFont::DemiBold); }
} // namespace

qreal pillWidth(const QString& text, qreal height) {
    return std::ceil(QFontMetricsF(pillFont(height)).horizontalAdvance(text) + height);
}

void drawPill(QPainter& painter, const QRectF& rect, const QString& text, const QColor& color) {
    drawPillInFont(painter, rect, text, color, pillFont(rect.height()));
}

void drawPillInFont(QPainter& painter, const QRectF& rect, const QString& text, const QColor& color,
                    const QFont& font) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = color;
    fill.setAlphaF(0.16f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    const qreal radius = rect.height() / 2;
    painter.drawRoundedRect(rect, radius, radius);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(rect, Qt::AlignCenter, elided(painter, text, rect.width() - radius));
    painter.restore();
}

qreal drawPillsRightAligned(QPainter& painter, qreal right, qreal top, qreal height,
                            const std::vector<std::pair<QString, QColor>>& pills) {
    qreal x = right;
    for (auto it = pills.rbegin(); it != pills.rend(); ++it) {
        const qreal width = pillWidth(it->first, height);
        x -= width;
        drawPill(painter, QRectF(x, top, width, height), it->first, it->second);
        x -= 10;
    }
    return x + 10;
}

void drawMetric(QPainter& painter, const QRectF& rect, const QString& label, const QString& value,
                const QColor& valueColor, qreal valueSize) {
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::panelAlt());
    painter.drawRoundedRect(rect, 14, 14);
    const QRectF inner = rect.adjusted(20, 16, -20, -16);
    painter.setFont(cardFont(14, QFont::DemiBold));
    painter.setPen(Palette::muted());
    painter.drawText(QRectF(inner.left(), inner.top(), inner.width(), 18), Qt::AlignLeft | Qt::AlignVCenter,
                     elided(painter, label, inner.width()));
    painter.setFont(fittingFont(value, inner.width(), valueSize, QFont::DemiBold));
    painter.setPen(valueColor);
    painter.drawText(QRectF(inner.left(), inner.bottom() - valueSize * 1.4, inner.width(), valueSize * 1.4),
                     Qt::AlignLeft | Qt::AlignVCenter, elided(painter, value, inner.width()));
    painter.restore();
}

void drawHardware(QPainter& painter, const QRectF& rect, const HardwareRows& rows, int columns) {
    drawPanel(painter, rect, 18);
    const QRectF inner = rect.adjusted(28, 18, -28, -16);
    drawSectionTitle(painter, QRectF(inner.left(), inner.top(), inner.width(), 18),
                     QStringLiteral("Hardware"));
    if (rows.empty()) return;
    painter.save();
    const int rowCount = int((rows.size() + std::size_t(columns) - 1) / std::size_t(columns));
    const qreal top = inner.top() + 28;
    const qreal cellHeight = (inner.bottom() - top) / rowCount;
    const qreal gap = 24;
    const qreal cellWidth = (inner.width() - gap * (columns - 1)) / columns;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const qreal x = inner.left() + qreal(int(i) % columns) * (cellWidth + gap);
        const qreal y = top + qreal(int(i) / columns) * cellHeight;
        painter.setFont(cardFont(13, QFont::DemiBold));
        painter.setPen(Palette::muted());
        painter.drawText(QRectF(x, y, cellWidth, 16), Qt::AlignLeft | Qt::AlignVCenter,
                         elided(painter, qstring(rows[i].first), cellWidth));
        painter.setFont(fittingFont(qstring(rows[i].second), cellWidth, 16, QFont::Medium));
        painter.setPen(Palette::text());
        painter.drawText(QRectF(x, y + 17, cellWidth, 22), Qt::AlignLeft | Qt::AlignVCenter,
                         elided(painter, qstring(rows[i].second), cellWidth));
    }
    painter.restore();
}

void drawFooter(QPainter& painter, const QRectF& rect, const std::string& appVersion, bool quick) {
    painter.save();
    painter.setFont(cardFont(14));
    painter.setPen(Palette::muted());
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("Quarbel %1  \u00B7  Scores in Quarbel points, higher is better  \u00B7  "
                                    "Measured and kept on this machine")
                         .arg(qstring(appVersion)));
    if (quick)
        painter.drawText(rect, Qt::AlignRight | Qt::AlignVCenter,
                         QStringLiteral("Quick run: every time budget divided by ten"));
    painter.restore();
}

} // namespace quarbel::cards::parts
