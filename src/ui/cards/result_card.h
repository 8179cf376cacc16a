// SPDX-License-Identifier: Apache-2.0
// The two result cards drawn with QPainter onto a QImage at device pixel ratio 1, so the
// PNG has exactly the card's size in pixels. Needs a QGuiApplication (the offscreen
// platform will do) for the fonts; main thread.
#pragma once

#include "ui/cards/card_content.h"

#include <QImage>
#include <QSize>

class QPainter;

namespace quarbel::cards {

inline constexpr QSize kBenchmarkCardSize{1400, 900};
inline constexpr QSize kSummaryCardSize{1500, 1220};

// "Quarbel Result Card": one benchmark's outcome, the temperatures when it ended and the
// machine. A null image when no image could be made.
QImage renderBenchmarkCard(const BenchmarkCardContent& content);

// "Quarbel Global Result Card": the run summary, a row for each of the thirteen
// benchmarks and the ones skipped or failed, with their reasons.
QImage renderSummaryCard(const SummaryCardContent& content);

// The same cards drawn with any painter whose device is at least the card's size.
void paintBenchmarkCard(QPainter& painter, const BenchmarkCardContent& content);
void paintSummaryCard(QPainter& painter, const SummaryCardContent& content);

// The texts the cards show for values (exposed for the tests of what a card says).
QString cardDurationText(double seconds);                            // "15.02s"
QString summaryDurationText(double seconds);                         // "42.0s" under a minute, else "3.5m"
QString temperaturePairText(const TemperatureSnapshot& temperature); // "48 °C / Unavailable"
QString rowStatusText(TestRunState state);                           // "Not Run", "Running", "Completed", ...

} // namespace quarbel::cards
