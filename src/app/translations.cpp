// SPDX-License-Identifier: Apache-2.0
#include "app/translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <algorithm>

namespace quarbel::app {
namespace {

class PseudoTranslator : public QTranslator {
  public:
    using QTranslator::QTranslator;
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* source, const char*, int) const override {
        return pseudoTranslation(QString::fromUtf8(source));
    }
};

QChar accented(QChar c) {
    static const QString plain = QStringLiteral("aceinousyACEINOUSY");
    static const QString marked = QStringLiteral("àçéîñöûšýÀÇÉÎÑÖÛŠÝ");
    const auto at = plain.indexOf(c);
    return at < 0 ? c : marked[at];
}

} // namespace

QString pseudoTranslation(const QString& source) {
    QString out;
    out.reserve(source.size() * 2);
    qsizetype letters = 0;
    for (qsizetype i = 0; i < source.size(); ++i) {
        const QChar c = source[i];
        if (c == QLatin1Char('<')) { // markup passes unchanged
            const auto end = source.indexOf(QLatin1Char('>'), i);
            if (end > i) {
                out += source.mid(i, end - i + 1);
                i = end;
                continue;
            }
        }
        if (c == QLatin1Char('%') && i + 1 < source.size()) { // "%1", "%n", "%L1"
            qsizetype end = i + 1;
            if (source[end] == QLatin1Char('L')) ++end;
            if (end < source.size() && (source[end] == QLatin1Char('n') || source[end].isDigit())) {
                while (end + 1 < source.size() && source[end + 1].isDigit())
                    ++end;
                out += source.mid(i, end - i + 1);
                i = end;
                continue;
            }
        }
        if (c.isLetter()) ++letters;
        out += accented(c);
    }
    if (letters == 0) return source; // a number or a symbol reads the same everywhere
    // Two brackets and padding make the text 40 % longer than it was.
    const auto padding = std::max<qsizetype>(0, (source.size() * 2 + 4) / 5 - 2);
    return QLatin1Char('[') + out + QString(padding, QChar(0x00B7)) + QLatin1Char(']');
}

void installTranslations(QCoreApplication& application) {
    if (qEnvironmentVariableIntValue("QUARBEL_PSEUDO_TRANSLATION") == 1) {
        application.installTranslator(new PseudoTranslator(&application));
        return;
    }
    auto* qt = new QTranslator(&application);
    if (qt->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        application.installTranslator(qt);
    auto* own = new QTranslator(&application);
    if (own->load(QLocale(), QStringLiteral("quarbel"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        application.installTranslator(own);
}

} // namespace quarbel::app
