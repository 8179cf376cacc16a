// SPDX-License-Identifier: Apache-2.0
#include "ui/views/workload_animation.h"

#include "ui/views/theme.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace quarbel::ui {
namespace {

// Tiles: a 16 x 9 frame rendered bucket by bucket, row by row.
constexpr int kTileColumns = 16;
constexpr int kTileRows = 9;
constexpr int kTileCount = kTileColumns * kTileRows;
constexpr double kTilesPerSecond = 12.0;
// Mosaic: sensor cells and the speed of the demosaic front.
constexpr int kCellSize = 12;
constexpr double kMosaicSweepSeconds = 9.0;
constexpr int kFrontCells = 3; // the width of the demosaic kernel's band
// Lanes: rows of work items moving through a kernel stage in the middle.
constexpr int kLaneCount = 8;
constexpr int kItemsPerLane = 5;
// Qt's raster engine hands a fill taller than about a hundred rows to its thread pool and
// waits for it. While a benchmark keeps every core busy, that wakes threads onto those
// cores hundreds of times a second; bands of 64 rows keep each fill on the painting thread.
constexpr int kBandRows = 64;

QColor shade(double r, double g, double b, double a = 1.0) {
    return QColor::fromRgbF(float(r), float(g), float(b), float(a));
}

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(float(alpha));
    return color;
}

double cyclePosition(double seconds, double period) {
    const double t = std::fmod(std::max(seconds, 0.0), period);
    return t / period;
}

QRect tileRect(const QRectF& area, int index) {
    const int column = index % kTileColumns;
    const int row = index / kTileColumns;
    const auto x = [&](int c) { return int(std::lround(area.left() + area.width() * c / kTileColumns)); };
    const auto y = [&](int r) { return int(std::lround(area.top() + area.height() * r / kTileRows)); };
    return QRect(QPoint(x(column), y(row)), QPoint(x(column + 1) - 1, y(row + 1) - 1));
}

qreal laneItemWidth(const QRectF& area) { return std::max<qreal>(18, area.width() * 0.05); }

// Where work item `item` of lane `lane` is at `seconds`; each lane runs at its own pace,
// like work groups that finish at different times.
QRectF laneItemBox(const QRectF& area, int lane, int item, double seconds) {
    const qreal laneHeight = area.height() / kLaneCount;
    const qreal itemWidth = laneItemWidth(area);
    const double speed = 0.16 + 0.045 * ((lane * 5) % kLaneCount);
    const double u = cyclePosition(seconds * speed + double(item) / kItemsPerLane + lane * 0.13, 1.0);
    const qreal x = area.left() - itemWidth + u * (area.width() + itemWidth);
    return QRectF(x, area.top() + lane * laneHeight + laneHeight * 0.26, itemWidth, laneHeight * 0.48);
}

// The kernel stage in the middle of the lanes.
QRectF laneKernel(const QRectF& area) {
    return QRectF(area.left() + area.width() * 0.42, area.top(), area.width() * 0.16, area.height());
}

// The lanes without their items: the same on every frame.
void paintEmptyLanes(QPainter& painter, const QSize& size, const QColor& accent) {
    const QRectF area(QPointF(0, 0), QSizeF(size));
    painter.fillRect(area, shade(0.045, 0.052, 0.060));
    const QRectF kernel = laneKernel(area);
    painter.fillRect(kernel, withAlpha(accent, 0.08));
    painter.setPen(QPen(withAlpha(accent, 0.45), 1, Qt::DashLine));
    painter.drawLine(kernel.topLeft(), kernel.bottomLeft());
    painter.drawLine(kernel.topRight(), kernel.bottomRight());
    const qreal laneHeight = area.height() / kLaneCount;
    for (int lane = 0; lane < kLaneCount; ++lane)
        painter.fillRect(QRectF(area.left(), lane * laneHeight + laneHeight * 0.5, area.width(), 1),
                         QColor(255, 255, 255, 18));
}

int mosaicFront(const QRectF& area, double seconds) {
    const double span = area.width() + 2.0 * kFrontCells * kCellSize;
    return int(area.left() - kFrontCells * kCellSize + cyclePosition(seconds, kMosaicSweepSeconds) * span);
}

