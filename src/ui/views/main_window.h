// The main window: sidebar of benchmarks, run header, stage, result, summary, system
// and log panels, all reading one BenchmarkStore and calling its operations.
#pragma once

#include <QMainWindow>

namespace quarbel {

class BenchmarkStore;

namespace ui {

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    // `store` must outlive the window. Main thread only.
    explicit MainWindow(BenchmarkStore& store, QWidget* parent = nullptr);

  private:
    BenchmarkStore& store_;
};

} // namespace ui
} // namespace quarbel
