// SPDX-License-Identifier: Apache-2.0
// The themed pictures of the benchmarks that run outside the main window: tiles being
// rendered (tile renderer), a Bayer mosaic being demosaiced (RAW decodes), lanes of work
// (GPU compute) and a horizon fly-over (visual benchmark). Time alone drives a picture, so
// painting one never reads anything of the workload.
#pragma once

#include "model/catalogue.h"

#include <QColor>
#include <QImage>
#include <QRectF>
#include <QRegion>

class QPainter;

namespace quarbel::ui {

enum class AnimationTheme { tiles, mosaic, lanes, horizon };

AnimationTheme animationTheme(BenchmarkID id);

class WorkloadAnimation {
  public:
    explicit WorkloadAnimation(BenchmarkID id);

    AnimationTheme theme() const { return theme_; }

    // Paints the picture at `seconds` into `area` (whole pixels work best), or only the
    // part of it inside `dirty` when that is given.
    void paint(QPainter& painter, const QRectF& area, double seconds, const QRegion& dirty = {});

    // The part of `area` that differs between the pictures at `from` and at `to`; repainting
    // only that keeps an animation frame cheap.
    QRegion changed(const QRectF& area, double from, double to) const;

  private:
    void prepareImages(const QSize& size);
    void paintTiles(QPainter& painter, const QRectF& area, double seconds) const;
    void paintMosaic(QPainter& painter, const QRectF& area, double seconds) const;
    // Draws the items that reach into `band`, over the empty lanes.
    void paintLanes(QPainter& painter, const QRectF& area, double seconds, const QRect& band) const;
    void paintHorizon(QPainter& painter, const QRectF& area, double seconds) const;

    AnimationTheme theme_;
    QColor accent_;
    // At the area's size: the finished picture (the empty lanes for the lanes) and, for the
    // mosaic, the sensor's view of it.
    QImage finished_;
    QImage mosaic_;
};

} // namespace quarbel::ui