// A frame such as the tile renderer makes: sky, sun, a gridded floor and shaded spheres.
void paintFinishedPicture(QPainter& painter, const QSize& size, const QColor& accent) {
    const qreal w = size.width();
    const qreal h = size.height();
    const qreal horizon = h * 0.6;
    QLinearGradient sky(0, 0, 0, horizon);
    sky.setColorAt(0, shade(0.03, 0.05, 0.09));
    sky.setColorAt(1, withAlpha(accent, 1.0).darker(260));
    painter.fillRect(QRectF(0, 0, w, horizon), sky);
    QRadialGradient sun(QPointF(w * 0.74, horizon * 0.7), h * 0.45);
    sun.setColorAt(0, shade(1.0, 0.78, 0.42, 0.9));
    sun.setColorAt(0.12, shade(0.98, 0.62, 0.26, 0.55));
    sun.setColorAt(1, Qt::transparent);
    painter.fillRect(QRectF(0, 0, w, horizon), sun);
    QLinearGradient ground(0, horizon, 0, h);
    ground.setColorAt(0, shade(0.07, 0.09, 0.10));
    ground.setColorAt(1, shade(0.02, 0.025, 0.03));
    painter.fillRect(QRectF(0, horizon, w, h - horizon), ground);
    painter.setPen(QPen(withAlpha(accent, 0.35), 1));
    for (int i = 1; i <= 8; ++i) {
        const qreal y = horizon + (h - horizon) * std::pow(i / 8.0, 1.8);
        painter.drawLine(QPointF(0, y), QPointF(w, y));
    }
    for (int i = -10; i <= 10; ++i)
        painter.drawLine(QPointF(w * 0.5 + i * w * 0.02, horizon), QPointF(w * 0.5 + i * w * 0.16, h));
    struct Sphere {
        qreal x, y, r;
        QColor color;
    };
    const Sphere spheres[] = {{0.30, 0.70, 0.15, accent},
                              {0.55, 0.76, 0.10, shade(0.98, 0.62, 0.26)},
                              {0.16, 0.82, 0.07, shade(0.13, 0.79, 0.88)},
                              {0.82, 0.80, 0.08, shade(0.80, 0.48, 0.94)}};
    painter.setPen(Qt::NoPen);
    for (const Sphere& s : spheres) {
        const QPointF centre(w * s.x, h * s.y);
        const qreal radius = h * s.r;
        painter.setBrush(shade(0, 0, 0, 0.35));
        painter.drawEllipse(QPointF(centre.x() + radius * 0.2, centre.y() + radius * 0.9), radius * 0.9,
                            radius * 0.22);
        QRadialGradient body(QPointF(centre.x() - radius * 0.35, centre.y() - radius * 0.4), radius * 1.4);
        body.setColorAt(0, s.color.lighter(170));
        body.setColorAt(0.45, s.color);
        body.setColorAt(1, s.color.darker(400));
        painter.setBrush(body);
        painter.drawEllipse(centre, radius, radius);
    }
}

// What a sensor with an RGGB colour filter records of `picture`: one channel per cell.
QImage bayerMosaic(const QImage& picture) {
    QImage mosaic(picture.size(), QImage::Format_RGB32);
    mosaic.fill(shade(0.02, 0.02, 0.025));
    QPainter painter(&mosaic);
    for (int y = 0; y < picture.height(); y += kCellSize) {
        for (int x = 0; x < picture.width(); x += kCellSize) {
            const QColor sample = picture.pixelColor(std::min(x + kCellSize / 2, picture.width() - 1),
                                                     std::min(y + kCellSize / 2, picture.height() - 1));
            const bool evenRow = (y / kCellSize) % 2 == 0;
            const bool evenColumn = (x / kCellSize) % 2 == 0;
            QColor cell;
            if (evenRow && evenColumn)
                cell = QColor(sample.red(), 0, 0);
            else if (!evenRow && !evenColumn)
                cell = QColor(0, 0, sample.blue());
            else
                cell = QColor(0, sample.green(), 0);
            painter.fillRect(QRect(x, y, kCellSize - 1, kCellSize - 1), cell);
        }
    }
    return mosaic;
}

} // namespace

AnimationTheme animationTheme(BenchmarkID id) {
    switch (id) {
    case BenchmarkID::cineTile: return AnimationTheme::tiles;
    case BenchmarkID::rawCPUDecode:
    case BenchmarkID::rawMetalDecode: return AnimationTheme::mosaic;
    case BenchmarkID::metalVisual: return AnimationTheme::horizon;
    default: return AnimationTheme::lanes;
    }
}

WorkloadAnimation::WorkloadAnimation(BenchmarkID id)
    : theme_(animationTheme(id)), accent_(theme::accent(category(id))) {}

void WorkloadAnimation::prepareImages(const QSize& size) {
    if (finished_.size() == size || size.isEmpty()) return;
    finished_ = QImage(size, QImage::Format_RGB32);
    QPainter painter(&finished_);
    painter.setRenderHint(QPainter::Antialiasing);
    if (theme_ == AnimationTheme::lanes)
        paintEmptyLanes(painter, size, accent_);
    else
        paintFinishedPicture(painter, size, accent_);
    painter.end();
    mosaic_ = theme_ == AnimationTheme::mosaic ? bayerMosaic(finished_) : QImage();
}

