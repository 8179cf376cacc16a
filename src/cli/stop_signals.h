// Turns SIGINT and SIGTERM into a Qt signal on the main thread, through a self-pipe,
// so that a stop request runs ordinary code rather than a signal handler.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace quarbel::cli {

class StopSignals : public QObject {
    Q_OBJECT
  public:
    // Installs the handlers for the life of the process; construct once, on the main thread.
    explicit StopSignals(QObject* parent = nullptr);

    int received() const { return received_; }

  Q_SIGNALS:
    // Once per SIGINT or SIGTERM; `count` is 1 for the first, 2 for the second, ...
    void stopRequested(int count);

  private:
    void drain();

    std::unique_ptr<QSocketNotifier> notifier_;
    int received_ = 0;
};

} // namespace quarbel::cli
