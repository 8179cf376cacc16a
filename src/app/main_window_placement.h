// SPDX-License-Identifier: Apache-2.0
// Where the main window opens: the frame saved by the last launch when it still fits a
// connected screen, else centred. The frame is written back shortly after every move
// or resize and at once when the window closes.
#pragma once

#include <QList>
#include <QMargins>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSettings>
#include <QString>
#include <QTimer>
#include <QVariant>

#include <optional>

class QWidget;

namespace quarbel::app {

// The key-value store behind the saved frame: QSettings in the program, a map in tests.
class FrameSettings {
  public:
    virtual ~FrameSettings() = default;
    virtual QVariant value(const QString& key) const = 0;
    virtual void setValue(const QString& key, const QVariant& value) = 0;
};

// The user's settings of organisation and application "Quarbel".
class UserFrameSettings final : public FrameSettings {
  public:
    UserFrameSettings();
    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;

  private:
    QSettings settings_;
};

namespace MainWindowPlacement {

inline constexpr auto kFrameKey = "QuarbelMainWindowFrame";
inline constexpr auto kHasSavedFrameKey = "QuarbelMainWindowHasSavedFrame";
inline constexpr int kMinimumWidth = 840;
inline constexpr int kMinimumHeight = 560;

// "x y width height": the position of the window's outer frame (what QWidget::move
// takes) and the size of its content (what QWidget::resize takes), in device-independent
// pixels. The two round-trip exactly, whatever the window manager's decorations.
QString frameText(const QRect& frame);
// The frame of a string written by frameText; nothing for anything else.
std::optional<QRect> parseFrame(const QString& text);

// The available geometry of every connected screen, the window's own screen first.
QList<QRect> screenAreas(const QWidget& window);

// `frame` (outer position, content size, as frameText writes it) made to fit `area`: along
// each axis where the window, with its window-manager `decorations`, is larger than the area,
// it is shrunk to the area (never below the minimum size unless the area itself is smaller)
// and moved onto it. Along the other axes it stays as it is.
QRect fittedFrame(const QRect& frame, const QRect& area, const QMargins& decorations = {});

// Sets the minimum size, then restores the saved frame if it is at least the minimum
// size and intersects one of `screens`, fitted to the screen it overlaps most; otherwise
// centres the window at its current size, fitted to the first of `screens`. The minimum
// size gives way only on a screen smaller than it. Call before the window is first shown
// (or after: the window manager's decorations are then taken into account). Main thread only.
void configure(QWidget& window, const FrameSettings& settings, const QList<QRect>& screens);

// Moves a window that opens while `othersOpen` Quarbel windows are open down and to the right by
// a title bar's height for each, kept on screen.
void cascade(QWidget& window, int othersOpen, const QList<QRect>& screens);

// Fits the shown window's frame, decorations included, into the screen area it overlaps most
// (moved in, and shrunk where it must); a maximised or full-screen window is left as it is.
void keepOnScreen(QWidget& window, const QList<QRect>& screens);

// Stores the window's current frame and marks it saved.
void save(const QWidget& window, FrameSettings& settings);

// Watches one window through an event filter and saves its frame half a second after
// the last move or resize, and at once when it closes.
class Coordinator : public QObject {
    Q_OBJECT
  public:
    // `settings` must outlive the coordinator. Main thread only.
    explicit Coordinator(FrameSettings& settings, QObject* parent = nullptr);
    ~Coordinator() override;

    // Starts watching `window` (a window already watched is let go first).
    void observe(QWidget& window);
    // Restarts the half-second wait before the next save.
    void scheduleSave();
    // Saves at once, dropping a pending save.
    void saveNow();
    // Stops watching and saves the frame of a window that still exists.
    void cleanup();

    bool savePending() const { return saveTimer_.isActive(); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    FrameSettings& settings_;
    QPointer<QWidget> window_;
    QTimer saveTimer_;
    bool refitted_ = false; // the frame was fitted again once its decorations were known
};

} // namespace MainWindowPlacement
} // namespace quarbel::app
