// SPDX-License-Identifier: Apache-2.0
#include "ui/cards/result_card_exporter.h"

#include "ui/cards/card_parts.h"
#include "ui/cards/result_card.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QSaveFile>

namespace quarbel::cards::ResultCardExporter {
namespace {

// Light zlib compression: the cards are mostly flat colour, so the files stay small while
// encoding takes a fraction of the default level's time.
constexpr int kPngQuality = 70;

} // namespace

QString renderErrorText() { return QStringLiteral("Quarbel could not render the PNG card."); }

QString benchmarkCardPrefix(BenchmarkID id) {
    return QStringLiteral("Quarbel-") + parts::qstring(title(id)) + QStringLiteral("-Result");
}

QString summaryCardPrefix() { return QStringLiteral("Quarbel-Global-Result"); }

QString filename(const QString& prefix, const QDateTime& now) {
    static const QRegularExpression disallowed(QStringLiteral("[^A-Za-z0-9._-]+"));
    // The C locale writes the same digits everywhere, as the POSIX locale does.
    static const QLocale posix = QLocale::c();
    QString name = prefix;
    name.replace(disallowed, QStringLiteral("-"));
    qsizetype start = 0;
    qsizetype end = name.size();
    while (start < end && name[start] == QLatin1Char('-'))
        ++start;
    while (end > start && name[end - 1] == QLatin1Char('-'))
        --end;
    return name.mid(start, end - start) + QLatin1Char('-') +
           posix.toString(now.toLocalTime(), QStringLiteral("yyyy-MM-dd-HHmm")) + QStringLiteral(".png");
}

std::optional<QString> writePNG(const QImage& image, const QString& path) {
    if (image.isNull()) return renderErrorText();
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG", kPngQuality) || png.isEmpty())
        return renderErrorText();

    // QSaveFile would rename its temporary file over a device or a pipe.
    const QFileInfo target(path);
    if (target.exists() && !target.isFile()) return QStringLiteral("%1 is not a regular file").arg(path);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    if (file.write(png) != png.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return reason;
    }
    if (!file.commit()) return file.errorString();
    return std::nullopt;
}

CardsWritten writeReportCards(const RunReport& report, const QString& directory, const QDateTime& now) {
    CardsWritten written;
    const QDir dir(directory);
    const SystemTimePoint generatedAt = std::chrono::system_clock::from_time_t(now.toSecsSinceEpoch());
    const auto write = [&](const QImage& image, const QString& prefix) {
        const QString path = dir.filePath(filename(prefix, now));
        if (auto problem = writePNG(image, path)) {
            written.problem = path + QStringLiteral(": ") + *problem;
            return false;
        }
        written.paths.push_back(path);
        return true;
    };
    if (const auto summary = summaryCard(report, generatedAt))
        if (!write(renderSummaryCard(*summary), summaryCardPrefix())) return written;
    for (const BenchmarkCardContent& card : benchmarkCards(report, generatedAt))
        if (!write(renderBenchmarkCard(card), benchmarkCardPrefix(card.id))) return written;
    return written;
}

} // namespace quarbel::cards::ResultCardExporter
