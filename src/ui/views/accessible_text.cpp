// SPDX-License-Identifier: Apache-2.0
#include "ui/views/accessible_text.h"

#include "model/number_format.h"
#include "results/result_statistics.h"
#include "run/benchmark_store.h"
#include "ui/views/comparison_view.h"
#include "ui/views/live_text.h"
#include "ui/views/run_header.h"
#include "ui/views/summary_panel.h"
#include "ui/views/system_panel.h"
#include "ui/views/theme.h"
#include "ui/views/trend_view.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace quarbel::ui {
namespace {

// The translation context of everything said to assistive technology.
struct Speech {
    Q_DECLARE_TR_FUNCTIONS(Speech)
};

QString points(double score) { return Speech::tr("%1 Quarbel points").arg(theme::qstring(scoreText(score))); }

// "± 1.3 % (95 % interval)", naming the passes when the interval comes from several.
QString spokenInterval(const BenchmarkEndState& end) {
    const QString interval = theme::qstring(uncertaintyText(end.uncertainty));
    if (interval.isEmpty()) return {};
    if (end.passes > 1) return Speech::tr("%1 (95 % interval of %2 passes)").arg(interval).arg(end.passes);
    return Speech::tr("%1 (95 % interval)").arg(interval);
}

} // namespace

QString spokenRowState(const BenchmarkRowState& row) {
    switch (row.state) {
    case TestRunState::idle: return Speech::tr("Not run");
    case TestRunState::running: return Speech::tr("Running");
    case TestRunState::done:
        if (row.outcome)
            return Speech::tr("Done, %1 points").arg(theme::qstring(scoreText(row.outcome->score)));
        return Speech::tr("Done");
    case TestRunState::skipped: return Speech::tr("Skipped");
    case TestRunState::failed: return Speech::tr("Failed");
    }
    return {};
}

QString spokenResult(const BenchmarkStore& store, BenchmarkID id) {
    const BenchmarkRowState& row = store.rows()[id];
    if (!row.outcome)
        return row.state == TestRunState::running ? Speech::tr("Running now") : Speech::tr("Not run yet");
    const BenchmarkOutcome& outcome = *row.outcome;
    const QString detail = theme::qstring(outcome.detail);
    if (outcome.status != OutcomeStatus::ok) {
        const QString status =
            outcome.status == OutcomeStatus::failed ? Speech::tr("Failed") : Speech::tr("Skipped");
        return detail.isEmpty() ? status : Speech::tr("%1: %2").arg(status, detail);
    }
    const BenchmarkEndState& end = store.endState(id);
    QStringList parts{points(outcome.score)};
    if (const QString interval = spokenInterval(end); !interval.isEmpty()) parts << interval;
    QString text = parts.join(QStringLiteral(", ")) + QLatin1Char('.');
    if (end.noisy) text += QLatin1Char(' ') + Speech::tr("Noisy machine.");
    const auto line = [](const MeasurementLine& measured) {
        return Speech::tr("%1: %2.").arg(theme::qstring(measured.label), theme::qstring(cardValue(measured)));
    };
    text += QLatin1Char(' ') + line(outcome.primary);
    if (outcome.secondary) text += QLatin1Char(' ') + line(*outcome.secondary);
    text += QLatin1Char(' ') + Speech::tr("Duration: %1 s.").arg(theme::qstring(format(outcome.duration, 2)));
    return text;
}

QString spokenStageStatus(const BenchmarkStore& store) {
    const auto running = store.runningID();
    if (!running) return {};
    if (!store.cooldownText().isEmpty()) return store.cooldownText();
    const QString status = theme::uiText(liveStatusLine(*running, std::max(0.0, store.currentRunElapsed())));
    return store.passText().isEmpty() ? status : Speech::tr("%1, %2").arg(store.passText(), status);
}

QString spokenProgressDetail(const BenchmarkStore& store) {
    if (!store.runningID()) return {};
    const QString elapsed = elapsedText(store.currentRunElapsed(), store.currentRunTargetSeconds());
    const QString rate = liveMetricText(store.liveProgress(), store.visualLiveStats());
    return rate.isEmpty() ? elapsed : Speech::tr("%1, %2").arg(elapsed, rate);
}

