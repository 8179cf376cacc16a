// SPDX-License-Identifier: Apache-2.0
// The window itself: its layout, which run is selected and compared with which, and its status
// line. How a run is named, what its tables hold and how it is saved again live beside it
// (history_run_text, history_tables, history_saving).
#include "app/history_window.h"

#include "app/history_saving.h"
#include "results/json_report.h"
#include "results/reference_results.h"
#include "results/regular_file.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace quarbel::app {
namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

// The history's own labels and list; buttons, boxes and dialogs as in every Quarbel window.
constexpr const char* kStyle = R"(
QLabel#historyStatus { color: #a4a7b0; }
QLabel#runHeading { color: #e8e8ea; }
QLabel#qt_msgbox_informativelabel { min-width: 380px; }
QTreeView, QListView { color: #e8e8ea; background: #0d0f12; border: 1px solid #2a2d35; border-radius: 5px; }
QHeaderView, QHeaderView::section { color: #a4a7b0; background: #15171c; border: none; padding: 4px 6px; }
QListWidget { background: #16181d; border: 1px solid #2a2d35; border-radius: 6px; outline: 0; }
QListWidget::item { padding: 8px; color: #e8e9ed; border-bottom: 1px solid #22252c; }
QListWidget::item:selected { background: #243042; }
)";

} // namespace

HistoryView::HistoryView(std::string directory, QWidget* parent)
    : QWidget(parent), directory_(std::move(directory)), status_(new QLabel(this)),
      list_(new QListWidget(this)), runHeading_(new QLabel(this)),
      comparisonTab_(new QPushButton(tr("Comparison"))), resultsTab_(new QPushButton(tr("Results"))),
      trendTab_(new QPushButton(tr("Trend"))), saveCards_(new QPushButton(tr("Save Result Cards…"))),
      saveReport_(new QPushButton(tr("Save JSON Report…"))), pages_(new QStackedWidget),
      baseline_(new QComboBox), comparison_(new ui::ComparisonView), results_(new ui::RunResultsView),
      trend_(new ui::TrendView) {
    setWindowTitle(tr("Quarbel - Run History"));
    resize(1160, 700);
    applyDarkPalette(*this);
    setStyleSheet(styleSheet() + darkControlsStyle() + QString::fromLatin1(kStyle));
    auto* heading = makeTextLabel(tr("Run History"), 1.5, QFont::Bold, kPrimaryText);
    status_->setObjectName(QStringLiteral("historyStatus"));
    status_->setWordWrap(true);
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Three lines a run, each elided rather than wrapped: a wrapped line would push the
    // score out of a row whose height was worked out before the scroll bar took its room.
    list_->setWordWrap(false);
    list_->setTextElideMode(Qt::ElideRight);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setMinimumWidth(300);
    list_->setMaximumWidth(350);
    QFont headingFont = runHeading_->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.15);
    headingFont.setWeight(QFont::DemiBold);
    runHeading_->setFont(headingFont);
    runHeading_->setWordWrap(true);
    runHeading_->setObjectName(QStringLiteral("runHeading"));

    // Three pages for the selected run: compared with another, its own results, and the trend
    // of its benchmarks over the history.
    for (QPushButton* tab : {comparisonTab_, resultsTab_, trendTab_})
        tab->setCheckable(true);
    auto* tabs = new QButtonGroup(this);
    tabs->addButton(comparisonTab_);
    tabs->addButton(resultsTab_);
    tabs->addButton(trendTab_);
    comparisonTab_->setChecked(true);
    comparisonTab_->setToolTip(tr("Compare the selected run with an earlier one"));
    resultsTab_->setToolTip(tr("Open the selected run's results (read only)"));
    trendTab_->setToolTip(
        tr("Each benchmark of the selected run over the history's runs of the same length"));
    saveCards_->setToolTip(
        tr("Save the global card and a card per benchmark of the selected run as PNG files"));
    saveReport_->setToolTip(tr("Save the selected run's JSON report"));
    const auto scrolling = [](QWidget* content) {
        auto* scroll = new QScrollArea;
        scroll->setWidget(content);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        return scroll;
    };
    auto* comparisonPage = new QWidget;
    auto* chooser = new QHBoxLayout;
    chooser->addWidget(makeTextLabel(tr("Compared with"), 1, QFont::Normal, kSecondaryText));
    chooser->addWidget(baseline_, 1);
    // A history holds thousands of runs: the chooser and the list size themselves without
    // measuring every line.
    baseline_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    baseline_->setMinimumContentsLength(40);
    if (auto* popup = qobject_cast<QListView*>(baseline_->view())) popup->setUniformItemSizes(true);
    list_->setUniformItemSizes(true);
    auto* comparisonColumn = new QVBoxLayout(comparisonPage);
    comparisonColumn->setContentsMargins(0, 0, 0, 0);
    comparisonColumn->addLayout(chooser);
    comparisonColumn->addWidget(scrolling(comparison_), 1);
    pages_->addWidget(comparisonPage);
    pages_->addWidget(scrolling(results_));
    pages_->addWidget(scrolling(trend_));

    auto* actions = new QHBoxLayout;
    actions->setSpacing(6);
    actions->addWidget(comparisonTab_);
    actions->addWidget(resultsTab_);
    actions->addWidget(trendTab_);
    actions->addStretch(1);
    actions->addWidget(saveCards_);
    actions->addWidget(saveReport_);
    auto* right = new QVBoxLayout;
    right->addWidget(runHeading_);
    right->addLayout(actions);
    right->addWidget(pages_, 1);

    auto* body = new QHBoxLayout;
    body->setSpacing(16);
    body->addWidget(list_);
    body->addLayout(right, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 16, 20, 16);
    column->addWidget(heading);
    column->addWidget(status_);
    column->addLayout(body, 1);

    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        userChoseRun_ = true;
        selectRun(row);
    });
    connect(list_, &QListWidget::itemActivated, this, [this] { showPage(1); });
    connect(baseline_, &QComboBox::currentIndexChanged, this, &HistoryView::showComparison);
    connect(comparisonTab_, &QPushButton::clicked, this, [this] { showPage(0); });
    connect(resultsTab_, &QPushButton::clicked, this, [this] { showPage(1); });
    connect(trendTab_, &QPushButton::clicked, this, [this] { showPage(2); });
    connect(saveCards_, &QPushButton::clicked, this, &HistoryView::chooseCardsFolder);
    connect(saveReport_, &QPushButton::clicked, this, &HistoryView::chooseReportFile);
}