void WorkloadAnimation::paint(QPainter& painter, const QRectF& area, double seconds, const QRegion& dirty) {
    if (area.isEmpty()) return;
    if (theme_ != AnimationTheme::horizon) prepareImages(area.size().toSize());
    const QRect whole = area.toAlignedRect();
    const QRect bounds = dirty.isEmpty() ? whole : dirty.boundingRect().intersected(whole);
    for (int top = bounds.top(); top <= bounds.bottom(); top += kBandRows) {
        const QRect band(bounds.left(), top, bounds.width(), std::min(kBandRows, bounds.bottom() - top + 1));
        if (!dirty.isEmpty() && !dirty.intersects(band)) continue;
        painter.save();
        painter.setClipRect(area, Qt::IntersectClip);
        painter.setClipRect(band, Qt::IntersectClip);
        switch (theme_) {
        case AnimationTheme::tiles: paintTiles(painter, area, seconds); break;
        case AnimationTheme::mosaic: paintMosaic(painter, area, seconds); break;
        case AnimationTheme::lanes: paintLanes(painter, area, seconds, band); break;
        case AnimationTheme::horizon: paintHorizon(painter, area, seconds); break;
        }
        painter.restore();
    }
}

QRegion WorkloadAnimation::changed(const QRectF& area, double from, double to) const {
    const QRect whole = area.toAlignedRect();
    switch (theme_) {
    case AnimationTheme::tiles: {
        const double a = from * kTilesPerSecond;
        const double b = to * kTilesPerSecond;
        // A new cycle starts from an empty frame.
        if (std::floor(a / kTileCount) != std::floor(b / kTileCount)) return whole;
        QRegion region;
        const int first = int(std::fmod(a, kTileCount));
        const int last = int(std::fmod(b, kTileCount));
        for (int index = first; index <= last; ++index)
            region += tileRect(area, index).adjusted(-2, -2, 2, 2);
        return region.intersected(whole);
    }
    case AnimationTheme::mosaic: {
        const int x0 = mosaicFront(area, from);
        const int x1 = mosaicFront(area, to);
        if (x1 < x0) return whole;
        const int margin = kFrontCells * kCellSize + 4;
        return QRegion(QRect(x0 - margin, whole.top(), x1 - x0 + 2 * margin, whole.height()))
            .intersected(whole);
    }
    case AnimationTheme::lanes: {
        // The strips the items move along. One rectangle per strip keeps each row of the
        // repaint a single span, which the raster engine fills on this thread.
        QRegion region;
        for (int lane = 0; lane < kLaneCount; ++lane) {
            const QRectF box = laneItemBox(area, lane, 0, to);
            region += QRectF(area.left(), box.top(), area.width(), box.height())
                          .toAlignedRect()
                          .adjusted(0, -1, 0, 1);
        }
        return region.intersected(whole);
    }
    case AnimationTheme::horizon: break;
    }
    return whole;
}

void WorkloadAnimation::paintTiles(QPainter& painter, const QRectF& area, double seconds) const {
    painter.fillRect(area, shade(0.045, 0.052, 0.060));
    const double position = std::fmod(std::max(seconds, 0.0) * kTilesPerSecond, kTileCount);
    const int active = int(position);
    const double fraction = position - active;
    const QPointF origin = area.topLeft();
    const auto blit = [&](const QRect& target) {
        painter.drawImage(target, finished_, target.translated(-origin.toPoint()));
    };
    const int fullRows = active / kTileColumns;
    if (fullRows > 0) blit(tileRect(area, 0).united(tileRect(area, fullRows * kTileColumns - 1)));
    if (active % kTileColumns > 0)
        blit(tileRect(area, fullRows * kTileColumns).united(tileRect(area, active - 1)));

    // The bucket in progress: rendered down to the scan line.
    const QRect bucket = tileRect(area, active);
    const int scan = bucket.top() + int(bucket.height() * fraction);
    if (scan > bucket.top()) blit(QRect(bucket.left(), bucket.top(), bucket.width(), scan - bucket.top()));
    painter.fillRect(QRect(bucket.left(), scan, bucket.width(), 2), withAlpha(accent_, 0.9));

    painter.setPen(QPen(QColor(255, 255, 255, 14), 1));
    for (int c = 1; c < kTileColumns; ++c) {
        const int x = tileRect(area, c).left();
        painter.drawLine(x, int(area.top()), x, int(area.bottom()));
    }
    for (int r = 1; r < kTileRows; ++r) {
        const int y = tileRect(area, r * kTileColumns).top();
        painter.drawLine(int(area.left()), y, int(area.right()), y);
    }
    // Corner brackets mark the bucket, as render views do.
    painter.setPen(QPen(accent_, 2));
    const int arm = std::max(4, bucket.width() / 4);
    const QRect b = bucket.adjusted(1, 1, -1, -1);
    painter.drawPolyline(
        QPolygon({QPoint(b.left(), b.top() + arm), b.topLeft(), QPoint(b.left() + arm, b.top())}));
    painter.drawPolyline(
        QPolygon({QPoint(b.right() - arm, b.top()), b.topRight(), QPoint(b.right(), b.top() + arm)}));
    painter.drawPolyline(
        QPolygon({QPoint(b.left(), b.bottom() - arm), b.bottomLeft(), QPoint(b.left() + arm, b.bottom())}));
    painter.drawPolyline(QPolygon(
        {QPoint(b.right() - arm, b.bottom()), b.bottomRight(), QPoint(b.right(), b.bottom() - arm)}));
}

