// SPDX-License-Identifier: Apache-2.0
#include "run/background_tasks.h"

#include <QMetaObject>

namespace quarbel {

CompletionMailbox::CompletionMailbox(QObject* receiver) { moveToThread(receiver->thread()); }

void CompletionMailbox::post(std::function<void()> completion) {
    bool wasEmpty = false;
    {
        std::lock_guard lock(mutex_);
        wasEmpty = pending_.empty();
        pending_.push_back(std::move(completion));
    }
    // One wake-up per batch: deliver() takes everything queued before it runs.
    if (wasEmpty) QMetaObject::invokeMethod(this, "deliver", Qt::QueuedConnection);
}

void CompletionMailbox::deliver() {
    std::vector<std::function<void()>> batch;
    {
        std::lock_guard lock(mutex_);
        batch.swap(pending_);
    }
    for (auto& completion : batch)
        completion();
}

BackgroundTasks::BackgroundTasks(QObject* receiver)
    : mailbox_(std::make_unique<CompletionMailbox>(receiver)) {}

BackgroundTasks::~BackgroundTasks() { joinAll(); }

void BackgroundTasks::joinAll() {
    std::list<std::pair<std::uint64_t, std::thread>> threads;
    {
        std::lock_guard lock(mutex_);
        threads.swap(threads_);
    }
    for (auto& entry : threads)
        entry.second.join();
}

void BackgroundTasks::reap(std::uint64_t key) {
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

} // namespace quarbel
