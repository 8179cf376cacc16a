// SPDX-License-Identifier: Apache-2.0
#include "session/stop_signals.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace quarbel::session {
namespace {

int pipeFds[2] = {-1, -1};

extern "C" void onStopSignal(int signalNumber) {
    const int saved = errno;
    // Signal numbers fit in one byte; the reader learns which signal arrived.
    const auto byte = static_cast<unsigned char>(signalNumber);
    [[maybe_unused]] const ssize_t ignored = ::write(pipeFds[1], &byte, 1);
    errno = saved;
}

} // namespace

void ignoreWriteFaultSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

StopSignals::StopSignals(QObject* parent) : QObject(parent) {
    if (pipeFds[0] < 0 && ::pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(pipeFds[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &StopSignals::drain);
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signalNumber, &action, nullptr);
}

void StopSignals::drain() {
    unsigned char buffer[16];
    ssize_t n = 0;
    while ((n = ::read(pipeFds[0], buffer, sizeof buffer)) > 0) {
        for (ssize_t i = 0; i < n; ++i)
            Q_EMIT stopRequested(++received_, buffer[i]);
    }
}

} // namespace quarbel::session
