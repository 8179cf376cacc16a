// Runs work on its own thread and hands the result back on the receiver's thread.
// The destructor joins every thread still running, so a result is never posted to
// a receiver that is gone: cancel long work before destroying this.
#pragma once

#include <QMetaObject>
#include <QObject>

#include <cstdint>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace quarbel {

class BackgroundTasks {
  public:
    explicit BackgroundTasks(QObject* receiver) : receiver_(receiver) {}
    ~BackgroundTasks() { joinAll(); }
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;

    // Calls `work()` on a new thread, then `done(result)` on the receiver's thread.
    template <class Work, class Done> void start(Work work, Done done) {
        std::lock_guard lock(mutex_);
        const std::uint64_t key = nextKey_++;
        threads_.emplace_back(
            key, std::thread([this, key, work = std::move(work), done = std::move(done)]() mutable {
                auto result = work();
                QMetaObject::invokeMethod(
                    receiver_,
                    [this, key, done = std::move(done), result = std::move(result)]() mutable {
                        reap(key);
                        done(std::move(result));
                    },
                    Qt::QueuedConnection);
            }));
    }

    void joinAll() {
        std::list<std::pair<std::uint64_t, std::thread>> threads;
        {
            std::lock_guard lock(mutex_);
            threads.swap(threads_);
        }
        for (auto& entry : threads)
            entry.second.join();
    }

  private:
    // The thread has posted its result and is about to end; joining it is quick.
    void reap(std::uint64_t key) {
        std::thread finished;
        {
            std::lock_guard lock(mutex_);
            for (auto it = threads_.begin(); it != threads_.end(); ++it) {
                if (it->first == key) {
                    finished = std::move(it->second);
                    threads_.erase(it);
                    break;
                }
            }
        }
        if (finished.joinable()) finished.join();
    }

    QObject* receiver_;
    std::mutex mutex_;
    std::uint64_t nextKey_ = 1;
    std::list<std::pair<std::uint64_t, std::thread>> threads_;
};

} // namespace quarbel
