// SPDX-License-Identifier: Apache-2.0
#include "ui/views/comparison_view.h"

#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {
namespace {

constexpr qreal kRowHeight = 30;
constexpr qreal kHeaderTop = 64;

} // namespace

QColor verdictColor(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return theme::stateColor(TestRunState::done);
    case Verdict::slower: return theme::stateColor(TestRunState::failed);
    case Verdict::withinNoise:
    case Verdict::inconclusive: return theme::muted();
    }
    return theme::muted();
}

namespace {

// The verdict as the window shows it, in the user's language.
QString verdictWord(Verdict verdict) {
    switch (verdict) {
    case Verdict::faster: return QCoreApplication::translate("quarbel::ui::ComparisonView", "faster");
    case Verdict::slower: return QCoreApplication::translate("quarbel::ui::ComparisonView", "slower");
    case Verdict::withinNoise:
        return QCoreApplication::translate("quarbel::ui::ComparisonView", "within noise");
    case Verdict::inconclusive:
        return QCoreApplication::translate("quarbel::ui::ComparisonView", "inconclusive");
    }
    return theme::qstring(verdictText(verdict));
}

} // namespace

ComparisonView::ComparisonView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(560, 200);
}

void ComparisonView::setTable(ComparisonTable table) {
    table_ = std::move(table);
    updateGeometry();
    update();
}

QSize ComparisonView::sizeHint() const {
    return {720, int(kHeaderTop + 40 + kRowHeight * qreal(table_.rows.size()) +
                     24 * qreal(table_.warnings.size()) + 40)};
}

void ComparisonView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRectF area =
        theme::beginPage(painter, rect(), event->rect(), {table_.beforeLabel, table_.afterLabel});
    if (table_.rows.empty()) {
        theme::drawEmptyNote(painter, area, kHeaderTop, table_.emptyText);
        return;
    }

    // Title takes what the numbers leave; the verdict pill sits at the right edge.
    const qreal number = 92, verdict = 112;
    const qreal titleWidth = std::max<qreal>(140, area.width() - 4 * number - verdict);
    const qreal columns[] = {area.left(),
                             area.left() + titleWidth,
                             area.left() + titleWidth + number,
                             area.left() + titleWidth + 2 * number,
                             area.left() + titleWidth + 3 * number,
                             area.left() + titleWidth + 4 * number};
    qreal y = area.top() + kHeaderTop;
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    const QString headers[] = {tr("BENCHMARK"), tr("A"),           tr("B"),
                               tr("CHANGE"),    tr("\u00B1 95 %"), tr("VERDICT")};
    for (int i = 0; i < 6; ++i)
        painter.drawText(QRectF(columns[i], y, i == 0 ? titleWidth : number, 18),
                         Qt::AlignVCenter | (i == 0 ? Qt::AlignLeft : Qt::AlignRight), headers[i]);
    y += 24;
    for (std::size_t i = 0; i < table_.rows.size(); ++i) {
        const auto& row = table_.rows[i];
        if (i % 2 == 0)
            painter.fillRect(QRectF(area.left() - 8, y, area.width() + 16, kRowHeight), theme::panelAlt());
        painter.setFont(theme::font(13, QFont::DemiBold));
        painter.setPen(theme::text());
        painter.drawText(
            QRectF(columns[0], y, titleWidth - 8, kRowHeight), Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(painter.font()).elidedText(row.title, Qt::ElideRight, int(titleWidth - 8)));
        painter.setFont(theme::font(13));
        const QString cells[] = {row.before, row.after, row.change, row.band};
        for (int c = 0; c < 4; ++c) {
            // The change takes the verdict's colour, so a real difference stands out of the noise.
            painter.setPen(c != 2                                ? theme::text()
                           : row.verdict == Verdict::withinNoise ? theme::secondary()
                                                                 : verdictColor(row.verdict));
            painter.drawText(QRectF(columns[c + 1], y, number, kRowHeight), Qt::AlignRight | Qt::AlignVCenter,
                             cells[c]);
        }
        const QString word = verdictWord(row.verdict);
        const qreal pill = std::min(verdict - 12, theme::pillWidth(word, 22));
        theme::drawPill(painter, QRectF(columns[5] + verdict - pill, y + 4, pill, 22), word,
                        verdictColor(row.verdict));
        y += kRowHeight;
    }
    y += 12;
    painter.setFont(theme::font(12.5));
    painter.setPen(theme::stateColor(TestRunState::skipped));
    for (const QString& warning : table_.warnings) {
        const QRectF box(area.left(), y, area.width(), area.bottom() - y);
        const QRectF used =
            painter.boundingRect(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, warning);
        painter.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, warning);
        y = used.bottom() + 6;
    }
}

} // namespace quarbel::ui
