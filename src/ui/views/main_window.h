// SPDX-License-Identifier: Apache-2.0
// The main window: sidebar of benchmarks, run header, stage or result, summary, score
// gauge, system and log panels, all reading one BenchmarkStore and calling its operations.
#pragma once

#include <QMainWindow>

#include <optional>
#include <thread>

class QBoxLayout;
class QGridLayout;
class QScrollArea;
class QStackedWidget;

namespace quarbel {

class BenchmarkStore;

namespace ui {

class RunHeader;
class ResultPanel;
class ScoreGauge;
class SidebarView;
class LogPanel;
class StageView;
class SummaryPanel;
class SystemPanel;

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    // `store` must outlive the window. Main thread only.
    explicit MainWindow(BenchmarkStore& store, QWidget* parent = nullptr);
    ~MainWindow() override;

    RunHeader* header() const { return header_; }
    SidebarView* sidebar() const { return sidebar_; }
    StageView* stage() const { return stage_; }
    ResultPanel* resultPanel() const { return result_; }
    SummaryPanel* summaryPanel() const { return summary_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void arrangeBody(bool wide);
    void showStageOrResult();
    void followSelection();

    BenchmarkStore& store_;
    SidebarView* sidebar_;
    QScrollArea* sidebarScroll_;
    RunHeader* header_;
    QStackedWidget* centre_;
    StageView* stage_;
    ResultPanel* result_;
    SummaryPanel* summary_;
    ScoreGauge* gauge_;
    SystemPanel* system_;
    LogPanel* log_ = nullptr;
    QWidget* mainColumn_ = nullptr; // result or stage, and the summary
    QWidget* sideColumn_ = nullptr; // score gauge and system panel
    QBoxLayout* sideLayout_ = nullptr;
    QGridLayout* body_ = nullptr;
    QScrollArea* bodyScroll_ = nullptr;
    std::optional<bool> wide_;
    std::thread systemFacts_; // reads the system rows off the main thread at start-up
};

// The window's dark style sheet for buttons, menus and scroll bars.
QString windowStyleSheet();

} // namespace ui
} // namespace quarbel
