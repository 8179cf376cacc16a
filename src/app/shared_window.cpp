// SPDX-License-Identifier: Apache-2.0
#include "app/shared_window.h"

#include <QApplication>
#include <QKeySequence>
#include <QPalette>
#include <QScreen>
#include <QShortcut>

#include <algorithm>

namespace quarbel::app {

QString darkControlsStyle() {
    return QStringLiteral(R"(
QPushButton { color: #e8e8ea; background: rgba(255,255,255,0.08); border: 1px solid rgba(255,255,255,0.13);
  border-radius: 7px; padding: 5px 14px; font-weight: 600; }
QPushButton:hover { background: rgba(255,255,255,0.14); }
QPushButton:checked { background: rgba(33,201,224,0.22); border-color: rgba(33,201,224,0.55); }
QPushButton:default { border-color: rgba(33,201,224,0.55); }
QPushButton:disabled { color: rgba(255,255,255,0.30); background: rgba(255,255,255,0.04);
  border-color: rgba(255,255,255,0.06); }
QComboBox { color: #e8e8ea; background: #16181d; border: 1px solid #2a2d35; border-radius: 6px;
  padding: 4px 8px; }
QComboBox:disabled { color: #5c6068; }
QComboBox QAbstractItemView { color: #e8e8ea; background: #16181d; selection-background-color: #243042; }
QLineEdit { color: #e8e8ea; background: #0d0f12; border: 1px solid #2a2d35; border-radius: 5px; padding: 4px; }
QDialog { background: #15171c; }
QDialog QLabel { color: #e8e8ea; }
)");
}

void applyDarkPalette(QWidget& widget) {
    QPalette palette = widget.palette();
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
        palette.setColor(role, kWindowBackground);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, kPrimaryText);
    palette.setColor(QPalette::PlaceholderText, kSecondaryText);
    widget.setPalette(palette);
    widget.setAutoFillBackground(true);
    // The default scroll bar is drawn light whatever the palette; a thin dark one fits. Once a
    // style sheet is set, a scroll area's viewport and the page in it take their background
    // from the sheet, not from the palette, so the sheet names it for them too.
    widget.setStyleSheet(
        QStringLiteral("#qt_scrollarea_viewport, #qt_scrollarea_viewport > QWidget { background: %1; }")
            .arg(kWindowBackground.name()) +
        QStringLiteral("QScrollBar:vertical { background: transparent; width: 8px; margin: 2px; }"
                       "QScrollBar::handle:vertical { background: rgba(255,255,255,0.16); border-radius: "
                       "3px; min-height: 30px; }"
                       "QScrollBar::add-line, QScrollBar::sub-line { height: 0; }"));
}

QLabel* makeTextLabel(const QString& text, qreal pointScale, QFont::Weight weight, const QColor& colour) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * pointScale);
    font.setWeight(weight);
    label->setFont(font);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
    return label;
}

void placeOverActiveWindow(QWidget& window) {
    // Centred over the window it was asked from, kept on that window's screen; with none, the
    // window system places it.
    const QWidget* over = QApplication::activeWindow();
    if (over == nullptr || over == &window) return;
    const QRect anchor = over->frameGeometry();
    QRect placed(QPoint(), window.size());
    placed.moveCenter(anchor.center());
    if (const QScreen* screen = over->screen()) {
        const QRect available = screen->availableGeometry();
        placed.moveRight(std::min(placed.right(), available.right()));
        placed.moveBottom(std::min(placed.bottom(), available.bottom()));
        placed.moveLeft(std::max(placed.left(), available.left()));
        placed.moveTop(std::max(placed.top(), available.top()));
    }
    window.move(placed.topLeft());
}

SharedWindowController::SharedWindowController(std::function<std::unique_ptr<QWidget>()> makeWindow)
    : makeWindow_(std::move(makeWindow)) {}

SharedWindowController::~SharedWindowController() = default;

void SharedWindowController::showWindow() {
    if (!window_) {
        window_ = makeWindow_();
        window_->setAttribute(Qt::WA_QuitOnClose, false);
        placeOverActiveWindow(*window_);
        // Esc and Ctrl+W close it, as they close a desktop's other secondary windows.
        for (const QKeySequence& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
            auto* shortcut = new QShortcut(keys, window_.get());
            shortcut->setContext(Qt::WindowShortcut);
            QObject::connect(shortcut, &QShortcut::activated, window_.get(), &QWidget::close);
        }
    }
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

} // namespace quarbel::app
