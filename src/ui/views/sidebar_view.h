// SPDX-License-Identifier: Apache-2.0
// The benchmark list: one section per category in catalogue order, a row per benchmark
// with its icon, title, subtitle, state mark and last score. Clicking a row selects it;
// with the keyboard focus, Up / Down move the selection over the rows (not the headings)
// and Home / End go to the first and last, the selected row ringed.
#pragma once

#include "model/catalogue.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class SidebarView : public QWidget {
    Q_OBJECT
  public:
    explicit SidebarView(BenchmarkStore& store, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // Where the row of `id` is painted, in widget coordinates.
    QRect rowRect(BenchmarkID id) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    struct Item {
        std::optional<BenchmarkID> id; // empty for a category header
        BenchmarkCategory category;
        QRect rect;
    };
    void layoutItems();
    std::optional<BenchmarkID> benchmarkAt(QPoint point) const;
    void paintHeader(QPainter& painter, const Item& item);
    void paintRow(QPainter& painter, const Item& item);

    BenchmarkStore& store_;
    std::vector<Item> items_;
    std::optional<BenchmarkID> hovered_;
    bool keyboardRing_ = false; // the focus came by the keyboard, or keys moved the selection
};

} // namespace quarbel::ui
