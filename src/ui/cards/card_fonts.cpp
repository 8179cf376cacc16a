// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/card_fonts.h"

#include <QFontDatabase>
#include <QStringList>

namespace quarbel::cards {

QString cardFontFamily() {
    static const QString family = [] {
        QString name;
        for (const char* face : {"Regular", "Medium", "SemiBold", "Bold"}) {
            const int id =
                QFontDatabase::addApplicationFont(QStringLiteral(":/quarbel/fonts/Inter-%1.otf").arg(face));
            const QStringList families = QFontDatabase::applicationFontFamilies(id);
            if (name.isEmpty() && !families.isEmpty()) name = families.front();
        }
        // Without the built-in faces (a broken build), the installed Inter or a fallback.
        return name.isEmpty() ? QStringLiteral("Inter") : name;
    }();
    return family;
}

QFont cardFont(qreal pixelSize, QFont::Weight weight) {
    QFont font(cardFontFamily());
    font.setPixelSize(qRound(pixelSize));
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}

} // namespace quarbel::cards