int progressPercent(const BenchmarkStore& store) {
    return std::clamp(static_cast<int>(std::floor(store.currentRunProgress() * 100)), 0, 100);
}

QString spokenRunState(const BenchmarkStore& store) {
    const auto running = store.runningID();
    if (!store.cooldownText().isEmpty())
        return Speech::tr("Cooling down before %1")
            .arg(theme::qstring(title(nextInRun(store).value_or(running.value_or(store.selectedID())))));
    if (running)
        return Speech::tr("Running %1, %2")
            .arg(theme::qstring(title(*running)),
                 elapsedText(store.currentRunElapsed(), store.currentRunTargetSeconds()));
    return store.busy() ? Speech::tr("Preparing") : Speech::tr("Ready");
}

QString spokenSystem(const BenchmarkStore& store, const SystemPanel& panel) {
    QStringList parts;
    for (const SystemRow& row : panel.rows())
        parts << Speech::tr("%1: %2").arg(theme::qstring(row.label), theme::qstring(row.value));
    if (parts.isEmpty()) parts << Speech::tr("Reading system facts");
    const TemperatureSnapshot temperatures = store.temperatureSnapshot();
    parts << Speech::tr("CPU %1").arg(theme::qstring(temperatureText(temperatures.cpuCelsius)))
          << Speech::tr("GPU %1").arg(theme::qstring(temperatureText(temperatures.gpuCelsius)));
    return parts.join(QStringLiteral(". ")) + QLatin1Char('.');
}

QString spokenGlobalScore(const BenchmarkStore& store) {
    return Speech::tr("%1, %2 of %3 complete")
        .arg(points(store.totalScore()))
        .arg(store.completedCount())
        .arg(kBenchmarkCount);
}

QString spokenRunSummary(const BenchmarkStore& store) {
    const auto summary = store.runSummary();
    if (!summary) return {};
    QStringList parts{
        Speech::tr("%1. Total score %2").arg(theme::qstring(summary->title), totalScoreText(*summary)),
        Speech::tr("%1 of %2 completed").arg(summary->completed).arg(summary->total),
        Speech::tr("%1 skipped, %2 failed").arg(summary->skipped).arg(summary->failed),
        Speech::tr("elapsed %1").arg(durationText(summary->duration)),
    };
    if (summary->peakCPU)
        parts << Speech::tr("peak CPU %1").arg(theme::qstring(temperatureText(summary->peakCPU)));
    if (summary->peakGPU)
        parts << Speech::tr("peak GPU %1").arg(theme::qstring(temperatureText(summary->peakGPU)));
    for (const std::string& badge : store.runCondition().badges)
        parts << theme::qstring(badge);
    return parts.join(QStringLiteral(", ")) + QLatin1Char('.');
}

QString spokenTrend(const TrendView& view) {
    // As the view draws: nothing but the note until some benchmark has two runs, then every
    // benchmark with a run.
    const auto& all = view.series();
    if (std::none_of(all.begin(), all.end(), [](const TrendSeries& s) { return s.points.size() > 1; }))
        return view.emptyText();
    QStringList lines;
    if (!view.caption().isEmpty()) lines << view.caption();
    for (const TrendSeries& series : all) {
        const auto score = [](const TrendPoint& point) { return theme::qstring(scoreText(point.score)); };
        if (series.points.size() == 1)
            lines << Speech::tr("%1: one run, %2 points").arg(series.title, score(series.points.front()));
        else if (series.points.size() > 1)
            lines << Speech::tr("%1: %2 runs, from %3 to %4 points")
                         .arg(series.title)
                         .arg(series.points.size())
                         .arg(score(series.points.front()), score(series.points.back()));
    }
    return lines.join(QStringLiteral(". "));
}

QString spokenComparison(const ComparisonTable& table) {
    if (table.rows.empty()) return table.emptyText;
    QStringList lines{table.beforeLabel, table.afterLabel};
    for (const ComparisonTable::Row& row : table.rows)
        lines << Speech::tr("%1: %2 then %3, %4 %5, %6")
                     .arg(row.title, row.before, row.after, row.change, row.band,
                          theme::qstring(verdictText(row.verdict)));
    lines << table.warnings;
    return lines.join(QStringLiteral(". "));
}

} // namespace quarbel::ui
