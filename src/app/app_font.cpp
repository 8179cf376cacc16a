// SPDX-License-Identifier: Apache-2.0
#include "app/app_font.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>

namespace quarbel::app {

QStringList interFontDirectories() {
    return {QStringLiteral("/usr/share/fonts/opentype/inter"),
            QStringLiteral("/usr/share/fonts/truetype/inter")};
}

bool useInterFont(const QStringList& directories) {
    QString family;
    for (const QString& directory : directories) {
        const QDir dir(directory);
        // The regular face first: it names the family; the heavier ones serve bold text.
        for (const char* face : {"Regular", "Medium", "SemiBold", "Bold"}) {
            for (const char* suffix : {".otf", ".ttf"}) {
                const QString path = dir.filePath(QStringLiteral("Inter-%1%2").arg(face, suffix));
                if (!QFileInfo::exists(path)) continue;
                const int id = QFontDatabase::addApplicationFont(path);
                const QStringList families = QFontDatabase::applicationFontFamilies(id);
                if (family.isEmpty() && qstrcmp(face, "Regular") == 0 && !families.isEmpty())
                    family = families.front();
            }
        }
        if (!family.isEmpty()) break;
    }
    if (family.isEmpty()) return false;
    QFont font = QApplication::font();
    font.setFamily(family);
    QApplication::setFont(font);
    return true;
}

} // namespace quarbel::app
