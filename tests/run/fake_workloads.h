// SPDX-License-Identifier: Apache-2.0
// Scriptable workloads and sensors for driving BenchmarkStore through whole runs.
#pragma once

#include "run/benchmark_store.h"
#include "support/temp_dir.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace quarbel::test {

// steady: reports progress for 0.8 s of real time, on a clock that runs ten times faster,
// then ends ok.
enum class FakeBehaviour { instantOk, failing, skipping, untilCancelled, gated, steady };

// Runs of this test process mark themselves here, where neither a real Quarbel run nor
// another test process sees them; removed when the process ends.
inline const std::string& privateRunLockDirectory() {
    static const TempDir directory;
    static const std::string path = directory.path().string();
    return path;
}

// Each benchmark behaves as configured; a gated one blocks until release() or cancellation.
class FakeWorkloads {
  public:
    FakeWorkloads() {
        behaviours_.fill(FakeBehaviour::instantOk);
        scores_.fill(100);
    }

    void set(BenchmarkID id, FakeBehaviour behaviour, double score = 100) {
        behaviours_[indexOf(id)] = behaviour;
        scores_[indexOf(id)] = score;
    }
    // Scores handed out one per pass, in order, before falling back to the configured score.
    void queueScores(BenchmarkID id, std::deque<double> scores) {
        std::lock_guard lock(mutex_);
        queued_[indexOf(id)] = std::move(scores);
    }
    void release() {
        {
            std::lock_guard lock(mutex_);
            released_ = true;
        }
        changed_.notify_all();
    }
    int calls(BenchmarkID id) const { return calls_[indexOf(id)].load(); }
    int cancelledSeen() const { return cancelledSeen_.load(); }
    int running() const { return running_.load(); }

    BenchmarkOutcome run(BenchmarkID id, const WorkloadContext& context) {
        ++calls_[indexOf(id)];
        ++running_;
        struct Leave {
            std::atomic<int>& counter;
            ~Leave() { --counter; }
        } leave{running_};
        double score = scores_[indexOf(id)];
        if (std::lock_guard lock(mutex_); !queued_[indexOf(id)].empty()) {
            score = queued_[indexOf(id)].front();
            queued_[indexOf(id)].pop_front();
        }
        switch (behaviours_[indexOf(id)]) {
        case FakeBehaviour::failing: return failedOutcome("Disk exploded.");
        case FakeBehaviour::skipping: return skippedOutcome("No device here.");
        case FakeBehaviour::untilCancelled:
        case FakeBehaviour::steady: {
            const bool steady = behaviours_[indexOf(id)] == FakeBehaviour::steady;
            const auto start = std::chrono::steady_clock::now();
            for (std::int64_t units = 1; !context.cancelled(); ++units) {
                const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
                if (steady && spent.count() >= 0.8) break;
                context.reportProgress(
                    units, steady ? 10 * spent.count() : 0.001 * static_cast<double>(units), "units");
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            if (!steady) ++cancelledSeen_;
            return okOutcome(score);
        }
        case FakeBehaviour::gated: {
            std::unique_lock lock(mutex_);
            while (!released_ && !context.cancelled())
                changed_.wait_for(lock, std::chrono::milliseconds(2));
            if (context.cancelled()) ++cancelledSeen_;
            break;
        }
        case FakeBehaviour::instantOk: break;
        }
        context.reportProgress(1, 0.001, "units");
        return okOutcome(score);
    }

    StoreServices services(std::function<QLTemperatureReading()> reader = {}) {
        StoreServices services;
        services.runWorkload = [this](BenchmarkID id, const WorkloadContext& context) {
            return run(id, context);
        };
        services.readTemperatures = reader ? std::move(reader) : [] {
            return QLTemperatureReading{0, 0, 0, 0};
        };
        services.readCondition = [] { return MachineCondition{}; };
        services.readThrottle = [] { return ThrottleSample{}; };
        // Whatever else the test machine runs must not mark a fake run noisy.
        services.readCpuTicks = [] { return std::optional<CpuTickSample>{}; };
        services.runLockDirectory = privateRunLockDirectory();
        return services;
    }

    static BenchmarkOutcome okOutcome(double score) {
        return {
            OutcomeStatus::ok,       score, {"Rate", "12.50", "GB/s"}, MeasurementLine{"Ops", "3", ""}, 0.5,
            "Fake work. Checksum 1."};
    }

  private:
    std::array<FakeBehaviour, kBenchmarkCount> behaviours_{};
    std::array<double, kBenchmarkCount> scores_{};
    std::array<std::deque<double>, kBenchmarkCount> queued_{};
    std::array<std::atomic<int>, kBenchmarkCount> calls_{};
    std::atomic<int> cancelledSeen_{0};
    std::atomic<int> running_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool released_ = false;
};

} // namespace quarbel::test
