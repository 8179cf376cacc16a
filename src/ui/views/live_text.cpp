#include "ui/views/live_text.h"

#include "model/number_format.h"
#include "ui/views/theme.h"

namespace quarbel::ui {

QString elapsedText(double elapsedSeconds, double targetSeconds) {
    return QStringLiteral("%1 / %2 s")
        .arg(theme::qstring(format(std::max(elapsedSeconds, 0.0), 1)))
        .arg(theme::qstring(format(targetSeconds, 0)));
}

QString liveMetricText(const LiveProgress& progress, const OptionalVisualLiveStats& visual) {
    if (visual && visual->frames > 0) {
        return QStringLiteral("%1 FPS average, %2 min, %3 max, %4 frames")
            .arg(theme::qstring(format(visual->averageFPS, 1)))
            .arg(theme::qstring(format(visual->minFPS, 1)))
            .arg(theme::qstring(format(visual->maxFPS, 1)))
            .arg(visual->frames);
    }
    if (progress.unit.empty() || progress.elapsedSeconds <= 0) return {};
    const double rate = static_cast<double>(progress.unitsDone) / progress.elapsedSeconds;
    if (progress.unit == "bytes")
        return theme::qstring(format(rate / 1048576.0, 1)) + QStringLiteral(" MB/s");
    return theme::qstring(format(rate, rate < 100 ? 2 : 1)) + QLatin1Char(' ') +
           theme::qstring(progress.unit) + QStringLiteral("/s");
}

} // namespace quarbel::ui
