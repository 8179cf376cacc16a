// SPDX-License-Identifier: Apache-2.0
// The building blocks both result cards are drawn from. Each draws inside the rectangle
// it is given, in the card palette and font, and leaves the painter as it found it.
#pragma once

#include "ui/cards/card_content.h"

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

class QPainter;

namespace quarbel::cards::parts {

// A rounded panel in the panel colour with a border outline (ResultCardPanel).
void drawPanel(QPainter& painter, const QRectF& rect, qreal radius = 20);

// The card's title line with the accent mark and, under it, "Generated <local time>"
// (ResultCardHeader).
void drawHeader(QPainter& painter, const QRectF& rect, const QString& title, SystemTimePoint generatedAt,
                const QColor& accent);

// A small section title in the secondary colour.
void drawSectionTitle(QPainter& painter, const QRectF& rect, const QString& title);

// The width a status pill needs for `text` at `height`.
qreal pillWidth(const QString& text, qreal height);
// A rounded label tinted in `color` (ResultStatusPill).
void drawPill(QPainter& painter, const QRectF& rect, const QString& text, const QColor& color);
// The same pill in `font`: the window draws its pills with this, in its own font.
void drawPillInFont(QPainter& painter, const QRectF& rect, const QString& text, const QColor& color,
                    const QFont& font);
// Pills laid right to left, ending at `right`; returns the left edge of the last one.
qreal drawPillsRightAligned(QPainter& painter, qreal right, qreal top, qreal height,
                            const std::vector<std::pair<QString, QColor>>& pills);

// A labelled value tile (ResultCardMetric); the value is elided to fit.
void drawMetric(QPainter& painter, const QRectF& rect, const QString& label, const QString& value,
                const QColor& valueColor, qreal valueSize = 26);

// The machine's facts in a panel, `columns` per row (ResultCardHardwareStrip).
void drawHardware(QPainter& painter, const QRectF& rect, const HardwareRows& rows, int columns);

// Version and a note on the left, an optional note on the right (ResultCardFooter).
void drawFooter(QPainter& painter, const QRectF& rect, const std::string& appVersion, bool quick);

// `text` word-wrapped into `rect` in the painter's current font, at most `maxLines`
// lines; the last one is elided when the text goes on.
void drawWrapped(QPainter& painter, const QRectF& rect, const QString& text, int maxLines);

// The card font at `pixelSize`, or smaller (to three quarters) where `text` would not
// fit in `width` otherwise.
QFont fittingFont(const QString& text, qreal width, qreal pixelSize, QFont::Weight weight);

// Text elided on the right to `width` in the painter's current font.
QString elided(const QPainter& painter, const QString& text, qreal width);

QString qstring(std::string_view text);

} // namespace quarbel::cards::parts
