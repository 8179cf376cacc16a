// SPDX-License-Identifier: Apache-2.0
#include "ui/views/summary_panel.h"

#include "model/number_format.h"
#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>

namespace quarbel::ui {
namespace {

// The store names a summary in English, and a report keeps that name; the window shows the
// names it knows in the user's language, any other as written.
constexpr const char* kSummaryTitles[] = {
    QT_TRANSLATE_NOOP("quarbel::ui::RunResultsView", "Full Suite Summary"),
    QT_TRANSLATE_NOOP("quarbel::ui::RunResultsView", "Full Suite Accuracy Summary"),
    QT_TRANSLATE_NOOP("quarbel::ui::RunResultsView", "Selected Test Summary"),
    QT_TRANSLATE_NOOP("quarbel::ui::RunResultsView", "Selected Test Accuracy Summary"),
};

} // namespace

QString summaryTitleText(const std::string& title) {
    for (const char* known : kSummaryTitles)
        if (title == known) return QCoreApplication::translate("quarbel::ui::RunResultsView", known);
    return theme::qstring(title);
}

QString durationText(double seconds) {
    if (seconds < 60) return theme::qstring(format(seconds, 1)) + QLatin1Char('s');
    return theme::qstring(format(seconds / 60, 1)) + QLatin1Char('m');
}

TestRunState totalScoreState(const RunSummary& summary) {
    if (summary.completed > 0) return TestRunState::done;
    return summary.failed > 0 && summary.skipped == 0 ? TestRunState::failed : TestRunState::skipped;
}

QString totalScoreText(const RunSummary& summary) {
    // A run where nothing completed has no score to show: a green "0.00" would read as one.
    switch (totalScoreState(summary)) {
    case TestRunState::done: return theme::qstring(scoreText(summary.score));
    case TestRunState::failed: return QObject::tr("Failed");
    default: return summary.failed > 0 ? QObject::tr("Skipped / failed") : QObject::tr("Skipped");
    }
}

SummaryPanel::SummaryPanel(BenchmarkStore& store, QWidget* parent)
    : QWidget(parent), store_(store), saveCard_(new QPushButton(tr("Save Result Card"), this)),
      compare_(new QPushButton(tr("Compare with\u2026"), this)),
      share_(new QPushButton(tr("Share\u2026"), this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedHeight(220);
    for (QPushButton* button : {saveCard_, compare_, share_})
        button->setObjectName(QStringLiteral("secondaryButton"));
    connect(&store_, &BenchmarkStore::runConditionChanged, this, qOverload<>(&QWidget::update));
    connect(&store_, &BenchmarkStore::runSummaryChanged, this, &SummaryPanel::followSummary);
    followSummary();
}

void SummaryPanel::followSummary() {
    const auto summary = store_.runSummary();
    setVisible(summary.has_value());
    // A run in which nothing completed has no score to put on a card.
    const bool scored = summary && summary->completed > 0;
    saveCard_->setEnabled(scored);
    saveCard_->setToolTip(scored ? tr("Save this run as a global PNG card")
                                 : tr("No benchmark of this run completed: there is no score for a card"));
    update();
}

void SummaryPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // One row under the figures, so that the title keeps the whole width in any language.
    int left = 24;
    for (QPushButton* button : {compare_, share_, saveCard_}) {
        const QSize hint = button->sizeHint();
        button->setGeometry(left, height() - 18 - hint.height(), hint.width(), hint.height());
        left += hint.width() + 8;
    }
}

void SummaryPanel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF panel = QRectF(rect()).adjusted(0, 0, -1, -1);
    theme::drawPanel(painter, panel, 14);
    const auto summary = store_.runSummary();
    if (!summary) return;
    const QRectF area = panel.adjusted(24, 16, -24, -16);

    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(area.left(), area.top(), area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("RUN SUMMARY"));
    painter.setFont(theme::font(17, QFont::Bold));
    painter.setPen(theme::text());
    const QRectF titleBox(area.left(), area.top() + 18, area.width(), 26);
    QRectF titleUsed;
    painter.drawText(titleBox, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(painter.font())
                         .elidedText(summaryTitleText(summary->title), Qt::ElideRight, int(titleBox.width())),
                     &titleUsed);
    // What made the run less trustworthy ("on battery", "throttling seen"), after the title.
    qreal x = titleUsed.right() + 12;
    for (const auto& badge : store_.runCondition().badges) {
        const QString text = theme::qstring(badge);
        const qreal width = theme::pillWidth(text, 22);
        if (x + width > titleBox.right()) break;
        theme::drawPill(painter, QRectF(x, titleBox.top() + 2, width, 22), text,
                        theme::stateColor(TestRunState::skipped));
        x += width + 6;
    }

    struct Metric {
        QString label;
        QString value;
    };
    const Metric metrics[] = {
        {tr("Total score"), totalScoreText(*summary)},
        {tr("Completed"), tr("%1 / %2").arg(summary->completed).arg(summary->total)},
        {tr("Skipped / failed"), tr("%1 / %2").arg(summary->skipped).arg(summary->failed)},
        {tr("Elapsed"), durationText(summary->duration)},
        {tr("Peak CPU"),
         summary->peakCPU ? theme::qstring(temperatureText(summary->peakCPU)) : tr("Unavailable")},
        {tr("Peak GPU"),
         summary->peakGPU ? theme::qstring(temperatureText(summary->peakGPU)) : tr("Unavailable")},
    };
    // Two rows of three, so that every value has room even in the narrowest window.
    const qreal columnWidth = area.width() / 3;
    const qreal top = area.top() + 52;
    for (std::size_t i = 0; i < std::size(metrics); ++i) {
        const QRectF cell(area.left() + columnWidth * qreal(i % 3), top + 46 * qreal(i / 3), columnWidth - 10,
                          44);
        painter.setFont(theme::font(11, QFont::DemiBold));
        painter.setPen(theme::muted());
        painter.drawText(QRectF(cell.left(), cell.top(), cell.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                         metrics[i].label.toUpper());
        painter.setFont(theme::font(17, QFont::Bold));
        painter.setPen(i == 0 ? theme::stateColor(totalScoreState(*summary)) : theme::text());
        painter.drawText(
            QRectF(cell.left(), cell.top() + 16, cell.width(), 26), Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(painter.font()).elidedText(metrics[i].value, Qt::ElideRight, int(cell.width())));
    }
}

} // namespace quarbel::ui