void WorkloadAnimation::paintMosaic(QPainter& painter, const QRectF& area, double seconds) const {
    const QRect whole = area.toAlignedRect();
    const int front = std::clamp(mosaicFront(area, seconds), whole.left(), whole.right() + 1);
    const QPoint origin = whole.topLeft();
    if (front > whole.left()) {
        const QRect done(whole.left(), whole.top(), front - whole.left(), whole.height());
        painter.drawImage(done, finished_, done.translated(-origin));
    }
    if (front <= whole.right()) {
        const QRect raw(front, whole.top(), whole.right() - front + 1, whole.height());
        painter.drawImage(raw, mosaic_, raw.translated(-origin));
    }
    // The demosaic kernel: a band of cells being read, with the 3 x 3 neighbourhood it
    // gathers for the cell it works on.
    const int band = kFrontCells * kCellSize;
    painter.fillRect(QRect(front, whole.top(), band, whole.height()), withAlpha(accent_, 0.16));
    painter.fillRect(QRect(front - 1, whole.top(), 2, whole.height()), withAlpha(accent_, 0.95));
    const double rows = whole.height() / double(kCellSize);
    const int row = int(cyclePosition(seconds, 1.3) * rows);
    const QRect kernel(front, whole.top() + row * kCellSize - kCellSize, band, band);
    painter.setPen(QPen(QColor(255, 255, 255, 220), 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(kernel);
}

void WorkloadAnimation::paintLanes(QPainter& painter, const QRectF& area, double seconds,
                                   const QRect& band) const {
    const QPoint origin = area.toAlignedRect().topLeft();
    painter.drawImage(band, finished_, band.translated(-origin));
    const QRectF kernel = laneKernel(area);
    painter.setPen(Qt::NoPen);
    for (int lane = 0; lane < kLaneCount; ++lane) {
        for (int item = 0; item < kItemsPerLane; ++item) {
            const QRectF box = laneItemBox(area, lane, item, seconds);
            if (!box.intersects(band)) continue;
            const bool computing = box.intersects(kernel);
            const bool done = box.left() > kernel.right();
            painter.setBrush(computing ? accent_ : withAlpha(accent_, done ? 0.55 : 0.22));
            painter.drawRoundedRect(box, 4, 4);
        }
    }
}

void WorkloadAnimation::paintHorizon(QPainter& painter, const QRectF& area, double seconds) const {
    const qreal horizon = area.top() + area.height() * 0.52;
    QLinearGradient sky(area.topLeft(), QPointF(area.left(), horizon));
    sky.setColorAt(0, shade(0.015, 0.025, 0.035));
    sky.setColorAt(1, shade(0.04, 0.09, 0.105));
    painter.fillRect(QRectF(area.left(), area.top(), area.width(), horizon - area.top()), sky);
    painter.fillRect(QRectF(area.left(), horizon, area.width(), area.bottom() - horizon),
                     shade(0.025, 0.06, 0.062));
    painter.setPen(QPen(withAlpha(accent_, 0.5), 1));
    const double drift = cyclePosition(seconds, 1.0 / 1.45);
    for (int i = 0; i < 10; ++i) {
        const qreal y = horizon + (area.bottom() - horizon) * std::pow((i + drift) / 10.0, 2.0);
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
    const QPointF vanish(area.center().x(), horizon);
    for (int i = -8; i <= 8; ++i)
        painter.drawLine(vanish, QPointF(area.center().x() + i * area.width() * 0.14, area.bottom()));
    const qreal radius = area.height() * 0.34;
    painter.setPen(QPen(withAlpha(shade(0.08, 0.72, 0.78), 0.9), 4));
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(QRectF(vanish.x() - radius, horizon - radius * 0.8, radius * 2, radius * 2), 0, 180 * 16);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade(0.95, 0.72, 0.28));
    for (int i = 0; i < 7; ++i) {
        const double fi = i;
        const QPointF spark(
            area.center().x() + std::sin(seconds * (0.42 + fi * 0.09) + fi) * area.width() * 0.42,
            area.top() + area.height() * (0.3 + 0.18 * std::cos(seconds * (0.32 + fi * 0.11) + fi * 2.1)));
        painter.drawEllipse(spark, 3, 3);
    }
}

} // namespace quarbel::ui
