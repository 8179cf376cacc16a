// SPDX-License-Identifier: Apache-2.0
#include "app/history_window.h"

#include "model/outcome.h"
#include "results/json_report.h"
#include "results/reference_results.h"
#include "results/regular_file.h"
#include "results/report_file.h"
#include "results/run_comparison.h"
#include "ui/cards/result_card_exporter.h"
#include "ui/views/theme.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

namespace quarbel::app {
namespace {

namespace Exporter = cards::ResultCardExporter;

QString q(const std::string& text) { return QString::fromStdString(text); }

// "2026-11-23T14:15:02Z" -> "23.11.26 15:15" for a German user: local time, in the user's
// format. A stamp that does not parse is shown as written.
QString startedText(const SavedRun& run) {
    const QDateTime started = QDateTime::fromString(q(run.startedAt), Qt::ISODate);
    return started.isValid() ? QLocale().toString(started.toLocalTime(), QLocale::ShortFormat)
                             : q(run.startedAt);
}

// A benchmark's title as a report keeps it, in the user's language.
QString titleText(const std::string& title) { return ui::theme::uiText(title); }

QString label(char letter, const SavedRun& run) {
    QString text = QStringLiteral("%1: %2 \u00B7 %3 \u00B7 %4")
                       .arg(QChar(letter), startedText(run), benchmarksText(run), outcomeText(run));
    if (!run.version.empty()) text += QStringLiteral(" \u00B7 Quarbel ") + q(run.version);
    return text;
}

// The umask, read without changing it (changing it would race with other threads).
mode_t newFileMode() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask:"))
            return static_cast<mode_t>(0666 & ~std::stoul(line.substr(6), nullptr, 8));
    return 0644;
}

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

void HistoryView::showProblem(const QString& what, const QString& reason) {
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Quarbel"), what, QMessageBox::Ok, this);
    box->setObjectName(QStringLiteral("historySaveError"));
    box->setInformativeText(reason);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    applyDarkPalette(*box);
    box->show();
}

bool HistoryView::saveCards(const QString& directory) {
    const auto& report = results_->report();
    if (!report) return false;
    const QString what = tr("Could not save the result cards");
    const QFileInfo folder(directory);
    if (!folder.isDir()) {
        showProblem(what, tr("%1 is not a folder.").arg(directory));
        return false;
    }
    // A failed save takes back the cards it added, so the folder is as it was.
    const QDir dir(directory);
    const QStringList before = dir.entryList(QDir::Files | QDir::Hidden);
    const Exporter::CardsWritten written = Exporter::writeReportCards(*report, directory);
    if (written.problem) {
        for (const QString& path : written.paths)
            if (!before.contains(QFileInfo(path).fileName())) QFile::remove(path);
        showProblem(what, *written.problem);
        return false;
    }
    cardsFolder_ = directory;
    // Two sentences rather than a numerus form, so that English reads well without a translation.
    lastSave_ = written.paths.size() == 1
                    ? tr("Saved 1 result card in %1.").arg(directory)
                    : tr("Saved %1 result cards in %2.").arg(written.paths.size()).arg(directory);
    updateStatus();
    return true;
}

bool HistoryView::saveReport(const QString& path) {
    if (!results_->report()) return false;
    const QString what = tr("Could not save the report");
    QFileInfo target(path);
    // The file a link leads to is replaced, the link stays; only a plain file is replaced.
    if (target.exists() && !target.isFile()) {
        showProblem(what, tr("%1 is not a regular file.").arg(path));
        return false;
    }
    const QString resolved = target.exists() ? target.canonicalFilePath() : target.absoluteFilePath();
    const ReportWrite write = writeReportFile({false, resolved.toStdString(), newFileMode()}, selectedText_);
    if (!write.problem.empty()) {
        QString reason = q(write.problem);
        if (!write.keptAt.empty())
            reason += QLatin1Char('\n') + tr("A complete copy is kept at %1.").arg(q(write.keptAt));
        showProblem(what, reason);
        return false;
    }
    lastSave_ = tr("Saved the report as %1.").arg(resolved);
    updateStatus();
    return true;
}

void HistoryView::chooseCardsFolder() {
    auto* dialog = new QFileDialog(this, tr("Save Result Cards"));
    dialog->setObjectName(QStringLiteral("historyCardsDialog"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    applyDarkPalette(*dialog);
    dialog->setDirectory(cardsFolder_.isEmpty() ? QDir::homePath() : cardsFolder_);
    dialog->setWindowModality(Qt::NonModal);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& folder) { saveCards(folder); });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->show();
}

void HistoryView::chooseReportFile() {
    if (selected_ < 0) return;
    const SavedRun& run = history_.runs[std::size_t(selected_)];
    QString stamp = q(run.startedAt);
    stamp.remove(':').replace('T', '-').remove('Z');
    auto* dialog = new QFileDialog(this, tr("Save JSON Report"));
    dialog->setObjectName(QStringLiteral("historyReportDialog"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setMimeTypeFilters({QStringLiteral("application/json")});
    dialog->setDefaultSuffix(QStringLiteral("json"));
    dialog->setDirectory(cardsFolder_.isEmpty() ? QDir::homePath() : cardsFolder_);
    dialog->selectFile(QStringLiteral("Quarbel-Report-%1.json").arg(stamp));
    applyDarkPalette(*dialog);
    dialog->setWindowModality(Qt::NonModal);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { saveReport(path); });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
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
