// SPDX-License-Identifier: Apache-2.0
// The one page a run is shared as, from `quarbel share` and from the window's Share button:
// the export's tables, charts and traces, the machine's system rows and manifest, and the
// report itself embedded for `quarbel import`.
#pragma once

#include "results/run_report.h"

#include <string>

namespace quarbel::cards {

// `reportText` is the report's file as kept, `report` the same parsed; `path` names it in the
// page. Needs a QGuiApplication (the offscreen platform will do); main thread.
std::string sharedPage(const std::string& path, const std::string& reportText, RunReport report);

} // namespace quarbel::cards
