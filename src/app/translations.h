// SPDX-License-Identifier: Apache-2.0
// The window's texts in the user's language: Quarbel's own translation for the first of the
// user's languages that has one, and Qt's for its standard dialogs. Reports, CSV and metrics
// never pass through here and stay the same in every language.
#pragma once

#include <QString>

class QCoreApplication;

namespace quarbel::app {

// QUARBEL_PSEUDO_TRANSLATION=1 replaces every translated text by a longer, accented copy of
// itself, so that screenshots show any text too long for its place and any text left
// untranslated (it stays plain). Call once, before the first window is built.
void installTranslations(QCoreApplication& application);

// The pseudo-translation of `source`: accented letters, 40 % longer, in brackets; place markers
// ("%1", "%n", "%L2"), mnemonics and markup are kept as they are.
QString pseudoTranslation(const QString& source);

} // namespace quarbel::app
