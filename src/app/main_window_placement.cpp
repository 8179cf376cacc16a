// SPDX-License-Identifier: Apache-2.0
#include "app/main_window_placement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace quarbel::app {

UserFrameSettings::UserFrameSettings() : settings_(QStringLiteral("Quarbel"), QStringLiteral("Quarbel")) {}

QVariant UserFrameSettings::value(const QString& key) const { return settings_.value(key); }

void UserFrameSettings::setValue(const QString& key, const QVariant& value) {
    settings_.setValue(key, value);
}

namespace MainWindowPlacement {
namespace {

constexpr int kSaveDelayMs = 500;
constexpr int kCascadeStep = 32; // about a title bar
// How long a window manager takes to decorate a new window, and tell Qt, after it is shown.
constexpr int kDecorationDelayMs = 250;

// One axis of fittedFrame: content of `length` whose frame starts at `position`, `decoration`
// around it, in an area of `areaLength` from `areaStart`. Too long, it shrinks to the area;
// then the whole frame is moved in from whichever edge it crosses.
void fitAxis(int& position, int& length, int decoration, int areaStart, int areaLength, int minimum) {
    const int available = areaLength - decoration;
    if (length > available) length = std::max(available, std::min(minimum, areaLength));
    position = std::max(areaStart, std::min(position, areaStart + areaLength - decoration - length));
}

QMargins decorationsOf(const QWidget& window) {
    const QRect frame = window.frameGeometry();
    const QRect content = window.geometry();
    return {content.left() - frame.left(), content.top() - frame.top(), frame.right() - content.right(),
            frame.bottom() - content.bottom()};
}

// The screen area that `frame` overlaps most; the first one on a tie.
QRect areaOverlappedMost(const QRect& frame, const QList<QRect>& screens) {
    QRect best = screens.front();
    qint64 bestOverlap = -1;
    for (const QRect& area : screens) {
        const QRect overlap = area.intersected(frame);
        const qint64 size = qint64(overlap.width()) * overlap.height();
        if (size > bestOverlap) {
            best = area;
            bestOverlap = size;
        }
    }
    return best;
}

void place(QWidget& window, const QRect& frame) {
    // On a screen smaller than the minimum size, the minimum gives way to the screen.
    window.setMinimumSize(std::min(kMinimumWidth, frame.width()), std::min(kMinimumHeight, frame.height()));
    window.move(frame.topLeft());
    window.resize(frame.size());
}

} // namespace

QString frameText(const QRect& frame) {
    return QStringLiteral("%1 %2 %3 %4").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
}

std::optional<QRect> parseFrame(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("^(-?\\d+) (-?\\d+) (\\d+) (\\d+)$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) return std::nullopt;
    int numbers[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[i] = match.captured(i + 1).toInt(&ok);
        if (!ok) return std::nullopt; // out of range
    }
    return QRect(numbers[0], numbers[1], numbers[2], numbers[3]);
}

QList<QRect> screenAreas(const QWidget& window) {
    QList<QRect> areas;
    if (const QScreen* own = window.screen()) areas.append(own->availableGeometry());
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (screen != window.screen()) areas.append(screen->availableGeometry());
    }
    return areas;
}

QRect fittedFrame(const QRect& frame, const QRect& area, const QMargins& decorations) {
    int x = frame.x();
    int y = frame.y();
    int width = frame.width();
    int height = frame.height();
    fitAxis(x, width, decorations.left() + decorations.right(), area.x(), area.width(), kMinimumWidth);
    fitAxis(y, height, decorations.top() + decorations.bottom(), area.y(), area.height(), kMinimumHeight);
    return {x, y, width, height};
}

void configure(QWidget& window, const FrameSettings& settings, const QList<QRect>& screens) {
    window.setMinimumSize(kMinimumWidth, kMinimumHeight);
    const QMargins decorations = decorationsOf(window);

    std::optional<QRect> saved;
    if (settings.value(QString::fromLatin1(kHasSavedFrameKey)).toBool())
        saved = parseFrame(settings.value(QString::fromLatin1(kFrameKey)).toString());
    const bool usable = saved && saved->width() >= kMinimumWidth && saved->height() >= kMinimumHeight &&
                        std::any_of(screens.begin(), screens.end(),
                                    [&](const QRect& area) { return area.intersects(*saved); });
    if (usable) {
        place(window, fittedFrame(*saved, areaOverlappedMost(*saved, screens), decorations));
        return;
    }
    if (screens.isEmpty()) return;
    const QRect area = screens.front();
    QRect frame = fittedFrame(QRect(window.pos(), window.size()), area, decorations);
    // Centred as a whole, decorations included.
    const QSize outer = frame.size().grownBy(decorations);
    frame.moveTopLeft(area.topLeft() +
                      QPoint((area.width() - outer.width()) / 2, (area.height() - outer.height()) / 2));
    place(window, frame);
}

void save(const QWidget& window, FrameSettings& settings) {
    settings.setValue(QString::fromLatin1(kFrameKey), frameText(QRect(window.pos(), window.size())));
    settings.setValue(QString::fromLatin1(kHasSavedFrameKey), true);
}

Coordinator::Coordinator(FrameSettings& settings, QObject* parent) : QObject(parent), settings_(settings) {
    saveTimer_.setSingleShot(true);
    saveTimer_.setInterval(kSaveDelayMs);
    connect(&saveTimer_, &QTimer::timeout, this, &Coordinator::saveNow);
}

Coordinator::~Coordinator() { cleanup(); }

void Coordinator::observe(QWidget& window) {
    if (window_ == &window) return;
    if (window_) cleanup();
    window_ = &window;
    window.installEventFilter(this);
}

void Coordinator::scheduleSave() { saveTimer_.start(); }

void Coordinator::saveNow() {
    saveTimer_.stop();
    if (window_) save(*window_, settings_);
}

void Coordinator::cleanup() {
    saveTimer_.stop();
    if (!window_) return;
    window_->removeEventFilter(this);
    save(*window_, settings_);
    window_ = nullptr;
}

void cascade(QWidget& window, int othersOpen, const QList<QRect>& screens) {
    if (othersOpen <= 0 || screens.isEmpty()) return;
    const QRect frame(window.pos() + QPoint(kCascadeStep, kCascadeStep) * othersOpen, window.size());
    place(window, fittedFrame(frame, areaOverlappedMost(frame, screens), decorationsOf(window)));
}

void keepOnScreen(QWidget& window, const QList<QRect>& screens) {
    if (screens.isEmpty() || (window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0)
        return;
    const QRect frame(window.pos(), window.size());
    const QRect fitted = fittedFrame(frame, areaOverlappedMost(frame, screens), decorationsOf(window));
    if (fitted != frame) place(window, fitted);
}

bool Coordinator::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_) {
        switch (event->type()) {
        case QEvent::Show:
            // Before the window is shown its decorations count as nothing: the frame is fitted
            // again once the window manager has put them around it.
            if (!refitted_) {
                refitted_ = true;
                QTimer::singleShot(kDecorationDelayMs, this, [this] {
                    if (window_) keepOnScreen(*window_, screenAreas(*window_));
                });
            }
            break;
        case QEvent::Move:
        case QEvent::Resize: scheduleSave(); break;
        case QEvent::Close: saveNow(); break;
        default: break;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace MainWindowPlacement
} // namespace quarbel::app
