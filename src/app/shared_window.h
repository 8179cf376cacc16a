// SPDX-License-Identifier: Apache-2.0
// A window that exists once for the program's life: the first request creates and
// shows it, later requests show and raise the same window. Closing (also with Esc or
// Ctrl+W) only hides it, and it never keeps the program alive.
#pragma once

#include <QColor>
#include <QLabel>
#include <QWidget>

#include <functional>
#include <memory>

namespace quarbel::app {

// The dark look of Quarbel's own windows.
inline const QColor kWindowBackground{0x15, 0x17, 0x1c};
inline const QColor kPrimaryText{0xe8, 0xe8, 0xea};
inline const QColor kSecondaryText{0xa4, 0xa7, 0xb0};

// Gives `widget` and its children the dark background and light text.
void applyDarkPalette(QWidget& widget);

// Under a style sheet the palette no longer colours buttons, boxes, fields and plain labels,
// so this sheet names their colours for every Quarbel window and dialog.
QString darkControlsStyle();

// A word-wrapped plain-text label at `pointScale` times the application font, in `colour`.
QLabel* makeTextLabel(const QString& text, qreal pointScale, QFont::Weight weight, const QColor& colour);

// Moves `window` so that it is centred over the active window, on that window's screen.
void placeOverActiveWindow(QWidget& window);

class SharedWindowController {
  public:
    // `makeWindow` builds the window's content the first time it is shown.
    explicit SharedWindowController(std::function<std::unique_ptr<QWidget>()> makeWindow);
    virtual ~SharedWindowController();
    SharedWindowController(const SharedWindowController&) = delete;
    SharedWindowController& operator=(const SharedWindowController&) = delete;

    // Shows the window, creating it on first use, and brings it to the front. Main thread only.
    void showWindow();
    // The window; null until it is first shown.
    QWidget* window() const { return window_.get(); }

  private:
    std::function<std::unique_ptr<QWidget>()> makeWindow_;
    std::unique_ptr<QWidget> window_;
};

} // namespace quarbel::app
