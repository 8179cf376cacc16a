#include "ui/views/log_panel.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {
namespace {
constexpr qreal kLineHeight = 17;
}

LogPanel::LogPanel(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumHeight(90);
    connect(&store_, &BenchmarkStore::logLinesChanged, this, qOverload<>(&QWidget::update));
}

void LogPanel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);
    const QRectF area = panel.adjusted(18, 12, -18, -10);

    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(area.left(), area.top(), area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("LOG"));

    // Newest at the bottom; when the panel is short, the oldest lines give way.
    const QStringList lines = store_.logLines();
    const QRectF body = area.adjusted(0, 22, 0, 0);
    const int fitting = std::max(0, int(body.height() / kLineHeight));
    const qsizetype first = std::max<qsizetype>(0, lines.size() - fitting);
    QFont mono(QStringLiteral("monospace"));
    mono.setStyleHint(QFont::Monospace);
    mono.setPixelSize(12);
    painter.setFont(mono);
    qreal y = body.bottom() - kLineHeight * qreal(lines.size() - first);
    for (qsizetype i = first; i < lines.size(); ++i) {
        painter.setPen(i == lines.size() - 1 ? theme::text() : theme::secondary());
        painter.drawText(QRectF(body.left(), y, body.width(), kLineHeight), Qt::AlignLeft | Qt::AlignVCenter,
                         QFontMetrics(mono).elidedText(lines[i], Qt::ElideRight, int(body.width())));
        y += kLineHeight;
    }
}

} // namespace quarbel::ui
