// SPDX-License-Identifier: Apache-2.0
// Inter as the application font, so the windows look the same on every machine.
#pragma once

#include <QStringList>

namespace quarbel::app {

// Where Debian's fonts-inter puts the font files.
QStringList interFontDirectories();

// Adds the Inter faces found in `directories` and makes Inter the application font,
// keeping the current point size. Without the regular face nothing changes. Returns
// whether Inter is now the application font. Call after the QApplication exists.
bool useInterFont(const QStringList& directories = interFontDirectories());

} // namespace quarbel::app
