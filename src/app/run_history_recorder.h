// SPDX-License-Identifier: Apache-2.0
// Keeps every run started from the window in the run history, stopped runs included,
// as the same JSON report the command line writes.
#pragma once

#include "model/outcome.h"

#include <QObject>

#include <string>

namespace quarbel {

class BenchmarkStore;

namespace app {

class RunHistoryRecorder : public QObject {
    Q_OBJECT
  public:
    // `directory` empty: nothing is kept. `store` must outlive this object.
    RunHistoryRecorder(BenchmarkStore& store, std::string directory, QObject* parent = nullptr);

  Q_SIGNALS:
    // A run was kept at `path`.
    void runKept(const QString& path);

  private:
    void onBusyChanged();

    BenchmarkStore& store_;
    std::string directory_;
    bool running_ = false;
    bool accuracy_ = false;
    bool quick_ = false;
    SystemTimePoint startedAt_{};
};

} // namespace app
} // namespace quarbel
