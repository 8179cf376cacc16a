// SPDX-License-Identifier: Apache-2.0
// The machine: the system rows (processor, cores, memory, GPU, operating system) and
// two temperature pills that follow the thermal monitor.
#pragma once

#include "sensors/system_snapshot.h"

#include <QWidget>

#include <vector>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class SystemPanel : public QWidget {
    Q_OBJECT
  public:
    explicit SystemPanel(BenchmarkStore& store, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {300, 250}; }

    // The rows are read off the main thread at start-up (the GPU row asks the Vulkan
    // loader, which can take a while); until they arrive the panel says so.
    void setRows(std::vector<SystemRow> rows);
    const std::vector<SystemRow>& rows() const { return rows_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    BenchmarkStore& store_;
    std::vector<SystemRow> rows_;
};

} // namespace quarbel::ui
