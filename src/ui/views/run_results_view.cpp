// SPDX-License-Identifier: Apache-2.0
#include "ui/views/run_results_view.h"

#include "ui/cards/result_card.h"
#include "ui/views/summary_panel.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QPaintEvent>
#include <QPainter>

namespace quarbel::ui {
namespace {

constexpr qreal kSummaryHeight = 132;
constexpr qreal kHeaderHeight = 26;
constexpr qreal kRowHeight = 42;
constexpr qreal kReasonHeight = 18; // the reason line under a skipped or failed benchmark

// Fixed columns after the benchmark's: status, score, primary, secondary, duration.
constexpr qreal kColumnWidths[] = {96, 88, 150, 140, 70};

QString statusText(TestRunState state) {
    switch (state) {
    case TestRunState::idle: return QCoreApplication::translate("quarbel::ui::RunResultsView", "Not Run");
    case TestRunState::running: return QCoreApplication::translate("quarbel::ui::RunResultsView", "Running");
    case TestRunState::done: return QCoreApplication::translate("quarbel::ui::RunResultsView", "Completed");
    case TestRunState::skipped: return QCoreApplication::translate("quarbel::ui::RunResultsView", "Skipped");
    case TestRunState::failed: return QCoreApplication::translate("quarbel::ui::RunResultsView", "Failed");
    }
    return {};
}

bool hasReason(const ReportEntry& entry) { return entry.outcome.status != OutcomeStatus::ok; }

QString elided(const QPainter& painter, const QString& text, qreal width) {
    return QFontMetricsF(painter.font()).elidedText(text, Qt::ElideRight, width);
}

// A labelled value: the label small and muted over the value.
void drawLabelled(QPainter& painter, const QRectF& rect, const QString& label, const QString& value,
                  const QColor& valueColor, qreal valueSize) {
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(rect.left(), rect.top(), rect.width(), 15), Qt::AlignLeft | Qt::AlignVCenter,
                     elided(painter, label, rect.width()));
    painter.setFont(theme::font(valueSize, QFont::DemiBold));
    painter.setPen(valueColor);
    painter.drawText(QRectF(rect.left(), rect.top() + 15, rect.width(), rect.height() - 15),
                     Qt::AlignLeft | Qt::AlignVCenter, elided(painter, value, rect.width()));
}

} // namespace

RunResultsView::RunResultsView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(620, 200);
}

void RunResultsView::setReport(std::optional<RunReport> report, QString problem) {
    report_ = std::move(report);
    problem_ = std::move(problem);
    updateGeometry();
    update();
}

QSize RunResultsView::sizeHint() const {
    qreal height = 32 + kSummaryHeight + 20 + kHeaderHeight;
    if (report_)
        for (const ReportEntry& entry : report_->results)
            height += kRowHeight + (hasReason(entry) ? kReasonHeight : 0);
    return {720, int(height)};
}

