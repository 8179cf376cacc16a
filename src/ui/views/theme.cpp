// SPDX-License-Identifier: Apache-2.0
#include "ui/views/theme.h"

#include "ui/cards/card_parts.h"
#include "ui/cards/result_card_palette.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QSvgRenderer>

// Resources of a static library register only when asked to, outside any namespace.
static void registerIconResources() { Q_INIT_RESOURCE(icons); }

namespace quarbel::ui::theme {
namespace {

QColor white(double opacity) { return QColor::fromRgbF(1, 1, 1, float(opacity)); }

} // namespace

// The window and the result cards share one palette.
QColor background() { return cards::ResultCardPalette::background(); }
QColor panel() { return cards::ResultCardPalette::panel(); }
QColor panelAlt() { return cards::ResultCardPalette::panelAlt(); }
QColor border() { return cards::ResultCardPalette::border(); }
QColor text() { return cards::ResultCardPalette::text(); }
QColor secondary() { return cards::ResultCardPalette::secondary(); }
QColor muted() { return cards::ResultCardPalette::muted(); }
QColor accent(BenchmarkCategory category) { return cards::ResultCardPalette::accent(category); }
QColor stateColor(TestRunState state) { return cards::ResultCardPalette::stateColor(state); }

QFont font(qreal pixelSize, QFont::Weight weight) {
    QFont f(QStringLiteral("Inter"));
    f.setPixelSize(qRound(pixelSize));
    f.setWeight(weight);
    f.setHintingPreference(QFont::PreferNoHinting);
    return f;
}

void drawPanel(QPainter& painter, const QRectF& rect, qreal radius) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(border(), 1));
    painter.setBrush(panel());
    painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.restore();
}

void drawProgressBar(QPainter& painter, const QRectF& rect, double fraction, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const qreal radius = rect.height() / 2;
    painter.setBrush(white(0.08));
    painter.drawRoundedRect(rect, radius, radius);
    const double clamped = std::clamp(fraction, 0.0, 1.0);
    if (clamped > 0) {
        QRectF filled = rect;
        filled.setWidth(std::max(rect.height(), rect.width() * clamped));
        painter.setBrush(color);
        painter.drawRoundedRect(filled, radius, radius);
    }
    painter.restore();
}

namespace {
QFont pillFont(qreal height) { return font(std::round(height * 0.46), QFont::DemiBold); }
} // namespace

qreal pillWidth(const QString& label, qreal height) {
    return QFontMetricsF(pillFont(height)).horizontalAdvance(label) + height;
}

void drawPill(QPainter& painter, const QRectF& rect, const QString& label, const QColor& color) {
    cards::parts::drawPillInFont(painter, rect, label, color, pillFont(rect.height()));
}

QPixmap icon(std::string_view symbol, int size, const QColor& tint, qreal devicePixelRatio) {
    static QHash<QString, QPixmap> cache;
    const QString name = qstring(symbol);
    const QString key =
        QStringLiteral("%1|%2|%3|%4").arg(name).arg(size).arg(tint.rgba()).arg(devicePixelRatio);
    if (const auto found = cache.constFind(key); found != cache.constEnd()) return *found;

    static const bool registered = (registerIconResources(), true);
    Q_UNUSED(registered);
    const int pixels = qRound(size * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(QStringLiteral(":/quarbel/icons/%1.svg").arg(name));
    if (renderer.isValid()) {
        QPainter painter(&image);
        renderer.render(&painter, QRectF(0, 0, pixels, pixels));
        // The icons are drawn in white: keep their shape, take the tint's colour.
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), tint);
    }
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    cache.insert(key, pixmap);
    return pixmap;
}

QString qstring(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

QString uiText(std::string_view text) {
    // The catalogue marks its texts at namespace scope, which names their context.
    return QCoreApplication::translate("quarbel",
                                       QByteArray(text.data(), qsizetype(text.size())).constData());
}

QRectF beginPage(QPainter& painter, const QRect& bounds, const QRect& dirty, const QStringList& captions) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(dirty, background());
    const QRectF area = QRectF(bounds).adjusted(20, 16, -20, -16);
    painter.setFont(font(12.5));
    painter.setPen(secondary());
    for (qsizetype line = 0; line < captions.size(); ++line)
        painter.drawText(QRectF(area.left(), area.top() + 20 * qreal(line), area.width(), 18),
                         Qt::AlignLeft | Qt::AlignVCenter, captions[line]);
    return area;
}

void drawEmptyNote(QPainter& painter, const QRectF& area, qreal top, const QString& text) {
    painter.setFont(font(14));
    painter.setPen(muted());
    painter.drawText(area.adjusted(0, top, 0, 0), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text);
}

} // namespace quarbel::ui::theme
