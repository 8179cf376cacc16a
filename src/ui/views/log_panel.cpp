// SPDX-License-Identifier: Apache-2.0
#include "ui/views/log_panel.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

namespace quarbel::ui {
namespace {

constexpr int kHeaderHeight = 34; // the "LOG" label above the lines

// How many lines at the end of `shown` the start of `lines` repeats: the store drops its
// oldest lines as new ones come, so the two overlap unless the log was replaced.
qsizetype overlap(const QStringList& shown, const QStringList& lines) {
    for (qsizetype kept = std::min(shown.size(), lines.size()); kept > 0; --kept)
        if (std::equal(shown.end() - kept, shown.end(), lines.begin())) return kept;
    return 0;
}

} // namespace

LogPanel::LogPanel(BenchmarkStore& store, QWidget* parent)
    : QWidget(parent), store_(store), text_(new QPlainTextEdit(this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumHeight(90);
    text_->setObjectName(QStringLiteral("logText"));
    text_->setReadOnly(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text_->setTabChangesFocus(true);
    text_->setFrameShape(QFrame::NoFrame);
    text_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    text_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    text_->document()->setDocumentMargin(0);
    QFont mono(QStringLiteral("monospace"));
    mono.setStyleHint(QFont::Monospace);
    mono.setPixelSize(12);
    text_->setFont(mono);
    // The panel paints its own background; the view only draws its text (and the selection,
    // in the window's accent).
    text_->setStyleSheet(
        QStringLiteral("QPlainTextEdit#logText { background: transparent; border: none; "
                       "color: %1; selection-background-color: rgba(33,201,224,0.35); "
                       "selection-color: %2; }")
            .arg(theme::secondary().name(QColor::HexArgb), theme::text().name(QColor::HexArgb)));
    text_->viewport()->setAutoFillBackground(false);
    connect(&store_, &BenchmarkStore::logLinesChanged, this, &LogPanel::follow);
    follow();
}

void LogPanel::follow() {
    const QStringList lines = store_.logLines();
    if (lines == shown_) return;
    QScrollBar* bar = text_->verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum();
    const qsizetype kept = overlap(shown_, lines);
    if (kept == 0) {
        text_->setPlainText(lines.join(QLatin1Char('\n')));
    } else {
        // Only what changed is edited, so that a selection in the kept lines stays put.
        QTextCursor cursor(text_->document());
        const qsizetype dropped = shown_.size() - kept;
        if (dropped > 0) {
            cursor.movePosition(QTextCursor::Start);
            cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, int(dropped));
            cursor.removeSelectedText();
        }
        cursor.movePosition(QTextCursor::End);
        for (qsizetype i = kept; i < lines.size(); ++i) {
            cursor.insertBlock();
            cursor.insertText(lines[i]);
        }
    }
    shown_ = lines;
    // The newest line stays in view unless the reader scrolled back to older ones.
    if (atEnd) bar->setValue(bar->maximum());
}

void LogPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    text_->setGeometry(rect().adjusted(18, kHeaderHeight, -8, -10));
}

void LogPanel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);
    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(18, 12, width() - 36, 16), Qt::AlignLeft | Qt::AlignVCenter, tr("LOG"));
}

} // namespace quarbel::ui
