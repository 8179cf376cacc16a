// SPDX-License-Identifier: Apache-2.0
#include "ui/views/main_window.h"

#include "run/benchmark_store.h"
#include "ui/views/log_panel.h"
#include "ui/views/result_panel.h"
#include "ui/views/run_header.h"
#include "ui/views/score_gauge.h"
#include "ui/views/sidebar_footer.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/stage_view.h"
#include "ui/views/summary_panel.h"
#include "ui/views/system_panel.h"
#include "ui/views/theme.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>

namespace quarbel::ui {

QString windowStyleSheet() {
    return QStringLiteral(R"(
QWidget { color: rgba(255,255,255,0.94); font-family: "Inter"; }
QMainWindow, QScrollArea, QScrollArea > QWidget > QWidget { background: #060708; }
QPushButton { background: rgba(255,255,255,0.08); border: 1px solid rgba(255,255,255,0.13);
  border-radius: 8px; padding: 7px 16px; font-size: 13px; font-weight: 600; }
QPushButton:hover { background: rgba(255,255,255,0.14); }
QPushButton:pressed { background: rgba(255,255,255,0.05); }
QPushButton:disabled { color: rgba(255,255,255,0.30); background: rgba(255,255,255,0.04);
  border-color: rgba(255,255,255,0.06); }
QPushButton:focus { outline: none; border: 2px solid rgba(255,255,255,0.85); padding: 6px 15px; }
QPushButton#primaryButton:enabled { background: #21c9e0; color: #061015; border-color: #21c9e0; }
QPushButton#primaryButton:enabled:hover { background: #4dd6e8; }
QPushButton#primaryButton:enabled:focus { border-color: #ffffff; }
QPushButton::menu-indicator { image: none; width: 0; }
QPushButton#stopButton:enabled { background: rgba(245,97,102,0.18); color: #f7868a;
  border-color: rgba(245,97,102,0.45); }
QMenuBar { background: #0d0f12; border-bottom: 1px solid rgba(255,255,255,0.08); }
QMenuBar::item { padding: 5px 10px; background: transparent; }
QMenuBar::item:selected { background: rgba(255,255,255,0.10); border-radius: 4px; }
QMenu { background: #14171b; border: 1px solid rgba(255,255,255,0.12); padding: 4px; }
QMenu::item { padding: 6px 24px 6px 20px; border-radius: 4px; }
QMenu::item:selected { background: rgba(33,201,224,0.25); }
QMenu::item:disabled { color: rgba(255,255,255,0.35); }
QMenu::separator { height: 1px; background: rgba(255,255,255,0.10); margin: 4px 8px; }
QScrollBar:vertical { background: transparent; width: 8px; margin: 2px; }
QScrollBar::handle:vertical { background: rgba(255,255,255,0.16); border-radius: 3px; min-height: 30px; }
QScrollBar::add-line, QScrollBar::sub-line { height: 0; }
QToolTip { background: #1b1f24; color: #eeeeee; border: 1px solid rgba(255,255,255,0.15); padding: 4px; }
)");
}

MainWindow::MainWindow(BenchmarkStore& store, QWidget* parent)
    : QMainWindow(parent), store_(store), sidebar_(new SidebarView(store)), sidebarScroll_(new QScrollArea),
      header_(new RunHeader(store)), centre_(new QStackedWidget), stage_(new StageView(store)),
      result_(new ResultPanel(store)), summary_(new SummaryPanel(store)), gauge_(new ScoreGauge(store)),
      system_(new SystemPanel(store)) {
    setWindowTitle(QStringLiteral("Quarbel"));
    setStyleSheet(windowStyleSheet());
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, theme::background());
    palette.setColor(QPalette::WindowText, theme::text());
    setPalette(palette);
    resize(1200, 820);

    sidebarScroll_->setWidget(sidebar_);
    sidebarScroll_->setFrameShape(QFrame::NoFrame);
    sidebarScroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sidebarScroll_->setFixedWidth(sidebar_->sizeHint().width() + 10);
    auto* sidebarColumn = new QVBoxLayout;
    sidebarColumn->setContentsMargins(0, 8, 0, 0);
    sidebarColumn->setSpacing(0);
    sidebarColumn->addWidget(sidebarScroll_, 1);
    sidebarColumn->addWidget(new SidebarFooter(store));

    centre_->addWidget(result_);
    centre_->addWidget(stage_);
    centre_->setMinimumHeight(270);
    auto* mainColumn = new QWidget;
    auto* mainLayout = new QVBoxLayout(mainColumn);
    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(12);
    mainLayout->addWidget(centre_, 1);
    mainLayout->addWidget(summary_);
    mainColumn_ = mainColumn;

    sideColumn_ = new QWidget;
    sideLayout_ = new QBoxLayout(QBoxLayout::TopToBottom, sideColumn_);
    sideLayout_->setContentsMargins(0, 0, 0, 0);
    sideLayout_->setSpacing(12);
    sideLayout_->addWidget(gauge_, 1);
    sideLayout_->addWidget(system_);

    log_ = new LogPanel(store);
    log_->setFixedHeight(150);
    auto* bodyWidget = new QWidget;
    body_ = new QGridLayout(bodyWidget);
    body_->setContentsMargins(16, 14, 16, 16);
    body_->setSpacing(12);
    // Below the header everything scrolls, so that the smallest window still reaches it all.
    bodyScroll_ = new QScrollArea;
    bodyScroll_->setWidget(bodyWidget);
    bodyScroll_->setWidgetResizable(true);
    bodyScroll_->setFrameShape(QFrame::NoFrame);
    bodyScroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    arrangeBody(true);

    auto* rightSide = new QVBoxLayout;
    rightSide->setContentsMargins(0, 0, 0, 0);
    rightSide->setSpacing(0);
    rightSide->addWidget(header_);
    rightSide->addWidget(bodyScroll_, 1);

    auto* separator = new QFrame;
    separator->setFixedWidth(1);
    separator->setStyleSheet(QStringLiteral("background: rgba(255,255,255,0.09);"));
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(sidebarColumn);
    layout->addWidget(separator);
    layout->addLayout(rightSide, 1);
    setCentralWidget(central);

    // Tab goes from the benchmark list to the run controls, the card buttons and the log;
    // the scroll areas themselves take no focus (they follow the focused widget).
    sidebarScroll_->setFocusPolicy(Qt::NoFocus);
    bodyScroll_->setFocusPolicy(Qt::NoFocus);
    const QList<QWidget*> tabOrder = {sidebar_,
                                      header_->runButton(),
                                      header_->allButton(),
                                      header_->stopButton(),
                                      header_->accuracySwitch(),
                                      header_->quickSwitch(),
                                      result_->saveCardButton(),
                                      summary_->saveCardButton(),
                                      log_->textView()};
    for (qsizetype i = 1; i < tabOrder.size(); ++i)
        setTabOrder(tabOrder[i - 1], tabOrder[i]);
    sidebar_->setFocus();

    connect(&store_, &BenchmarkStore::runningIDChanged, this, &MainWindow::showStageOrResult);
    connect(&store_, &BenchmarkStore::selectedIDChanged, this, &MainWindow::followSelection);
    showStageOrResult();

    // The GPU row asks the Vulkan loader, which can take a moment: the window paints first.
    QPointer<SystemPanel> panel = system_;
    systemFacts_ = std::thread([panel] {
        std::vector<SystemRow> rows = SystemSnapshot::rows();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [panel, rows = std::move(rows)]() mutable {
                if (panel) panel->setRows(std::move(rows));
            },
            Qt::QueuedConnection);
    });
}

MainWindow::~MainWindow() {
    if (systemFacts_.joinable()) systemFacts_.join();
}

void MainWindow::arrangeBody(bool wide) {
    if (wide == wide_) return;
    wide_ = wide;
    for (QWidget* widget : {mainColumn_, sideColumn_, static_cast<QWidget*>(log_)})
        body_->removeWidget(widget);
    if (wide) {
        // Score and system in a column at the right of the result.
        body_->addWidget(mainColumn_, 0, 0);
        body_->addWidget(sideColumn_, 0, 1);
        body_->addWidget(log_, 1, 0, 1, 2);
        body_->setColumnStretch(0, 1);
        body_->setColumnStretch(1, 0);
        sideLayout_->setDirection(QBoxLayout::TopToBottom);
        gauge_->setFixedWidth(320);
        system_->setFixedWidth(320);
        gauge_->setMinimumHeight(220);
    } else {
        // Too narrow for two columns: score and system side by side under the result.
        body_->addWidget(mainColumn_, 0, 0);
        body_->addWidget(sideColumn_, 1, 0);
        body_->addWidget(log_, 2, 0);
        body_->setColumnStretch(1, 0);
        sideLayout_->setDirection(QBoxLayout::LeftToRight);
        for (QWidget* widget : {static_cast<QWidget*>(gauge_), static_cast<QWidget*>(system_)}) {
            widget->setMinimumWidth(0);
            widget->setMaximumWidth(QWIDGETSIZE_MAX);
        }
        gauge_->setMinimumHeight(236);
    }
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    // The body's own width lags behind during a resize; the window's does not.
    arrangeBody(event->size().width() - sidebarScroll_->width() >= 840);
}

void MainWindow::showStageOrResult() {
    centre_->setCurrentWidget(store_.runningID() ? static_cast<QWidget*>(stage_) : result_);
}

void MainWindow::followSelection() {
    const QRect row = sidebar_->rowRect(store_.selectedID());
    sidebarScroll_->ensureVisible(row.center().x(), row.center().y(), 0, row.height());
}

} // namespace quarbel::ui