void HistoryView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    reload();
}

bool HistoryView::showingResults() const { return pages_->currentIndex() == 1; }

QString HistoryView::statusText() const { return status_->text(); }

void HistoryView::reload() {
    const std::string chosen =
        userChoseRun_ && selected_ >= 0 && std::size_t(selected_) < history_.runs.size()
            ? history_.runs[std::size_t(selected_)].path
            : std::string();
    history_ = listHistory(directory_);
    int row = int(newestCompleteRun(history_.runs).value_or(0));
    list_->blockSignals(true);
    list_->clear();
    for (std::size_t i = 0; i < history_.runs.size(); ++i) {
        const SavedRun& run = history_.runs[i];
        auto* item = new QListWidgetItem(startedText(run) + QLatin1Char('\n') + benchmarksText(run) +
                                             QLatin1Char('\n') + outcomeText(run),
                                         list_);
        QStringList titles;
        for (const SavedResult& result : run.results)
            titles << titleText(result.title);
        item->setToolTip(titles.join(QLatin1Char('\n')));
        if (!chosen.empty() && run.path == chosen) row = int(i);
    }
    if (!history_.runs.empty()) list_->setCurrentRow(row);
    list_->blockSignals(false);
    baseline_->blockSignals(true);
    baseline_->clear();
    for (const SavedRun& run : history_.runs)
        baseline_->addItem(startedText(run) + QStringLiteral(" \u00B7 ") + benchmarksText(run) +
                           QStringLiteral(" \u00B7 ") + outcomeText(run));
    // Known machines after this one's own runs: placing a run among them needs no network.
    references_.clear();
    for (KnownMachine& reference : readReferences()) {
        // A reference from another version says so, and is judged only where that version
        // scores alike.
        const bool otherVersion = reference.run.version != QUARBEL_VERSION;
        baseline_->addItem(
            tr("Reference: %1 \u00B7 %2%3%4")
                .arg(q(reference.name), q(reference.run.machine),
                     reference.gpu.empty() ? QString() : QStringLiteral(" \u00B7 ") + q(reference.gpu),
                     otherVersion ? tr(" \u00B7 Quarbel %1").arg(q(reference.run.version)) : QString()));
        references_.push_back(std::move(reference.run));
    }
    baseline_->blockSignals(false);
    selected_ = -1;
    selectRun(history_.runs.empty() ? -1 : row);
}

