// SPDX-License-Identifier: Apache-2.0
// The texts keep the history window's translation context, so that its catalogue still finds
// them.
#include "app/history_tables.h"

#include "app/history_run_text.h"
#include "model/outcome.h"
#include "results/run_comparison.h"
#include "ui/views/theme.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace quarbel::app {
namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

QString label(char letter, const SavedRun& run) {
    QString text = QStringLiteral("%1: %2 \u00B7 %3 \u00B7 %4")
                       .arg(QChar(letter), startedText(run), benchmarksText(run), outcomeText(run));
    if (!run.version.empty()) text += QStringLiteral(" \u00B7 Quarbel ") + q(run.version);
    return text;
}

} // namespace

std::vector<ui::TrendSeries> trendSeries(const std::vector<SavedRun>& runs, std::size_t selected,
                                         std::size_t most) {
    std::vector<ui::TrendSeries> series;
    if (selected >= runs.size()) return series;
    const SavedRun& chosen = runs[selected];
    for (const SavedResult& result : chosen.results) {
        if (result.status != "ok") continue;
        const auto id = benchmarkFromRawValue(result.id);
        ui::TrendSeries trend{
            titleText(result.title), id ? ui::theme::accent(category(*id)) : ui::theme::secondary(), {}};
        // Runs are kept newest first; the chart reads oldest first.
        std::vector<std::pair<std::size_t, const SavedResult*>> found;
        std::size_t selectedAt = 0;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const SavedRun& run = runs[i];
            if (run.stopped || run.quick != chosen.quick) continue;
            for (const SavedResult& r : run.results)
                if (r.title == result.title && r.status == "ok") {
                    if (i == selected) selectedAt = found.size();
                    found.emplace_back(i, &r);
                    break;
                }
        }
        // The newest `most` points, or, for an older run, `most` points around it; only the
        // points drawn have their intervals worked out.
        const std::size_t first = selectedAt < most ? 0 : selectedAt - most / 2;
        found.erase(found.begin() + std::ptrdiff_t(std::min(found.size(), first + most)), found.end());
        found.erase(found.begin(), found.begin() + std::ptrdiff_t(first));
        for (auto point = found.rbegin(); point != found.rend(); ++point) {
            const SavedResult& r = *point->second;
            const auto& u = r.statistics.uncertainty;
            trend.points.push_back({r.score, u ? r.score * u->ci95Percent() / 100 : 0,
                                    point->first == selected, r.statistics.noisy});
        }
        series.push_back(std::move(trend));
    }
    return series;
}

ui::ComparisonTable comparisonTable(const SavedRun& before, const SavedRun& after) {
    const RunComparison comparison = compareRuns(before, after);
    ui::ComparisonTable table;
    table.beforeLabel = label('A', before);
    table.afterLabel = label('B', after);
    for (const auto& row : comparison.rows) {
        const auto score = [](double value) { return value > 0 ? q(scoreText(value)) : QStringLiteral("-"); };
        // Judged by statistics: half the width of the ratio's 95 % interval; else the fixed band.
        const ComparedScore& c = row.compared;
        const double uncertainty = c.ratio && c.ratioLow && c.ratioHigh
                                       ? (*c.ratioHigh - *c.ratioLow) / 2 / *c.ratio * 100
                                       : c.bandPercent;
        const QString uncertaintyText =
            c.ratio ? QStringLiteral("\u00B1%1 %").arg(uncertainty, 0, 'f', 1) : QStringLiteral("-");
        table.rows.push_back({titleText(row.title), score(row.before), score(row.after), changeText(c.ratio),
                              uncertaintyText, c.verdict});
    }
    for (const auto& warning : comparison.warnings)
        table.warnings << q(warning);
    table.emptyText =
        QCoreApplication::translate("quarbel::app::HistoryView", "The two runs have no benchmark in common.");
    return table;
}

} // namespace quarbel::app
