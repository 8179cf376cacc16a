// SPDX-License-Identifier: Apache-2.0
// The run's log as the window shows it: the newest lines, each stamped with the local time.
#pragma once

#include <QStringList>
#include <QTime>

namespace quarbel {

class RunLog {
  public:
    static constexpr int kCapacity = 14;

    RunLog() : lines_{QStringLiteral("Quarbel ready")} {}

    // Adds "[HH:mm:ss] text" (24-hour clock), dropping the oldest lines beyond the capacity;
    // returns the line as added.
    QString append(const QString& text, const QTime& now);
    const QStringList& lines() const { return lines_; }

  private:
    QStringList lines_;
};

} // namespace quarbel
