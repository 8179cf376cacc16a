// SPDX-License-Identifier: Apache-2.0
// The question a run asked for in the window meets when another Quarbel run goes on: wait for
// it, run anyway, or cancel.
#pragma once

#include "run/benchmark_store.h"

#include <QString>
#include <QWidget>

namespace quarbel::app {

// A modal question over `parent` naming `otherRuns`; Wait for It is the default, Esc cancels.
OtherRunsChoice askAboutOtherRuns(QWidget* parent, const QString& otherRuns);

} // namespace quarbel::app
