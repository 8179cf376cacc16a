// SPDX-License-Identifier: Apache-2.0
// The result cards of a finished run written into a directory, for `quarbel run --cards`,
// `quarbel card` and `quarbel-gui --run`, and the application object that drawing them needs.
#pragma once

#include "results/run_report.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <string>

namespace quarbel::session {

// The application object of a command: a QGuiApplication on the offscreen platform when
// it draws cards (fonts need one; no display is used or needed), else a QCoreApplication.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool drawsCards);

// Renders and writes the cards of `report` into `directory`, naming each file written on
// `out`. Returns the exit status: 0, or 1 with the reason on standard error. Needs the
// application of makeApplication(..., true).
int writeCards(const RunReport& report, const std::string& directory, std::FILE* out);

} // namespace quarbel::session
