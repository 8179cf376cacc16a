// A painted view as assistive technology sees it: a role, a name and a description that
// say what the view shows, read from functions of the state it paints. The view's own
// accessible name or description, where set, wins over the function's.
#pragma once

#include <QAccessibleWidget>
#include <QObject>

#include <functional>
#include <vector>

namespace quarbel::ui {

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
