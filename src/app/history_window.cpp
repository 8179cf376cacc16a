#include "app/history_window.h"

#include "model/outcome.h"
#include "results/run_comparison.h"
#include "ui/views/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QScrollArea>
#include <QVBoxLayout>

#include <cstdio>

namespace quarbel::app {
namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

QString listText(const SavedRun& run) {
    QString text = q(run.startedAt).replace('T', ' ').remove('Z') + QStringLiteral(" UTC\n") + q(run.title) +
                   QStringLiteral(" · ") + q(scoreText(run.globalScore)) + QStringLiteral(" pts");
    if (run.quick) text += QStringLiteral(" · quick");
    if (run.mode == "accuracy") text += QStringLiteral(" · Accuracy Mode");
    return text;
}

QString label(char letter, const SavedRun& run) {
    return QStringLiteral("%1: %2 UTC, %3%4%5")
        .arg(QChar(letter), q(run.startedAt).replace('T', ' ').remove('Z'), q(run.title),
             run.quick ? QStringLiteral(", quick") : QString(),
             run.version.empty() ? QString() : QStringLiteral(", Quarbel ") + q(run.version));
}

} // namespace

ui::ComparisonTable comparisonTable(const SavedRun& before, const SavedRun& after) {
    const RunComparison comparison = compareRuns(before, after);
    ui::ComparisonTable table;
    table.beforeLabel = label('A', before);
    table.afterLabel = label('B', after);
    for (const auto& row : comparison.rows) {
        const auto score = [](double value) { return value > 0 ? q(scoreText(value)) : QStringLiteral("-"); };
        char ratio[16] = "-", band[24];
        if (row.compared.ratio) std::snprintf(ratio, sizeof ratio, "%.3f", *row.compared.ratio);
        std::snprintf(band, sizeof band, "±%.1f %%", row.compared.bandPercent);
        table.rows.push_back({q(row.title), score(row.before), score(row.after), QString::fromUtf8(ratio),
                              QString::fromUtf8(band), row.compared.verdict});
    }
    for (const auto& warning : comparison.warnings)
        table.warnings << q(warning);
    table.emptyText = QObject::tr("The two runs have no benchmark in common.");
    return table;
}

HistoryView::HistoryView(std::string directory, QWidget* parent)
    : QWidget(parent), directory_(std::move(directory)), status_(new QLabel(this)),
      list_(new QListWidget(this)), comparison_(new ui::ComparisonView) {
    setWindowTitle(tr("Quarbel - Run History"));
    resize(1080, 620);
    applyDarkPalette(*this);
    auto* heading = makeTextLabel(tr("Run History"), 1.5, QFont::Bold, kPrimaryText);
    status_->setPalette(heading->palette());
    status_->setWordWrap(true);
    list_->setWordWrap(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setMinimumWidth(300);
    list_->setMaximumWidth(360);
    list_->setStyleSheet(QStringLiteral("QListWidget { background: #16181d; border: 1px solid #2a2d35; }"
                                        "QListWidget::item { padding: 8px; color: #e8e9ed; }"
                                        "QListWidget::item:selected { background: #243042; }"));
    auto* scroll = new QScrollArea;
    scroll->setWidget(comparison_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);

    auto* body = new QHBoxLayout;
    body->addWidget(list_);
    body->addWidget(scroll, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 16, 20, 16);
    column->addWidget(heading);
    column->addWidget(status_);
    column->addLayout(body, 1);
    connect(list_, &QListWidget::currentRowChanged, this, &HistoryView::showComparison);
}

void HistoryView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    reload();
}

void HistoryView::reload() {
    const QString selected =
        list_->currentItem() ? list_->currentItem()->data(Qt::UserRole).toString() : QString();
    history_ = listHistory(directory_);
    list_->blockSignals(true);
    list_->clear();
    int selectRow = history_.runs.size() > 1 ? 1 : 0; // the run before the newest, by default
    for (std::size_t i = 0; i < history_.runs.size(); ++i) {
        auto* item = new QListWidgetItem(listText(history_.runs[i]), list_);
        item->setData(Qt::UserRole, q(history_.runs[i].path));
        if (item->data(Qt::UserRole).toString() == selected) selectRow = int(i);
    }
    list_->blockSignals(false);
    QString status =
        history_.runs.empty()
            ? tr("No runs kept yet. Every run you make is kept in %1.").arg(q(directory_))
            : (history_.runs.size() == 1 ? tr("1 run kept in %1.").arg(q(directory_))
                                         : tr("%1 runs kept in %2. Select a run to compare it with "
                                              "the newest.")
                                               .arg(history_.runs.size())
                                               .arg(q(directory_)));
    for (const auto& warning : history_.warnings)
        status += QLatin1Char('\n') + q(warning);
    status_->setText(status);
    if (!history_.runs.empty()) list_->setCurrentRow(selectRow);
    showComparison();
}

void HistoryView::showComparison() {
    const int row = list_->currentRow();
    if (row < 0 || history_.runs.empty()) {
        comparison_->setTable({{}, {}, {}, {}, tr("Run a benchmark to start the history.")});
        return;
    }
    comparison_->setTable(comparisonTable(history_.runs[std::size_t(row)], history_.runs.front()));
}

HistoryWindowController::HistoryWindowController(std::string directory)
    : SharedWindowController([directory] { return std::make_unique<HistoryView>(directory); }) {}

void HistoryWindowController::reload() {
    if (auto* view = qobject_cast<HistoryView*>(window()); view && view->isVisible()) view->reload();
}

} // namespace quarbel::app
