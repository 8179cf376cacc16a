// SPDX-License-Identifier: Apache-2.0
#include "app/help_window.h"

#include <QCoreApplication>
#include <QFont>
#include <QLabel>
#include <QVBoxLayout>

namespace quarbel::app {

const std::array<HelpSection, 10>& helpSections() {
    static const std::array<HelpSection, 10> sections{{
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "What Quarbel Does"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "Quarbel measures sustained performance across CPU, memory, storage, RAW "
             "processing, GPU compute, and a real-time GPU scene drawn with Vulkan. Results are "
             "Quarbel scores and throughput measurements intended for comparing the same "
             "machine across changes or comparing machines under similar conditions.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Running Tests"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "Select a benchmark in the sidebar and press Run to test only that item. Press All "
             "to run the complete suite. The selected test remains selected when running a "
             "single item. Press Stop to cancel the active run.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Accuracy Mode"),
         QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView",
                           "Accuracy Mode is optional. When enabled before starting a run, Quarbel executes "
                           "each selected benchmark three times and reports the median result with pass "
                           "scores and spread in the result details. It takes longer, but it is better for "
                           "careful comparisons between machines or hardware changes.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Live Status"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "While a test is running, the main window shows the active workload, elapsed time, target "
             "duration, "
             "progress, and live metrics when available. CPU, memory, and SSD tests show an inline technical "
             "stage with a growing progress bar and real-time test text. Render, GPU, and RAW tests use "
             "separate "
             "visual benchmark windows; GPU Visual Tour is the measured Vulkan scene, rendered at 960 x 540 "
             "pixels whatever the display's scale.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Temperature Readouts"),
         QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView",
                           "CPU and GPU temperatures are read from the kernel's hardware monitors "
                           "(/sys/class/hwmon: k10temp "
                           "or coretemp for the processor, amdgpu, nouveau or the GPU driver's own for "
                           "graphics) and from its "
                           "thermal zones. Where the machine exposes none, as most virtual machines do, "
                           "Quarbel shows them as "
                           "unavailable instead of using estimates or external helpers.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Storage Results"),
         QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView",
                           "Sequential SSD results show large-block file Read and Write throughput in MB/s "
                           "or GB/s. Real Speed uses low-level uncached sequential I/O for volume "
                           "throughput. Random storage results show 4K read and write IOPS. Temporary files "
                           "are created only for the duration of each test and are removed afterward.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Final Summary"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "When a selected test or full suite finishes, Quarbel shows a compact summary with total score, "
             "completed tests, elapsed time, and peak CPU/GPU temperatures recorded during the run.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Result Cards"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "After a benchmark finishes, use Save Result Card to export a detailed PNG for that "
             "test. After a run summary appears, Save Result Card exports a global PNG with the "
             "total score, processor, graphics, memory, operating system, every benchmark result, status, "
             "main measurements, duration, and temperature readouts when available.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Privacy and Safety"),
         QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView",
                           "Quarbel does not collect analytics, send benchmark results, install background "
                           "services, add login "
                           "items, modify system settings, or require command-line tools at runtime. The "
                           "only network-related "
                           "actions are user-triggered Donate and Email Donation Link commands, which open "
                           "the system browser "
                           "or mail app.")},
        {QT_TRANSLATE_NOOP("quarbel::app::QuarbelHelpView", "Quit"),
         QT_TRANSLATE_NOOP(
             "quarbel::app::QuarbelHelpView",
             "Use Quarbel > Quit Quarbel or Ctrl+Q to quit. Active benchmark windows are closed and "
             "the app does not intentionally remain running in the background.")},
    }};
    return sections;
}

namespace {

QLabel* makeLabel(const QString& text, qreal pointScale, QFont::Weight weight, const QColor& colour) {
    QLabel* label = makeTextLabel(text, pointScale, weight, colour);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

QuarbelHelpView::QuarbelHelpView(QWidget* parent) : QScrollArea(parent) {
    setWindowTitle(tr("Quarbel Help"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(28, 24, 28, 28);
    layout->setSpacing(6);
    layout->addWidget(makeLabel(tr("Quarbel Help"), 1.8, QFont::Bold, kPrimaryText));
    for (const HelpSection& section : helpSections()) {
        layout->addSpacing(12);
        layout->addWidget(makeLabel(tr(section.title), 1.15, QFont::DemiBold, kPrimaryText));
        layout->addWidget(makeLabel(tr(section.text), 1.1, QFont::Normal, kSecondaryText));
    }
    layout->addStretch(1);
    setWidget(column);
    applyDarkPalette(*this);
    applyDarkPalette(*column);
    resize(620, 720);
}

QuarbelHelpWindowController::QuarbelHelpWindowController()
    : SharedWindowController([] { return std::make_unique<QuarbelHelpView>(); }) {}

} // namespace quarbel::app
