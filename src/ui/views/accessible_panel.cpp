// SPDX-License-Identifier: Apache-2.0
#include "ui/views/accessible_panel.h"

#include <QAccessibleEvent>

namespace quarbel::ui {

AccessiblePanel::AccessiblePanel(QWidget* widget, QAccessible::Role role, Text name, Text description)
    : QAccessibleWidget(widget, role), name_(std::move(name)), description_(std::move(description)),
      spokenName_(text(QAccessible::Name)), spokenDescription_(text(QAccessible::Description)) {}

AccessiblePanel::~AccessiblePanel() {
    for (const QMetaObject::Connection& connection : connections_)
        QObject::disconnect(connection);
}

QString AccessiblePanel::text(QAccessible::Text t) const {
    const QString own = QAccessibleWidget::text(t);
    if (!own.isEmpty()) return own;
    switch (t) {
    case QAccessible::Name: return name_();
    case QAccessible::Description: return description_();
    default: return own;
    }
}

void AccessiblePanel::announceChanges() {
    if (QString name = text(QAccessible::Name); name != spokenName_) {
        spokenName_ = std::move(name);
        QAccessibleEvent event(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    }
    if (QString description = text(QAccessible::Description); description != spokenDescription_) {
        spokenDescription_ = std::move(description);
        QAccessibleEvent event(this, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace quarbel::ui
