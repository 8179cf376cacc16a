// SPDX-License-Identifier: Apache-2.0
// The fixed colours of the result cards, which the window's views share, so that a card
// looks like the window it came from.
#pragma once

#include "model/catalogue.h"
#include "model/outcome.h"

#include <QColor>

namespace quarbel::cards::ResultCardPalette {

QColor background(); // the card and window background
QColor panel();      // a raised panel
QColor panelAlt();   // a row or tile inside a panel
QColor border();     // panel outlines
QColor text();       // primary text
QColor secondary();  // labels and descriptions
QColor muted();      // hints and section titles

// The accent of a category's benchmarks.
QColor accent(BenchmarkCategory category);
// The colour of a row state: its status pill, its sidebar mark.
QColor stateColor(TestRunState state);

} // namespace quarbel::cards::ResultCardPalette
