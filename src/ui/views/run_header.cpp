// SPDX-License-Identifier: Apache-2.0
#include "ui/views/run_header.h"

#include "model/number_format.h"
#include "run/benchmark_store.h"
#include "ui/views/live_text.h"
#include "ui/views/theme.h"
#include "ui/views/toggle_switch.h"

#include <QHBoxLayout>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>

namespace quarbel::ui {
namespace {

constexpr int kControlsHeight = 52;

QPushButton* makeButton(const QString& text, const QString& objectName, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    // Return and Enter press a focused button, as Space does (outside dialogs Qt leaves them
    // to auto-default buttons only).
    button->setAutoDefault(true);
    button->setObjectName(objectName);
    button->setCursor(Qt::PointingHandCursor);
    button->setMinimumWidth(76);
    return button;
}

} // namespace

std::optional<BenchmarkID> nextInRun(const BenchmarkStore& store) {
    const std::vector<BenchmarkID>& ids = store.runIDs();
    const std::size_t ended = store.endedInRun().size();
    if (!store.busy() || ended >= ids.size()) return std::nullopt;
    return ids[ended];
}

RunHeader::RunHeader(BenchmarkStore& store, QWidget* parent)
    : QWidget(parent), store_(store), run_(makeButton(tr("Run"), QStringLiteral("primaryButton"), this)),
      all_(makeButton(tr("All"), QStringLiteral("secondaryButton"), this)),
      stop_(makeButton(tr("Stop"), QStringLiteral("stopButton"), this)),
      accuracy_(new ToggleSwitch(tr("Accuracy Mode"), this)), quick_(new ToggleSwitch(tr("Quick"), this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedHeight(kControlsHeight + 92);
    run_->setToolTip(tr("Run the selected benchmark"));
    all_->setToolTip(tr("Run all thirteen benchmarks"));
    stop_->setToolTip(tr("Stop the active run"));
    accuracy_->setToolTip(
        tr("Run each benchmark three times and keep the median (takes effect at the next start)"));
    quick_->setToolTip(tr("A tenth of every time budget, for a fast check; quick results are marked and "
                          "compare with quick runs only (takes effect at the next start)"));

    auto* controls = new QHBoxLayout;
    controls->setContentsMargins(0, 0, 0, 0);
    controls->setSpacing(8);
    controls->addWidget(run_);
    controls->addWidget(all_);
    controls->addWidget(stop_);
    controls->addSpacing(14);
    controls->addWidget(accuracy_);
    controls->addSpacing(6);
    controls->addWidget(quick_);
    controls->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 12, 18, 0);
    layout->addLayout(controls);
    layout->addStretch(1);

    connect(run_, &QPushButton::clicked, &store_, &BenchmarkStore::runSelected);
    connect(all_, &QPushButton::clicked, &store_, &BenchmarkStore::runAll);
    connect(stop_, &QPushButton::clicked, &store_, &BenchmarkStore::stop);
    connect(accuracy_, &QAbstractButton::toggled, &store_, &BenchmarkStore::setAccuracyMode);
    connect(quick_, &QAbstractButton::toggled, &store_, &BenchmarkStore::setQuickMode);
    connect(&store_, &BenchmarkStore::busyChanged, this, &RunHeader::updateControls);
    connect(&store_, &BenchmarkStore::accuracyModeChanged, this, &RunHeader::updateControls);
    connect(&store_, &BenchmarkStore::quickModeChanged, this, &RunHeader::updateControls);
    // The status area changes with the clock and the live rate; nothing else repaints.
    for (auto signal : {&BenchmarkStore::currentRunTickChanged, &BenchmarkStore::runningIDChanged,
                        &BenchmarkStore::liveProgressChanged, &BenchmarkStore::visualLiveStatsChanged,
                        &BenchmarkStore::currentRunTargetSecondsChanged, &BenchmarkStore::selectedIDChanged,
                        &BenchmarkStore::concurrentRunsChanged, &BenchmarkStore::cooldownTextChanged})
        connect(&store_, signal, this, [this] { update(statusRect()); });
    updateControls();
}

void RunHeader::updateControls() {
    const bool busy = store_.busy();
    run_->setEnabled(!busy);
    all_->setEnabled(!busy);
    stop_->setEnabled(busy);
    // The switches may change during a run: they take effect at the next start.
    for (const auto& [button, on] :
         {std::pair{accuracy_, store_.accuracyMode()}, {quick_, store_.quickMode()}}) {
        const QSignalBlocker blocker(button);
        button->setChecked(on);
        button->update();
    }
    update(statusRect());
}

QRect RunHeader::statusRect() const { return rect().adjusted(18, kControlsHeight + 4, -18, -10); }

void RunHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    update();
}

