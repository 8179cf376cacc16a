// SPDX-License-Identifier: Apache-2.0
// The benchmark list as assistive technology sees it: a list with one item per painted
// row, in the order the rows are painted. An item is named after its benchmark, describes
// its state and score, and is selected with the store's selection; pressing it selects it.
// Selection, state and focus changes are sent as they happen.
#pragma once

#include "model/catalogue.h"

#include <QAccessibleWidget>
#include <QObject>

#include <array>
#include <vector>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class SidebarView;

class AccessibleSidebar : public QAccessibleWidget {
  public:
    AccessibleSidebar(SidebarView* sidebar, BenchmarkStore& store);
    ~AccessibleSidebar() override;

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

    SidebarView* sidebar() const;
    BenchmarkStore& store() const { return store_; }

  private:
    QAccessibleInterface* row(BenchmarkID id) const;
    void selectionChanged();
    void rowsChanged();
    void focusRow(BenchmarkID id) const;

    BenchmarkStore& store_;
    std::vector<BenchmarkID> order_;                                // as painted: by category
    mutable std::array<QAccessible::Id, kBenchmarkCount> rowIds_{}; // 0 until first asked for
    std::array<QString, kBenchmarkCount> spokenStates_;
    BenchmarkID spokenSelection_;
    std::vector<QMetaObject::Connection> connections_;
};

} // namespace quarbel::ui
