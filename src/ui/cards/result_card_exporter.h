// SPDX-License-Identifier: Apache-2.0
// Naming, encoding and writing result cards: the one path from a card's content to a PNG
// file, shared by the window's save buttons and the command line.
#pragma once

#include "ui/cards/card_content.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

namespace quarbel::cards::ResultCardExporter {

// What a card that could not be made or encoded reports.
QString renderErrorText(); // "Quarbel could not render the PNG card."

// "Quarbel-" + the benchmark's title + "-Result", and "Quarbel-Global-Result".
QString benchmarkCardPrefix(BenchmarkID id);
QString summaryCardPrefix();

// The suggested file name: each run of characters outside [A-Za-z0-9._-] in `prefix`
// becomes one "-", dashes are trimmed from both ends, then "-", the local time as
// "yyyy-MM-dd-HHmm" and ".png". Two saves in the same minute get the same name.
QString filename(const QString& prefix, const QDateTime& now = QDateTime::currentDateTime());

// Encodes `image` as PNG and replaces `path` atomically through QSaveFile: the old file
// stays intact on any failure. A path that names something other than a regular file (a
// device, a directory) is refused. Returns the reason on failure: renderErrorText() when
// there is no image or no PNG, else the system's description.
std::optional<QString> writePNG(const QImage& image, const QString& path);

struct CardsWritten {
    QStringList paths;              // every file written, in order
    std::optional<QString> problem; // the first failure; nothing after it is written
};

// Renders and writes the global card (when the report has a summary) and one card per
// result of `report` into `directory`, named by filename() at `now`.
CardsWritten writeReportCards(const RunReport& report, const QString& directory,
                              const QDateTime& now = QDateTime::currentDateTime());

} // namespace quarbel::cards::ResultCardExporter