void RunHeader::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::background());
    painter.setPen(theme::border());
    painter.drawLine(0, height() - 1, width(), height() - 1);

    const QRectF area = statusRect();
    // While the run waits for the machine to cool, the benchmark that ended stays the running
    // one until the next starts: the header names the next one and the wait instead.
    const bool cooling = store_.busy() && !store_.cooldownText().isEmpty();
    const auto running = cooling ? std::nullopt : store_.runningID();
    const BenchmarkID shown =
        running.value_or(cooling ? nextInRun(store_).value_or(store_.selectedID()) : store_.selectedID());
    const QColor accent = theme::accent(category(shown));

    painter.setFont(theme::font(12, QFont::DemiBold));
    painter.setPen(running || cooling ? accent : theme::muted());
    const QString state = cooling   ? tr("COOLING DOWN BEFORE")
                          : running ? tr("RUNNING")
                                    : (store_.busy() ? tr("PREPARING") : tr("READY"));
    painter.drawText(QRectF(area.left(), area.top(), area.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
                     state);
    const bool quick = store_.runIsQuick();
    if (quick) {
        // Quick scores are not comparable with full ones: the mark stays in sight.
        const QString mark = tr("QUICK");
        const qreal left = area.left() + painter.fontMetrics().horizontalAdvance(state) + 10;
        theme::drawPill(painter, QRectF(left, area.top() - 1, theme::pillWidth(mark, 18), 18), mark,
                        theme::stateColor(TestRunState::skipped));
    }
    painter.setFont(theme::font(20, QFont::Bold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left(), area.top() + 16, area.width() * 0.6, 28),
                     Qt::AlignLeft | Qt::AlignVCenter, theme::uiText(title(shown)));

    if (cooling) {
        painter.setFont(theme::font(15, QFont::DemiBold));
        painter.setPen(theme::text());
        painter.drawText(QRectF(area.left() + area.width() * 0.4, area.top() + 16, area.width() * 0.6, 28),
                         Qt::AlignRight | Qt::AlignVCenter, store_.cooldownText());
        painter.setFont(theme::font(12.5));
        painter.setPen(theme::muted());
        painter.drawText(
            QRectF(area.left(), area.top() + 50, area.width(), 18), Qt::AlignLeft | Qt::AlignVCenter,
            painter.fontMetrics().elidedText(
                tr("Waiting for the machine to cool before the next benchmark; Stop ends the wait."),
                Qt::ElideRight, int(area.width())));
        return;
    }
    if (!running) {
        painter.setFont(theme::font(13));
        painter.setPen(theme::secondary());
        painter.drawText(QRectF(area.left() + area.width() * 0.4, area.top() + 16, area.width() * 0.6, 28),
                         Qt::AlignRight | Qt::AlignVCenter,
                         quick ? tr("Target %1 s per pass (quick)")
                                     .arg(theme::qstring(
                                         format(targetSeconds(shown) * BenchmarkStore::kQuickBudgetScale, 1)))
                               : tr("Target %1 s per pass").arg(targetSeconds(shown)));
        painter.setFont(theme::font(12.5));
        painter.setPen(theme::muted());
        QString line =
            tr("Run measures the selected benchmark; All runs the whole suite of thirteen (a few minutes).");
        // A run that waits for another Quarbel run says so here until it starts.
        if (store_.busy() && !store_.concurrentRuns().isEmpty()) {
            painter.setFont(theme::font(12.5, QFont::DemiBold));
            painter.setPen(theme::stateColor(TestRunState::skipped));
            line = store_.concurrentRuns();
        }
        painter.drawText(QRectF(area.left(), area.top() + 50, area.width(), 18),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(line, Qt::ElideRight, int(area.width())));
        return;
    }
    painter.setFont(theme::font(15, QFont::DemiBold));
    painter.setPen(theme::text());
    painter.drawText(QRectF(area.left() + area.width() * 0.4, area.top() + 16, area.width() * 0.6, 28),
                     Qt::AlignRight | Qt::AlignVCenter,
                     elapsedText(store_.currentRunElapsed(), store_.currentRunTargetSeconds()));
    theme::drawProgressBar(painter, QRectF(area.left(), area.top() + 50, area.width(), 6),
                           store_.currentRunProgress(), accent);
    // The live rate sits under the bar, right-aligned, so that it never covers the title.
    const QString metric = liveMetricText(store_.liveProgress(), store_.visualLiveStats());
    painter.setFont(theme::font(12));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(area.left(), area.top() + 56, area.width(), 16),
                     Qt::AlignRight | Qt::AlignVCenter, metric);
    // Another Quarbel run on this machine skews this one: said where the eye already is.
    if (!store_.concurrentRuns().isEmpty()) {
        painter.setFont(theme::font(12, QFont::DemiBold));
        painter.setPen(theme::stateColor(TestRunState::skipped));
        const qreal width = area.width() - painter.fontMetrics().horizontalAdvance(metric) - 16;
        painter.drawText(
            QRectF(area.left(), area.top() + 56, width, 16), Qt::AlignLeft | Qt::AlignVCenter,
            painter.fontMetrics().elidedText(store_.concurrentRuns(), Qt::ElideRight, int(width)));
    }
}

} // namespace quarbel::ui
