// SPDX-License-Identifier: Apache-2.0
// The about window: name, version, what the program does and the licence of its font.
#pragma once

#include "app/shared_window.h"

#include <QWidget>

namespace quarbel::app {

class QuarbelAboutView : public QWidget {
    Q_OBJECT
  public:
    // `version`: the program's version, e.g. "0.1.0".
    explicit QuarbelAboutView(const QString& version, QWidget* parent = nullptr);
};

// The one about window of the program.
class QuarbelAboutWindowController : public SharedWindowController {
  public:
    explicit QuarbelAboutWindowController(QString version);
};

} // namespace quarbel::app
