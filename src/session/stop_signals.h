// SPDX-License-Identifier: Apache-2.0
// Turns SIGINT, SIGTERM and SIGHUP into a Qt signal on the main thread, through a
// self-pipe, so that a stop request runs ordinary code rather than a signal handler.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace quarbel::session {

// SIGPIPE and SIGXFSZ would end the process in the middle of a write and leave the
// storage scratch files behind. Ignored, the write fails with EPIPE or EFBIG instead and
// the caller handles it. Call first thing in main().
void ignoreWriteFaultSignals();

class StopSignals : public QObject {
    Q_OBJECT
  public:
    // Installs the handlers for the life of the process; construct once, on the main thread.
    explicit StopSignals(QObject* parent = nullptr);

    int received() const { return received_; }

  Q_SIGNALS:
    // Once per SIGINT, SIGTERM or SIGHUP; `count` is 1 for the first, 2 for the second, ...
    // and `signalNumber` the signal that arrived.
    void stopRequested(int count, int signalNumber);

  private:
    void drain();

    std::unique_ptr<QSocketNotifier> notifier_;
    int received_ = 0;
};

} // namespace quarbel::session
