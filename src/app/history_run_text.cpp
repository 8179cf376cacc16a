// SPDX-License-Identifier: Apache-2.0
// The texts keep the history window's translation context, so that its catalogue still finds
// them.
#include "app/history_run_text.h"

#include "model/outcome.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace quarbel::app {
namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

} // namespace

QString startedText(const SavedRun& run) {
    const QDateTime started = QDateTime::fromString(q(run.startedAt), Qt::ISODate);
    return started.isValid() ? QLocale().toString(started.toLocalTime(), QLocale::ShortFormat)
                             : q(run.startedAt);
}

QString titleText(const std::string& title) { return ui::theme::uiText(title); }

QString changeText(const std::optional<double>& ratio) {
    if (!ratio) return QStringLiteral("-");
    const double percent = (*ratio - 1) * 100;
    const QString digits = QString::number(std::abs(percent), 'f', 1);
    if (digits == QStringLiteral("0.0")) return QStringLiteral("0.0 %");
    return (percent > 0 ? QStringLiteral("+") : QStringLiteral("\u2212")) + digits + QStringLiteral(" %");
}

QString outcomeText(const SavedRun& run) {
    const bool allSkipped =
        !run.results.empty() && std::all_of(run.results.begin(), run.results.end(),
                                            [](const SavedResult& r) { return r.status == "skipped"; });
    QStringList parts{run.stopped
                          ? QCoreApplication::translate("quarbel::app::HistoryView", "Stopped before its end")
                      : allSkipped ? QCoreApplication::translate("quarbel::app::HistoryView", "Skipped")
                                   : QCoreApplication::translate("quarbel::app::HistoryView", "%1 pts")
                                         .arg(q(scoreText(run.runScore)))};
    if (run.quick) parts << QCoreApplication::translate("quarbel::app::HistoryView", "quick");
    if (run.mode == "accuracy")
        parts << QCoreApplication::translate("quarbel::app::HistoryView", "Accuracy Mode");
    return parts.join(QStringLiteral(" \u00B7 "));
}

QString benchmarksText(const SavedRun& run) {
    if (run.results.size() == kBenchmarkCount)
        return QCoreApplication::translate("quarbel::app::HistoryView", "Full suite");
    if (run.results.empty())
        return QCoreApplication::translate("quarbel::app::HistoryView", "No benchmark finished");
    QStringList titles;
    for (const SavedResult& result : run.results)
        titles << titleText(result.title);
    // Four or more: the first two and how many more, so that a row stays a few lines high.
    if (titles.size() > 3)
        return QCoreApplication::translate("quarbel::app::HistoryView", "%1 and %2 more")
            .arg(titles.mid(0, 2).join(QStringLiteral(", ")))
            .arg(titles.size() - 2);
    return titles.join(QStringLiteral(", "));
}

} // namespace quarbel::app
