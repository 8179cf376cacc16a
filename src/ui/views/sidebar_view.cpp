// SPDX-License-Identifier: Apache-2.0
#include "ui/views/sidebar_view.h"

#include "run/benchmark_store.h"
#include "ui/views/theme.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace quarbel::ui {
namespace {

constexpr int kWidth = 300;
constexpr int kHeaderHeight = 34;
constexpr int kRowHeight = 50;
constexpr int kMargin = 10;

QString stateMark(TestRunState state) {
    switch (state) {
    case TestRunState::idle: return QCoreApplication::translate("quarbel::ui::SidebarView", "Idle");
    case TestRunState::running: return QCoreApplication::translate("quarbel::ui::SidebarView", "Running");
    case TestRunState::done: return QCoreApplication::translate("quarbel::ui::SidebarView", "Done");
    case TestRunState::skipped: return QCoreApplication::translate("quarbel::ui::SidebarView", "Skipped");
    case TestRunState::failed: return QCoreApplication::translate("quarbel::ui::SidebarView", "Failed");
    }
    return {};
}

} // namespace

SidebarView::SidebarView(BenchmarkStore& store, QWidget* parent) : QWidget(parent), store_(store) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Benchmarks"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    layoutItems();
    // Rows repaint only when their state or the selection changes, not on clock ticks.
    connect(&store_, &BenchmarkStore::rowsChanged, this, qOverload<>(&QWidget::update));
    connect(&store_, &BenchmarkStore::selectedIDChanged, this, qOverload<>(&QWidget::update));
}

void SidebarView::layoutItems() {
    items_.clear();
    int y = kMargin / 2;
    for (BenchmarkCategory category : kAllCategories) {
        items_.push_back({std::nullopt, category, QRect(0, y, kWidth, kHeaderHeight)});
        y += kHeaderHeight;
        for (BenchmarkID id : byCategory(category)) {
            items_.push_back({id, category, QRect(0, y, kWidth, kRowHeight)});
            y += kRowHeight;
        }
    }
}

QSize SidebarView::sizeHint() const { return {kWidth, items_.back().rect.bottom() + kMargin}; }

QRect SidebarView::rowRect(BenchmarkID id) const {
    for (const Item& item : items_)
        if (item.id == id) return item.rect;
    return {};
}

std::optional<BenchmarkID> SidebarView::benchmarkAt(QPoint point) const {
    for (const Item& item : items_)
        if (item.id && item.rect.contains(point)) return item.id;
    return std::nullopt;
}

void SidebarView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::background());
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Item& item : items_) {
        if (!item.rect.intersects(event->rect())) continue;
        if (item.id)
            paintRow(painter, item);
        else
            paintHeader(painter, item);
    }
}

