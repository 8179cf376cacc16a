// SPDX-License-Identifier: Apache-2.0
// The foot of the sidebar: how many of the thirteen benchmarks are done and the global score.
#pragma once

#include <QWidget>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class SidebarFooter : public QWidget {
    Q_OBJECT
  public:
    explicit SidebarFooter(BenchmarkStore& store, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    BenchmarkStore& store_;
};

} // namespace quarbel::ui