void HistoryView::compareNewestWith(const std::string& referenceName) {
    if (history_.runs.empty()) return;
    list_->setCurrentRow(0);
    if (!referenceName.empty()) {
        const std::string path = findReference(referenceName).path;
        for (std::size_t i = 0; i < references_.size(); ++i)
            if (!path.empty() && references_[i].path == path)
                baseline_->setCurrentIndex(int(history_.runs.size() + i));
    }
    showPage(0);
}

void HistoryView::selectRun(int row) {
    const int previousSelection = selected_;
    selected_ = row;
    const bool exists = row >= 0 && std::size_t(row) < history_.runs.size();
    selectedText_.clear();
    std::optional<RunReport> report;
    QString problem = tr("Run a benchmark to start the history.");
    if (exists) {
        const SavedRun& run = history_.runs[std::size_t(row)];
        runHeading_->setText(benchmarksText(run) + QStringLiteral("  \u00B7  ") + startedText(run));
        FileText file = readRegularFile(run.path, kLargestReportBytes);
        selectedText_ = std::move(file.text);
        auto parsed = file.problem.empty() ? parseJsonReport(selectedText_)
                                           : std::variant<RunReport, std::string>(file.problem);
        if (auto* read = std::get_if<RunReport>(&parsed))
            report = std::move(*read);
        else
            problem = tr("%1 cannot be opened: %2").arg(q(run.path), q(std::get<std::string>(parsed)));
    } else {
        runHeading_->setText(tr("No run selected"));
    }
    results_->setReport(std::move(report), problem);
    saveCards_->setEnabled(results_->report().has_value());
    saveReport_->setEnabled(results_->report().has_value());

    // Every other run can be the baseline; the default is the newest complete one before it
    // that shares a benchmark. The chooser lists every run (reload() fills it) and greys out
    // the selected one.
    auto* choices = qobject_cast<QStandardItemModel*>(baseline_->model());
    baseline_->blockSignals(true);
    if (previousSelection >= 0 && previousSelection < choices->rowCount())
        choices->item(previousSelection)->setEnabled(true);
    if (exists) choices->item(row)->setEnabled(false);
    const auto baseline = exists ? baselineRun(history_.runs, std::size_t(row)) : std::nullopt;
    baseline_->setCurrentIndex(baseline ? int(*baseline) : -1);
    baseline_->setEnabled(exists && baseline_->count() > 1);
    baseline_->blockSignals(false);
    showComparison();
    showTrend();
    updateStatus();
}

