// SPDX-License-Identifier: Apache-2.0
// The help window: a scrolling column with the heading "Quarbel Help" and ten short
// sections that explain the program.
#pragma once

#include "app/shared_window.h"

#include <QScrollArea>

#include <array>

namespace quarbel::app {

// The texts as written; the view shows them translated (context quarbel::app::QuarbelHelpView).
struct HelpSection {
    const char* title; // shown as a section heading
    const char* text;  // shown as a wrapping paragraph
};

// The sections, in the order they are shown.
const std::array<HelpSection, 10>& helpSections();

class QuarbelHelpView : public QScrollArea {
    Q_OBJECT
  public:
    explicit QuarbelHelpView(QWidget* parent = nullptr);
};

// The one help window of the program.
class QuarbelHelpWindowController : public SharedWindowController {
  public:
    QuarbelHelpWindowController();
};

} // namespace quarbel::app
