// SPDX-License-Identifier: Apache-2.0
#include "ui/views/accessible_sidebar.h"

#include "run/benchmark_store.h"
#include "ui/views/accessible_panel.h"
#include "ui/views/accessible_text.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/theme.h"

#include <QAccessibleEvent>
#include <QApplication>
#include <QPointer>
#include <QWindow>

#include <utility>

namespace quarbel::ui {
namespace {

// One painted row. It lives as long as the list's interface, which deletes it.
class AccessibleBenchmarkRow : public AccessiblePaintedPart, public QAccessibleActionInterface {
  public:
    AccessibleBenchmarkRow(const AccessibleSidebar& list, BenchmarkID id) : list_(list), id_(id) {}

    QString text(QAccessible::Text t) const override {
        switch (t) {
        case QAccessible::Name: return theme::qstring(title(id_));
        case QAccessible::Description: return spokenRowState(list_.store().rows()[id_]);
        default: return {};
        }
    }
    void setText(QAccessible::Text, const QString&) override {}

    QRect rect() const override {
        const SidebarView* sidebar = list_.sidebar();
        const QRect row = sidebar->rowRect(id_);
        return {sidebar->mapToGlobal(row.topLeft()), row.size()};
    }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override {
        const SidebarView* sidebar = list_.sidebar();
        const BenchmarkStore& store = list_.store();
        QAccessible::State state;
        state.selectable = true;
        state.focusable = true;
        state.selected = store.selectedID() == id_;
        state.focused = state.selected && sidebar->hasFocus();
        state.busy = store.rows()[id_].state == TestRunState::running;
        state.invisible = !sidebar->isVisible();
        state.offscreen = !sidebar->visibleRegion().intersects(sidebar->rowRect(id_));
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    // Pressing an item selects its benchmark, as a click on its row does; setting the
    // focus on it also moves the keyboard focus to the list.
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& action) override {
        if (action == setFocusAction()) list_.sidebar()->setFocus(Qt::OtherFocusReason);
        if (action == pressAction() || action == setFocusAction()) list_.store().setSelectedID(id_);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

  protected:
    QWidget* owner() const override { return list_.sidebar(); }

  private:
    const AccessibleSidebar& list_;
    BenchmarkID id_;
};

} // namespace

AccessibleSidebar::AccessibleSidebar(SidebarView* sidebar, BenchmarkStore& store)
    : QAccessibleWidget(sidebar, QAccessible::List), store_(store), spokenSelection_(store.selectedID()) {
    for (BenchmarkCategory category : kAllCategories)
        for (BenchmarkID id : byCategory(category))
            order_.push_back(id);
    for (BenchmarkID id : kAllBenchmarks)
        spokenStates_[indexOf(id)] = spokenRowState(store_.rows()[id]);
    connections_ = {
        QObject::connect(&store_, &BenchmarkStore::selectedIDChanged, sidebar,
                         [this] { selectionChanged(); }),
        QObject::connect(&store_, &BenchmarkStore::rowsChanged, sidebar, [this] { rowsChanged(); }),
        // The list is announced as it takes the focus; its selected item just after, as in
        // Qt's own item views.
        QObject::connect(qApp, &QApplication::focusChanged, sidebar,
                         [sidebar = QPointer<SidebarView>(sidebar)](QWidget*, QWidget* now) {
                             if (now != sidebar) return;
                             QMetaObject::invokeMethod(
                                 sidebar,
                                 [sidebar] {
                                     if (auto* list = dynamic_cast<AccessibleSidebar*>(
                                             QAccessible::queryAccessibleInterface(sidebar)))
                                         list->focusRow(list->store().selectedID());
                                 },
                                 Qt::QueuedConnection);
                         }),
    };
}

AccessibleSidebar::~AccessibleSidebar() {
    for (const QMetaObject::Connection& connection : connections_)
        QObject::disconnect(connection);
    for (QAccessible::Id id : rowIds_)
        if (id != 0) QAccessible::deleteAccessibleInterface(id);
}

SidebarView* AccessibleSidebar::sidebar() const { return static_cast<SidebarView*>(widget()); }

int AccessibleSidebar::childCount() const { return static_cast<int>(order_.size()); }

QAccessibleInterface* AccessibleSidebar::child(int index) const {
    if (index < 0 || index >= childCount()) return nullptr;
    return row(order_[std::size_t(index)]);
}

int AccessibleSidebar::indexOfChild(const QAccessibleInterface* child) const {
    for (std::size_t i = 0; i < order_.size(); ++i)
        if (rowIds_[indexOf(order_[i])] != 0 && row(order_[i]) == child) return static_cast<int>(i);
    return -1;
}

QAccessibleInterface* AccessibleSidebar::childAt(int x, int y) const {
    const QPoint local = sidebar()->mapFromGlobal(QPoint(x, y));
    for (BenchmarkID id : order_)
        if (sidebar()->rowRect(id).contains(local)) return row(id);
    return nullptr;
}

QAccessibleInterface* AccessibleSidebar::focusChild() const {
    return sidebar()->hasFocus() ? row(store_.selectedID()) : nullptr;
}

QAccessibleInterface* AccessibleSidebar::row(BenchmarkID id) const {
    QAccessible::Id& known = rowIds_[indexOf(id)];
    if (known == 0) known = QAccessible::registerAccessibleInterface(new AccessibleBenchmarkRow(*this, id));
    return QAccessible::accessibleInterface(known);
}

void AccessibleSidebar::selectionChanged() {
    const BenchmarkID previous = std::exchange(spokenSelection_, store_.selectedID());
    if (previous == spokenSelection_) return;
    QAccessibleEvent removed(row(previous), QAccessible::SelectionRemove);
    QAccessible::updateAccessibility(&removed);
    QAccessibleEvent added(row(spokenSelection_), QAccessible::SelectionAdd);
    QAccessible::updateAccessibility(&added);
    if (sidebar()->hasFocus()) focusRow(spokenSelection_);
}

void AccessibleSidebar::rowsChanged() {
    for (BenchmarkID id : order_) {
        QString spoken = spokenRowState(store_.rows()[id]);
        if (spoken == spokenStates_[indexOf(id)]) continue;
        spokenStates_[indexOf(id)] = std::move(spoken);
        QAccessibleEvent event(row(id), QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&event);
    }
}

void AccessibleSidebar::focusRow(BenchmarkID id) const {
    QAccessibleEvent event(row(id), QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

} // namespace quarbel::ui
