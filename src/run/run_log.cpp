// SPDX-License-Identifier: Apache-2.0
#include "run/run_log.h"

namespace quarbel {

QString RunLog::append(const QString& text, const QTime& now) {
    const QString line = QStringLiteral("[%1] %2").arg(now.toString(QStringLiteral("HH:mm:ss")), text);
    lines_.append(line);
    while (lines_.size() > kCapacity)
        lines_.removeFirst();
    return line;
}

} // namespace quarbel
