#include "ui/views/main_window.h"

#include "run/benchmark_store.h"

namespace quarbel::ui {

MainWindow::MainWindow(BenchmarkStore& store, QWidget* parent) : QMainWindow(parent), store_(store) {
    setWindowTitle(QStringLiteral("Quarbel"));
    resize(1180, 760);
}

} // namespace quarbel::ui
