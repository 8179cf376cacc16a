// SPDX-License-Identifier: Apache-2.0
// Runs work on its own thread and hands the result back on the receiver's thread.
// The destructor joins every thread still running, so a result is never delivered to
// a receiver that is gone: cancel long work before destroying this.
#pragma once

#include <QObject>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace quarbel {

// Results wait here under a mutex until the receiver's event loop collects them. The
// hand-over is ours rather than a posted functor, so a thread checker sees it.
class CompletionMailbox : public QObject {
    Q_OBJECT
  public:
    explicit CompletionMailbox(QObject* receiver);

    // Any thread: queues `completion` and wakes the receiver's thread.
    void post(std::function<void()> completion);

    // The receiver's thread: runs every queued completion in the order posted.
    Q_INVOKABLE void deliver();

  private:
    std::mutex mutex_;
    std::vector<std::function<void()>> pending_;
};

class BackgroundTasks {
  public:
    explicit BackgroundTasks(QObject* receiver);
    ~BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;

    // Calls `work()` on a new thread, then `done(result)` on the receiver's thread. When
    // no thread can be started (a process or memory limit), neither is called and the
    // reason comes back instead, e.g. "Resource temporarily unavailable".
    template <class Work, class Done> [[nodiscard]] std::optional<std::string> start(Work work, Done done) {
        std::lock_guard lock(mutex_);
        const std::uint64_t key = nextKey_++;
        try {
            // The list entry first: once the thread runs, nothing may throw and leave it unowned.
            threads_.emplace_back(key, std::thread());
        } catch (const std::bad_alloc&) {
            return std::generic_category().message(ENOMEM);
        }
        try {
            threads_.back().second =
                std::thread([this, key, work = std::move(work), done = std::move(done)]() mutable {
                    auto result = work();
                    mailbox_->post([this, key, done = std::move(done), result = std::move(result)]() mutable {
                        reap(key);
                        done(std::move(result));
                    });
                });
        } catch (const std::system_error& error) {
            threads_.pop_back();
            return error.code().message();
        } catch (const std::bad_alloc&) {
            threads_.pop_back();
            return std::generic_category().message(ENOMEM);
        }
        return std::nullopt;
    }

    void joinAll();

  private:
    // The thread has posted its result and is about to end; joining it is quick.
    void reap(std::uint64_t key);

    std::unique_ptr<CompletionMailbox> mailbox_;
    std::mutex mutex_;
    std::uint64_t nextKey_ = 1;
    std::list<std::pair<std::uint64_t, std::thread>> threads_;
};

} // namespace quarbel