void SidebarView::paintHeader(QPainter& painter, const Item& item) {
    const QColor accent = theme::accent(item.category);
    const QRect r = item.rect.adjusted(kMargin + 6, 0, -kMargin, 0);
    painter.drawPixmap(r.left(), r.center().y() - 7,
                       theme::icon(categoryIcon(item.category), 15, accent, devicePixelRatioF()));
    painter.setFont(theme::font(12, QFont::Bold));
    painter.setPen(accent);
    painter.drawText(r.adjusted(22, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     theme::uiText(categoryTitle(item.category)).toUpper());
}

void SidebarView::paintRow(QPainter& painter, const Item& item) {
    const BenchmarkID id = *item.id;
    const BenchmarkRowState& row = store_.rows()[id];
    const QColor accent = theme::accent(item.category);
    const QRectF card = QRectF(item.rect).adjusted(kMargin, 2, -kMargin, -2);

    const bool selected = store_.selectedID() == id;
    if (selected || hovered_ == id) {
        QColor fill = selected ? accent : theme::panelAlt();
        if (selected) fill.setAlphaF(0.16f);
        painter.setPen(selected ? QPen(accent, 1) : Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), 9, 9);
    }
    if (selected && hasFocus() && keyboardRing_) {
        // The keyboard's place: a light ring just outside the selected row.
        painter.setPen(QPen(theme::text(), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(card.adjusted(-2, -1, 2, 1), 10, 10);
    }

    // Icon tile.
    const QRectF tile(card.left() + 8, card.center().y() - 15, 30, 30);
    QColor tileFill = accent;
    tileFill.setAlphaF(0.14f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tileFill);
    painter.drawRoundedRect(tile, 8, 8);
    painter.drawPixmap(QPointF(tile.left() + 6, tile.top() + 6),
                       theme::icon(icon(id), 18, accent, devicePixelRatioF()));

    // State mark: a dot on the icon tile's corner, and a word or the score at the right.
    const QColor stateColor = theme::stateColor(row.state);
    painter.setPen(QPen(theme::background(), 2));
    painter.setBrush(stateColor);
    painter.drawEllipse(QPointF(tile.right() - 1, tile.top() + 1), 4.5, 4.5);
    QString right;
    if (row.state == TestRunState::done && row.outcome) {
        painter.setFont(theme::font(13, QFont::Bold));
        painter.setPen(theme::text());
        right = theme::qstring(scoreText(row.outcome->score));
    } else if (row.state != TestRunState::idle) {
        painter.setFont(theme::font(11.5, QFont::DemiBold));
        painter.setPen(stateColor);
        right = stateMark(row.state);
    }
    const qreal textLeft = tile.right() + 10;
    const qreal textRight = card.right() - 10;
    const QRectF titleLine(textLeft, card.top() + 6, textRight - textLeft, 20);
    qreal rightWidth = 0;
    if (!right.isEmpty()) {
        rightWidth = QFontMetricsF(painter.font()).horizontalAdvance(right) + 8;
        painter.drawText(titleLine, Qt::AlignRight | Qt::AlignVCenter, right);
    }

    // Title (elided before the mark) over the subtitle, which has the whole width.
    painter.setFont(theme::font(13.5, QFont::DemiBold));
    painter.setPen(theme::text());
    painter.drawText(
        titleLine.adjusted(0, 0, -rightWidth, 0), Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(painter.font())
            .elidedText(theme::uiText(title(id)), Qt::ElideRight, int(titleLine.width() - rightWidth)));
    painter.setFont(theme::font(11.5));
    painter.setPen(theme::secondary());
    painter.drawText(QRectF(textLeft, card.top() + 25, titleLine.width(), 17),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(painter.font())
                         .elidedText(theme::uiText(subtitle(id)), Qt::ElideRight, int(titleLine.width())));
}

void SidebarView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (keyboardRing_) {
        keyboardRing_ = false;
        update(rowRect(store_.selectedID()));
    }
    if (const auto id = benchmarkAt(event->position().toPoint())) store_.setSelectedID(*id);
}

void SidebarView::mouseMoveEvent(QMouseEvent* event) {
    const auto id = benchmarkAt(event->position().toPoint());
    if (id == hovered_) return;
    if (hovered_) update(rowRect(*hovered_));
    hovered_ = id;
    if (hovered_) update(rowRect(*hovered_));
    setCursor(id ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void SidebarView::keyPressEvent(QKeyEvent* event) {
    std::vector<BenchmarkID> order;
    for (const Item& item : items_)
        if (item.id) order.push_back(*item.id);
    const auto at = std::find(order.begin(), order.end(), store_.selectedID());
    if (at == order.end()) return QWidget::keyPressEvent(event);
    std::optional<BenchmarkID> next;
    switch (event->key()) {
    case Qt::Key_Up:
        if (at != order.begin()) next = *(at - 1);
        break;
    case Qt::Key_Down:
        if (at + 1 != order.end()) next = *(at + 1);
        break;
    case Qt::Key_Home: next = order.front(); break;
    case Qt::Key_End: next = order.back(); break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Runs the selected benchmark, as a double click on it would; nothing while a run goes on.
        event->accept();
        if (!store_.busy()) store_.runSelected();
        return;
    default: return QWidget::keyPressEvent(event);
    }
    // Taken even at either end, so that the scroll area around does not scroll instead.
    event->accept();
    if (!keyboardRing_) {
        keyboardRing_ = true;
        update(rowRect(store_.selectedID()));
    }
    if (next && *next != store_.selectedID()) store_.setSelectedID(*next);
}

void SidebarView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    // The ring marks where keys act; a click shows that already. Coming back to the window
    // keeps what it had.
    switch (event->reason()) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason: keyboardRing_ = true; break;
    case Qt::MouseFocusReason: keyboardRing_ = false; break;
    default: break;
    }
    update(rowRect(store_.selectedID()).adjusted(0, -2, 0, 2));
}

void SidebarView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update(rowRect(store_.selectedID()).adjusted(0, -2, 0, 2));
}

void SidebarView::leaveEvent(QEvent*) {
    if (hovered_) update(rowRect(*hovered_));
    hovered_.reset();
}

} // namespace quarbel::ui