void HistoryView::showComparison() {
    const int before = baseline_->currentIndex() == selected_ ? -1 : baseline_->currentIndex();
    if (selected_ < 0 || history_.runs.empty()) {
        comparison_->setTable({{}, {}, {}, {}, tr("Run a benchmark to start the history.")});
        return;
    }
    if (before < 0) {
        const QString none =
            history_.runs.size() == 1
                ? tr("This is the only run kept so far. Run the same benchmarks again to see what changed.")
                : tr("No earlier complete run has a benchmark in common with this run, so there is nothing "
                     "to compare it with. Run the same benchmarks again, or choose a run above.");
        comparison_->setTable({{}, {}, {}, {}, none});
        return;
    }
    const std::size_t chosen = std::size_t(before);
    const SavedRun& baseline =
        chosen < history_.runs.size() ? history_.runs[chosen] : references_.at(chosen - history_.runs.size());
    comparison_->setTable(comparisonTable(baseline, history_.runs[std::size_t(selected_)]));
}

void HistoryView::showPage(int page) {
    pages_->setCurrentIndex(page);
    (page == 0 ? comparisonTab_ : page == 1 ? resultsTab_ : trendTab_)->setChecked(true);
}

void HistoryView::showTrend() {
    if (selected_ < 0 || std::size_t(selected_) >= history_.runs.size()) {
        trend_->setSeries({}, {}, tr("Run a benchmark to start the history."));
        return;
    }
    const SavedRun& run = history_.runs[std::size_t(selected_)];
    trend_->setSeries(
        trendSeries(history_.runs, std::size_t(selected_)),
        run.quick ? tr("Quick runs of the history, oldest on the left; the selected run is ringed.")
                  : tr("Full runs of the history, oldest on the left; the selected run is ringed."),
        tr("A trend needs the same benchmarks in two runs of the same length. Run them again."));
}

void HistoryView::updateStatus() {
    QString status = history_.runs.empty()
                         ? tr("No runs kept yet. Every run you make is kept in %1.").arg(q(directory_))
                         : (history_.runs.size() == 1
                                ? tr("1 run kept in %1.").arg(q(directory_))
                                : tr("%1 runs kept in %2.").arg(history_.runs.size()).arg(q(directory_))) +
                               QLatin1Char(' ') +
                               tr("Select one to compare it with an earlier run or to open its results.");
    for (const auto& warning : history_.warnings)
        status += QLatin1Char('\n') + q(warning);
    if (!lastSave_.isEmpty()) status += QLatin1Char('\n') + lastSave_;
    status_->setText(status);
}

bool HistoryView::finishSave(const HistorySave& save) {
    if (!save.ok()) {
        showSaveProblem(this, save.failed, save.reason);
        return false;
    }
    lastSave_ = save.done;
    updateStatus();
    return true;
}

bool HistoryView::saveCards(const QString& directory) {
    const auto& report = results_->report();
    if (!report || !finishSave(saveRunCards(*report, directory))) return false;
    cardsFolder_ = directory;
    return true;
}

bool HistoryView::saveReport(const QString& path) {
    return results_->report() && finishSave(saveRunReport(selectedText_, path));
}

void HistoryView::chooseCardsFolder() {
    QFileDialog* dialog = cardsFolderDialog(this, cardsFolder_);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& folder) { saveCards(folder); });
    dialog->show();
}

void HistoryView::chooseReportFile() {
    if (selected_ < 0) return;
    QFileDialog* dialog =
        reportFileDialog(this, cardsFolder_, history_.runs[std::size_t(selected_)].startedAt);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { saveReport(path); });
    dialog->show();
}

HistoryWindowController::HistoryWindowController(std::string directory)
    : SharedWindowController([directory] { return std::make_unique<HistoryView>(directory); }) {}

void HistoryWindowController::reload() {
    if (auto* view = qobject_cast<HistoryView*>(window()); view && view->isVisible()) view->reload();
}

void HistoryWindowController::compareNewestWith(const std::string& referenceName) {
    showWindow();
    if (auto* view = qobject_cast<HistoryView*>(window())) view->compareNewestWith(referenceName);
}

} // namespace quarbel::app
