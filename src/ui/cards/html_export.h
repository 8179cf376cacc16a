// SPDX-License-Identifier: Apache-2.0
// Runs as one self-contained HTML page: the charts drawn by the same painter as the window's,
// recorded as inline SVG, and the results table with each result's sensor trace under it. No
// scripts and nothing fetched. Lives with the cards because the charts need QtGui; the other
// exports are in results/run_export.h.
#pragma once

#include "results/run_export.h"

#include <QRectF>
#include <QSize>
#include <QString>

#include <functional>
#include <string>
#include <vector>

class QPainter;

namespace quarbel::cards {

// Charts: each run's global score, and each benchmark's score over the runs in the order of
// their start, with its 95 % interval. Needs a QGuiApplication (the offscreen platform will
// do); main thread.
std::string exportHtml(const std::vector<ExportedRun>& runs);

// What `paint` draws into a canvas of `size` pixels, as an <svg> element to stand inside HTML
// (no XML declaration), sized in CSS pixels and titled `title`.
std::string svgElement(QSize size, const QString& title,
                       const std::function<void(QPainter&, const QRectF&)>& paint);

} // namespace quarbel::cards
