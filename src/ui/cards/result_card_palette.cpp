// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/result_card_palette.h"

namespace quarbel::cards::ResultCardPalette {
namespace {

QColor rgb(double red, double green, double blue) {
    return QColor::fromRgbF(float(red), float(green), float(blue));
}
QColor white(double opacity) { return QColor::fromRgbF(1, 1, 1, float(opacity)); }

} // namespace

QColor background() { return rgb(0.022, 0.026, 0.030); }
QColor panel() { return rgb(0.075, 0.084, 0.094); }
QColor panelAlt() { return white(0.05); }
QColor border() { return white(0.11); }
QColor text() { return white(0.94); }
QColor secondary() { return white(0.62); }
QColor muted() { return white(0.44); }

QColor accent(BenchmarkCategory category) {
    const CategoryColor c = categoryColor(category);
    return rgb(c.red, c.green, c.blue);
}

QColor stateColor(TestRunState state) {
    switch (state) {
    case TestRunState::idle: return muted();
    case TestRunState::running: return rgb(0.13, 0.79, 0.88);
    case TestRunState::done: return rgb(0.36, 0.84, 0.52);
    case TestRunState::skipped: return rgb(0.95, 0.75, 0.30);
    case TestRunState::failed: return rgb(0.96, 0.38, 0.40);
    }
    return muted();
}

} // namespace quarbel::cards::ResultCardPalette
