// SPDX-License-Identifier: Apache-2.0
// Measures the run controller's own overhead: the time from one workload returning
// to the next one starting, over whole suites of workloads that return at once.
// Prints the median and 90th percentile in milliseconds.
#include "model/workload_context.h"
#include "run/benchmark_store.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <vector>

using namespace quarbel;

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int suites = argc > 1 ? std::atoi(argv[1]) : 50;

    std::mutex mutex;
    std::vector<double> starts;
    std::vector<double> returns;
    StoreServices services;
    services.runWorkload = [&](BenchmarkID, const WorkloadContext&) {
        const double start = monotonicSeconds();
        BenchmarkOutcome outcome{OutcomeStatus::ok, 100,   {"Rate", "1.00", "u"},
                                 std::nullopt,      0.001, "instant"};
        std::lock_guard lock(mutex);
        starts.push_back(start);
        returns.push_back(monotonicSeconds());
        return outcome;
    };
    services.readTemperatures = [] { return QLTemperatureReading{0, 0, 0, 0}; };
    BenchmarkStore store(services);

    int remaining = suites;
    QObject::connect(&store, &BenchmarkStore::busyChanged, [&] {
        if (store.busy()) return;
        if (--remaining > 0) {
            store.runAll();
        } else {
            app.quit();
        }
    });
    store.runAll();
    app.exec();

    std::vector<double> gaps;
    for (std::size_t i = 1; i < starts.size(); ++i) {
        if (i % kBenchmarkCount == 0) continue; // between suites the controller also summarises
        gaps.push_back((starts[i] - returns[i - 1]) * 1000.0);
    }
    std::sort(gaps.begin(), gaps.end());
    if (gaps.empty()) return 1;
    std::printf("workload-to-workload gaps: %zu, median %.3f ms, p90 %.3f ms, max %.3f ms\n", gaps.size(),
                gaps[gaps.size() / 2], gaps[gaps.size() * 9 / 10], gaps.back());
    return 0;
}
