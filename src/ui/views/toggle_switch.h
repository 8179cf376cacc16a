// SPDX-License-Identifier: Apache-2.0
// A small painted on/off switch with a label, checkable like a check box.
#pragma once

#include <QAbstractButton>

namespace quarbel::ui {

class ToggleSwitch : public QAbstractButton {
    Q_OBJECT
  public:
    explicit ToggleSwitch(const QString& label, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quarbel::ui
