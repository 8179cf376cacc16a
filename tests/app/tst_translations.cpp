// SPDX-License-Identifier: Apache-2.0
// The window in other languages: pseudo-translated texts 40 % longer still fit at the width of a
// typical first start (the narrowest it opens at); the German translation is complete.
#include "app/translations.h"
#include "support/window_fixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace quarbel;

TEST(Translations, PseudoTranslationLengthensTheWordsAndKeepsMarkersAndMarkup) {
    // A source text and how its pseudo-translation starts: place markers and markup kept.
    const std::pair<const char*, const char*> cases[] = {
        {"Save Result Card", "[Šàvé Réšûlt Çàrd"},
        {"%1 of %n runs, %L2 points", "[%1 öf %n rûñš, %L2 pöîñtš"},
        {"<b>Total</b> score", "[<b>Tötàl</b> šçöré"},
        {"42 %", "42 %"},
    };
    for (const auto& [text, starts] : cases) {
        const QString source = QString::fromUtf8(text);
        const QString pseudo = app::pseudoTranslation(source);
        EXPECT_TRUE(pseudo.startsWith(QString::fromUtf8(starts))) << qPrintable(pseudo);
        EXPECT_TRUE(pseudo == source || pseudo.size() >= source.size() * 14 / 10) << qPrintable(pseudo);
    }
}

TEST(Translations, EveryControlOfTheMainWindowFitsItsTextWhenTextsAreLonger) {
    qputenv("QUARBEL_PSEUDO_TRANSLATION", "1");
    app::installTranslations(*QCoreApplication::instance());
    test::Window w({}, QSize(1200, 820));
    // A finished run, so that the summary and its buttons are there too.
    w.run({BenchmarkID::cpuInteger});
    QApplication::processEvents();
    int checked = 0, translated = 0;
    for (QWidget* widget : w.window.findChildren<QWidget*>()) {
        if (!widget->isVisible() ||
            (!qobject_cast<QAbstractButton*>(widget) && !qobject_cast<QLabel*>(widget)))
            continue;
        ++checked;
        translated += widget->property("text").toString().startsWith(QLatin1Char('['));
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width())
            << qPrintable(widget->objectName()) << " " << qPrintable(widget->property("text").toString());
    }
    EXPECT_GT(translated, 3) << "of " << checked;
}

namespace {

// The place markers of a text ("%1", "%n", "%L2"), sorted: a translation may reorder them.
std::string placeMarkers(const QString& text) {
    static const QRegularExpression marker(QStringLiteral("%L?(?:[1-9]|n)"));
    QStringList found;
    for (const QRegularExpressionMatch& match : marker.globalMatch(text))
        found << match.captured();
    found.sort();
    return found.join(QLatin1Char(' ')).toStdString();
}

} // namespace

TEST(Translations, EveryGermanTextIsFinishedAndKeepsThePlaceMarkersOfItsSource) {
    QFile file(QFileInfo(QStringLiteral(__FILE__)).absolutePath() + "/../../translations/quarbel_de.ts");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
    QXmlStreamReader xml(&file);
    QString source;
    bool numerus = false;
    int messages = 0;
    const auto check = [&](const QString& text) {
        EXPECT_FALSE(text.isEmpty()) << qPrintable(source);
        EXPECT_EQ(placeMarkers(text), placeMarkers(source))
            << qPrintable(source) << " -> " << qPrintable(text);
    };
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) continue;
        if (xml.name() == u"message") numerus = xml.attributes().value(QLatin1String("numerus")) == u"yes";
        if (xml.name() == u"source") source = xml.readElementText();
        if (xml.name() == u"numerusform") check(xml.readElementText());
        if (xml.name() != u"translation") continue;
        ++messages;
        EXPECT_FALSE(xml.attributes().value(QLatin1String("type")) == u"unfinished") << qPrintable(source);
        if (!numerus) check(xml.readElementText());
    }
    EXPECT_FALSE(xml.hasError()) << qPrintable(xml.errorString());
    EXPECT_GT(messages, 100);
}
