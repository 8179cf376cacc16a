// SPDX-License-Identifier: Apache-2.0
#include "ui/views/result_panel_text.h"

#include "model/number_format.h"
#include "model/stability.h"
#include "results/learned_floors.h"
#include "results/result_statistics.h"
#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QStringList>

namespace quarbel::ui {
namespace {

// An interval wider than this says the score could be almost anything: it is named as such.
constexpr double kWidestUsableIntervalPercent = 25.0;

// What disturbed a noisy result: the share other work and the host took while it ran, and
// the busiest other processes as the run started.
QString noisyText(const BenchmarkEndState& end, const std::optional<MachineCondition>& atStart) {
    // Whole sentences, so that a translation can order their parts as its language needs.
    QString text = QCoreApplication::translate("quarbel::ui::ResultPanel", "Noisy machine");
    if (const auto& interference = end.interference) {
        const QString other = QString::number(interference->otherCpuPercent, 'f', 0);
        text =
            interference->stealPercent >= 1
                ? QCoreApplication::translate("quarbel::ui::ResultPanel",
                                              "Noisy machine: other work took %1 % of the CPU, the host %2 % "
                                              "as steal while it ran")
                      .arg(other, QString::number(interference->stealPercent, 'f', 0))
                : QCoreApplication::translate("quarbel::ui::ResultPanel",
                                              "Noisy machine: other work took %1 % of the CPU while it ran")
                      .arg(other);
    }
    if (atStart && !atStart->busyProcesses.empty()) {
        QStringList names;
        for (const BusyProcess& process : atStart->busyProcesses)
            if (names.size() < 3)
                names << QCoreApplication::translate("quarbel::ui::ResultPanel", "%1 (%2 cores)")
                             .arg(theme::qstring(process.name))
                             .arg(process.cores, 0, 'f', 1);
        text = QCoreApplication::translate("quarbel::ui::ResultPanel", "%1; busy as the run started: %2")
                   .arg(text, names.join(QStringLiteral(", ")));
    }
    return text + QLatin1Char('.');
}

} // namespace

QString resultExplanation(BenchmarkID id) {
    return theme::uiText(runningExplanation(id)) + QStringLiteral("\n\n") +
           QCoreApplication::translate("quarbel::ui::ResultPanel", "Target duration: %1 s per pass.")
               .arg(targetSeconds(id));
}

QString resultIntervalText(const BenchmarkEndState& end) {
    const QString interval = theme::qstring(uncertaintyText(end.uncertainty));
    if (interval.isEmpty()) return {};
    if (end.uncertainty && end.uncertainty->ci95Percent() > kWidestUsableIntervalPercent)
        return QCoreApplication::translate("quarbel::ui::ResultPanel", "%1 (95 %): too wide to compare with")
            .arg(interval);
    if (end.passes > 1)
        return QCoreApplication::translate("quarbel::ui::ResultPanel", "%1 (95 %, %2 passes)")
            .arg(interval)
            .arg(end.passes);
    return QCoreApplication::translate("quarbel::ui::ResultPanel", "%1 (95 % interval)").arg(interval);
}

QString resultDetail(const BenchmarkOutcome& outcome, const BenchmarkEndState& end,
                     const std::optional<MachineCondition>& atStart) {
    QString detail = theme::qstring(outcome.detail);
    if (outcome.status == OutcomeStatus::ok && end.noisy)
        detail += QStringLiteral("\n") + noisyText(end, atStart);
    if (outcome.gpu) detail += QStringLiteral("\n") + theme::qstring(gpuExecutionText(*outcome.gpu));
    if (outcome.status == OutcomeStatus::ok && end.noiseFloor)
        detail += QStringLiteral("\n") + theme::qstring(noiseFloorText(*end.noiseFloor));
    return detail;
}

QString skipAdvice(BenchmarkID id) {
    switch (id) {
    case BenchmarkID::metalVisual:
    case BenchmarkID::metalCompute:
    case BenchmarkID::rawMetalDecode:
        return QCoreApplication::translate(
            "quarbel::ui::ResultPanel",
            "On Linux this benchmark runs on Vulkan. Install a Vulkan driver "
            "(mesa-vulkan-drivers for the CPU fallback, or your GPU vendor's), or "
            "pick another device with QUARBEL_GPU (see `quarbel info`).");
    case BenchmarkID::openCLCompute:
        return QCoreApplication::translate(
            "quarbel::ui::ResultPanel",
            "Install an OpenCL driver (ICD): pocl-opencl-icd for the CPU, or your "
            "GPU vendor's ICD. `clinfo` lists the devices OpenCL can see.");
    default: return {};
    }
}

} // namespace quarbel::ui
