// SPDX-License-Identifier: Apache-2.0
// Colours, fonts and small painting helpers shared by the window's views and the result
// cards, so that both show the same palette.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"

#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QRectF>
#include <QStringList>

#include <string_view>

class QPainter;

namespace quarbel::ui::theme {

QColor background(); // the window and card background
QColor panel();      // a raised panel
QColor panelAlt();   // a row or tile inside a panel
QColor border();     // panel outlines
QColor text();       // primary text
QColor secondary();  // labels
QColor muted();      // hints and inactive marks

QColor accent(BenchmarkCategory category);
QColor stateColor(TestRunState state);

// The application font (Inter where installed) at a pixel size and weight.
QFont font(qreal pixelSize, QFont::Weight weight = QFont::Normal);

// A rounded panel in the panel colour with a border outline.
void drawPanel(QPainter& painter, const QRectF& rect, qreal radius = 12);
// A thin horizontal bar filled to `fraction` (clamped to 0 ... 1) in `color`.
void drawProgressBar(QPainter& painter, const QRectF& rect, double fraction, const QColor& color);
// A rounded label with a tinted background, e.g. a status or temperature pill, its text
// centred and elided to fit.
void drawPill(QPainter& painter, const QRectF& rect, const QString& text, const QColor& color);
// The width a pill needs for `text` at `height`.
qreal pillWidth(const QString& text, qreal height);

// The icon of a catalogue symbol name ("cpu", "film.stack", ...) at `size` device-independent
// pixels, tinted; cached. An unknown name gives a transparent pixmap.
QPixmap icon(std::string_view symbol, int size, const QColor& tint, qreal devicePixelRatio = 1.0);

QString qstring(std::string_view text);
// A catalogue text (a benchmark's title, subtitle, explanation or stage line, a category) in the
// user's language; the text as written where no translation has it.
QString uiText(std::string_view text);

// The history window's pages: fills the dirty part with the background, turns antialiasing
// on, draws `captions` one per line in the secondary colour at the top, and returns the area
// inside the page margins.
QRectF beginPage(QPainter& painter, const QRect& bounds, const QRect& dirty, const QStringList& captions);

// What a page says when it has nothing to draw, wrapped, from `top` down.
void drawEmptyNote(QPainter& painter, const QRectF& area, qreal top, const QString& text);

} // namespace quarbel::ui::theme
