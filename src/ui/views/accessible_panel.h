// SPDX-License-Identifier: Apache-2.0
// A painted view as assistive technology sees it: a role, a name and a description that
// say what the view shows, read from functions of the state it paints. The view's own
// accessible name or description, where set, wins over the function's.
#pragma once

#include <QAccessibleWidget>
#include <QObject>
#include <QWidget>
#include <QWindow>

#include <functional>
#include <vector>

namespace quarbel::ui {

// A part of a painted view that has no widget of its own (a list row, a progress bar): a leaf
// whose parent is the view's interface. It is valid while `owner()` gives the view.
class AccessiblePaintedPart : public QAccessibleInterface {
  public:
    bool isValid() const override { return owner() != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return owner()->window()->windowHandle(); }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(owner()); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }

  protected:
    virtual QWidget* owner() const = 0;
};

class AccessiblePanel : public QAccessibleWidget {
  public:
    using Text = std::function<QString()>;

    AccessiblePanel(QWidget* widget, QAccessible::Role role, Text name, Text description);
    ~AccessiblePanel() override;

    QString text(QAccessible::Text t) const override;

    // From now on a firing `signal` of `sender` tells assistive technology of a changed name
    // or description. The connection ends with this interface or with its widget.
    template <typename Signal>
    void follow(const typename QtPrivate::FunctionPointer<Signal>::Object* sender, Signal signal) {
        connections_.push_back(QObject::connect(sender, signal, widget(), [this] { announceChanges(); }));
    }

  protected:
    // Sends a name or description event for what changed since the last call. Qt drops the
    // events while no assistive technology listens.
    virtual void announceChanges();

  private:
    Text name_;
    Text description_;
    QString spokenName_; // as last announced
    QString spokenDescription_;
    std::vector<QMetaObject::Connection> connections_;
};

} // namespace quarbel::ui