void RunResultsView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), theme::background());
    const QRectF area = QRectF(rect()).adjusted(20, 16, -20, -16);
    if (!report_) {
        painter.setFont(theme::font(14));
        painter.setPen(theme::muted());
        painter.drawText(area, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, problem_);
        return;
    }
    const RunReport& report = *report_;

    // The summary: what the run was and how it ended.
    const QRectF summaryBox(area.left(), area.top(), area.width(), kSummaryHeight);
    theme::drawPanel(painter, summaryBox, 12);
    const QRectF inner = summaryBox.adjusted(20, 14, -20, -14);
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    painter.drawText(QRectF(inner.left(), inner.top(), inner.width(), 15), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("RUN SUMMARY"));
    painter.setFont(theme::font(17, QFont::Bold));
    painter.setPen(theme::text());
    const QString heading =
        report.summary ? summaryTitleText(report.summary->title) : tr("Stopped before its end");
    QRectF titleUsed;
    painter.drawText(QRectF(inner.left(), inner.top() + 16, inner.width() * 0.6, 26),
                     Qt::AlignLeft | Qt::AlignVCenter, heading, &titleUsed);
    std::vector<std::pair<QString, QColor>> pills;
    if (report.quick) pills.emplace_back(tr("Quick run"), theme::stateColor(TestRunState::skipped));
    if (report.accuracyMode)
        pills.emplace_back(tr("Accuracy Mode"), theme::stateColor(TestRunState::running));
    for (const auto& badge : report.badges)
        pills.emplace_back(theme::qstring(badge), theme::stateColor(TestRunState::skipped));
    qreal x = titleUsed.right() + 12;
    for (const auto& [text, color] : pills) {
        const qreal width = theme::pillWidth(text, 22);
        if (x + width > inner.right()) break;
        theme::drawPill(painter, QRectF(x, inner.top() + 18, width, 22), text, color);
        x += width + 6;
    }
    // In local time and the user's format, as the history's list shows it.
    const QString started = QLocale().toString(
        QDateTime::fromMSecsSinceEpoch(
            std::chrono::duration_cast<std::chrono::milliseconds>(report.startedAt.time_since_epoch())
                .count()),
        QLocale::ShortFormat);
    const QString facts =
        tr("Started %1  \u00B7  Quarbel %2  \u00B7  global score %3 over all thirteen")
            .arg(started, theme::qstring(report.appVersion), theme::qstring(scoreText(report.globalScore)));
    painter.setFont(theme::font(12));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(inner.left(), inner.top() + 42, inner.width(), 18),
                     Qt::AlignLeft | Qt::AlignVCenter, elided(painter, facts, inner.width()));

    const qreal metricsTop = inner.top() + 66;
    if (report.summary) {
        const RunSummary& summary = *report.summary;
        const std::pair<QString, QString> metrics[] = {
            {tr("Run score"), theme::qstring(scoreText(summary.score))},
            {tr("Completed"), tr("%1 / %2").arg(summary.completed).arg(summary.total)},
            {tr("Skipped / failed"), tr("%1 / %2").arg(summary.skipped).arg(summary.failed)},
            {tr("Elapsed"), cards::summaryDurationText(summary.duration)},
            {tr("Peak CPU"),
             summary.peakCPU ? theme::qstring(temperatureText(summary.peakCPU)) : tr("Unavailable")},
            {tr("Peak GPU"),
             summary.peakGPU ? theme::qstring(temperatureText(summary.peakGPU)) : tr("Unavailable")},
        };
        const qreal width = inner.width() / 6;
        for (std::size_t i = 0; i < std::size(metrics); ++i)
            drawLabelled(painter, QRectF(inner.left() + width * qreal(i), metricsTop, width - 10, 38),
                         metrics[i].first.toUpper(), metrics[i].second,
                         i == 0 ? theme::stateColor(TestRunState::done) : theme::text(), 16);
    } else {
        painter.setFont(theme::font(13));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(inner.left(), metricsTop, inner.width(), 38),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap,
                         tr("A stopped run has no summary and no global card. Below are the benchmarks that "
                            "finished before the stop."));
    }

    // The table: the benchmark takes what the fixed columns leave.
    qreal fixed = 0;
    for (const qreal width : kColumnWidths)
        fixed += width;
    const qreal titleWidth = std::max<qreal>(150, area.width() - fixed);
    qreal columns[6] = {area.left()};
    for (int i = 1; i < 6; ++i)
        columns[i] = columns[i - 1] + (i == 1 ? titleWidth : kColumnWidths[i - 2]);
    qreal y = summaryBox.bottom() + 20;
    painter.setFont(theme::font(11, QFont::DemiBold));
    painter.setPen(theme::muted());
    const QString headers[] = {tr("BENCHMARK"), tr("STATUS"),    tr("SCORE"),
                               tr("PRIMARY"),   tr("SECONDARY"), tr("DURATION")};
    for (int i = 0; i < 6; ++i)
        painter.drawText(QRectF(columns[i], y, i == 0 ? titleWidth : kColumnWidths[i - 1], kHeaderHeight),
                         Qt::AlignLeft | Qt::AlignVCenter, headers[i]);
    y += kHeaderHeight;
    if (report.results.empty()) {
        painter.setFont(theme::font(13));
        painter.setPen(theme::muted());
        painter.drawText(QRectF(area.left(), y + 6, area.width(), 24), Qt::AlignLeft | Qt::AlignVCenter,
                         tr("No benchmark finished in this run."));
        return;
    }
    for (std::size_t i = 0; i < report.results.size(); ++i) {
        const ReportEntry& entry = report.results[i];
        const BenchmarkOutcome& outcome = entry.outcome;
        const qreal height = kRowHeight + (hasReason(entry) ? kReasonHeight : 0);
        if (i % 2 == 0)
            painter.fillRect(QRectF(area.left() - 8, y, area.width() + 16, height), theme::panelAlt());
        const QRectF row(area.left(), y, area.width(), kRowHeight);

        // The benchmark: its category's dot, title and short description.
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::accent(category(entry.id)));
        painter.drawEllipse(QPointF(columns[0] + 4, row.center().y()), 3.5, 3.5);
        const qreal textLeft = columns[0] + 16;
        const qreal textWidth = titleWidth - 24;
        painter.setFont(theme::font(13, QFont::DemiBold));
        painter.setPen(theme::text());
        painter.drawText(QRectF(textLeft, row.top() + 4, textWidth, 18), Qt::AlignLeft | Qt::AlignVCenter,
                         elided(painter, theme::uiText(title(entry.id)), textWidth));
        painter.setFont(theme::font(11));
        painter.setPen(theme::muted());
        painter.drawText(QRectF(textLeft, row.top() + 22, textWidth, 15), Qt::AlignLeft | Qt::AlignVCenter,
                         elided(painter, theme::uiText(subtitle(entry.id)), textWidth));

        const TestRunState state = rowStateFor(outcome.status);
        const QString status = statusText(state);
        theme::drawPill(painter,
                        QRectF(columns[1], row.center().y() - 11,
                               std::min(kColumnWidths[0] - 12, theme::pillWidth(status, 22)), 22),
                        status, theme::stateColor(state));
        painter.setFont(theme::font(14, QFont::Bold));
        painter.setPen(entry.scoreText.empty() ? theme::muted() : theme::text());
        painter.drawText(
            QRectF(columns[2], row.top(), kColumnWidths[1] - 10, row.height()),
            Qt::AlignLeft | Qt::AlignVCenter,
            elided(painter, entry.scoreText.empty() ? QStringLiteral("-") : theme::qstring(entry.scoreText),
                   kColumnWidths[1] - 10));
        const QRectF primary(columns[3], row.top() + 5, kColumnWidths[2] - 12, row.height() - 10);
        drawLabelled(painter, primary, theme::qstring(outcome.primary.label),
                     theme::qstring(cardValue(outcome.primary)), theme::text(), 13);
        const QRectF secondary(columns[4], row.top() + 5, kColumnWidths[3] - 12, row.height() - 10);
        if (outcome.secondary)
            drawLabelled(painter, secondary, theme::qstring(outcome.secondary->label),
                         theme::qstring(cardValue(*outcome.secondary)), theme::text(), 13);
        else
            drawLabelled(painter, secondary, QString(), tr("Unavailable"), theme::muted(), 13);
        painter.setFont(theme::font(13));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(columns[5], row.top(), kColumnWidths[4], row.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, cards::cardDurationText(outcome.duration));
        if (hasReason(entry)) {
            painter.setFont(theme::font(12));
            painter.setPen(theme::stateColor(state));
            const qreal width = area.right() - textLeft;
            painter.drawText(QRectF(textLeft, row.bottom() - 2, width, kReasonHeight - 2),
                             Qt::AlignLeft | Qt::AlignVCenter,
                             elided(painter, theme::qstring(outcome.detail), width));
        }
        y += height;
    }
}

} // namespace quarbel::ui
