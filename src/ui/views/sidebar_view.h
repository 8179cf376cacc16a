// The benchmark list: one section per category in catalogue order, a row per benchmark
// with its icon, title, subtitle, state mark and last score. Clicking a row selects it.
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
};

} // namespace quarbel::ui
