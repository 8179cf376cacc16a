// SPDX-License-Identifier: Apache-2.0
// A store over scriptable fake workloads, and the main window over one, with the runs and
// waits the window tests share.
#pragma once

#include "run/benchmark_store.h"
#include "run/fake_workloads.h"
#include "support/event_loop.h"
#include "ui/views/accessibility.h"
#include "ui/views/main_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>

#include <functional>
#include <vector>

namespace quarbel::test {

// Runs the event loop until the program quits, after `trigger`; false when it outlives
// `timeoutMs` or exits with an error.
inline bool quitsAfter(const std::function<void()>& trigger, int timeoutMs = 10'000) {
    QTimer::singleShot(0, trigger);
    QTimer guard; // ends the event loop if the program does not quit
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    guard.start(timeoutMs);
    return QApplication::exec() == 0;
}

struct FakeStore {
    // `adjust` changes the store's services before the store is made.
    explicit FakeStore(const std::function<void(StoreServices&)>& adjust = {})
        : store([&] {
              StoreServices services = fakes.services();
              if (adjust) adjust(services);
              return services;
          }()) {}

    bool waitIdle(int timeoutMs = 5000) {
        return processEventsUntil([&] { return !store.busy(); }, timeoutMs);
    }
    // Runs `ids` to their end, each scoring `score`.
    void run(const std::vector<BenchmarkID>& ids, double score = 100) {
        for (BenchmarkID id : ids)
            fakes.set(id, FakeBehaviour::instantOk, score);
        store.run(ids, false);
        ASSERT_TRUE(waitIdle());
    }
    // Runs `id` as it is set up and stops the run while it goes on.
    void stopped(BenchmarkID id) {
        fakes.set(id, FakeBehaviour::untilCancelled);
        store.run({id}, false);
        ASSERT_TRUE(processEventsUntil([&] { return fakes.running() == 1; }));
        store.stop();
        ASSERT_TRUE(waitIdle());
    }

    FakeWorkloads fakes;
    BenchmarkStore store;
};

// The main window, shown, over a FakeStore; `accessible` installs the accessibility
// interfaces first, as the program does before it makes its views.
struct Window : FakeStore {
    explicit Window(const std::function<void(StoreServices&)>& adjust = {}, QSize size = {},
                    bool accessible = false)
        : FakeStore(adjust), window((accessible ? ui::installAccessibility(store) : void(), store)) {
        if (size.isValid()) window.resize(size);
        window.show();
    }
    ui::MainWindow window;
};

} // namespace quarbel::test
