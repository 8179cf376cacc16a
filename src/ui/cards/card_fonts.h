// SPDX-License-Identifier: Apache-2.0
// The Inter faces built into the program, so that a card is set in the same font on
// every machine, with or without Inter installed and with or without a display.
#pragma once

#include <QFont>

namespace quarbel::cards {

// Registers the built-in faces on first use and returns their family name ("Inter").
// Needs a QGuiApplication (the offscreen platform will do); main thread.
QString cardFontFamily();

// The card font at a pixel size and weight, greyscale-antialiased and unhinted so that
// the same card comes out the same whatever the platform's font settings.
QFont cardFont(qreal pixelSize, QFont::Weight weight = QFont::Normal);

} // namespace quarbel::cards
