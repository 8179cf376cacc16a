// SPDX-License-Identifier: Apache-2.0
// Makes the painted views readable by screen readers: installs the interfaces that give
// them roles, names, values and states, and that send their changes as the store's state
// moves on. Call once the store exists and before its views are shown; it lasts as long
// as the store.
#pragma once

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

void installAccessibility(BenchmarkStore& store);

} // namespace quarbel::ui
