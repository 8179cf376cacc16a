// `quarbel card`: turns a saved JSON report into result cards, so that a run on a
// server without a display can be shared later; and the cards of `quarbel run --cards`.
#pragma once

#include "ui/run_report.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <string>

namespace quarbel::cli {

// The application object of a command: a QGuiApplication on the offscreen platform when
// it draws cards (fonts need one; no display is used or needed), else a QCoreApplication.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool drawsCards);

// Renders and writes the cards of `report` into `directory`, naming each file written on
// `out`. Returns the exit status: 0, or 1 with the reason on standard error. Needs the
// application of makeApplication(..., true).
int writeCards(const RunReport& report, const std::string& directory, std::FILE* out);

// The whole `quarbel card REPORT --out DIR` command: exit 2 for a report that cannot be
// read or is not a report and for a directory that cannot be written, before any card.
int cardCommand(const std::string& reportPath, const std::string& outArgument, int& argc, char** argv);

} // namespace quarbel::cli
