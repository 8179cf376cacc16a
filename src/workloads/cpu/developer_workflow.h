// SPDX-License-Identifier: Apache-2.0
// The developer workflow behind cpuCrypto: every worker mutates a private copy of a
// 256 KiB block and re-hashes all of it with SHA-256, round after round.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quarbel::cpu {

inline constexpr std::int64_t kWorkflowBlockBytes = 262'144;
inline constexpr std::int64_t kWorkflowWarmUpRounds = 2;
inline constexpr std::int64_t kWorkflowRoundsPerBatch = 18;
inline constexpr std::int64_t kWorkflowMaxWorkers = 256; // worker indices are stored as bytes
inline constexpr double kWorkflowBudgetSeconds = 15.0;
inline constexpr double kWorkflowScoreFactor = 2.4; // points per MiB/s

// Byte n is the low 8 bits of (n * 73) XOR (n >> 3).
std::vector<std::uint8_t> makeWorkflowSeed();

// Per-worker state kept across batches so that the timed loop allocates nothing: a block
// buffer and an OpenSSL digest context for each worker. Create before timing; each worker
// slot may be used by one thread at a time.
class WorkflowWorkspace {
  public:
    // Throws std::runtime_error with OpenSSL's reason when SHA-256 is unavailable.
    explicit WorkflowWorkspace(std::int64_t workers);
    ~WorkflowWorkspace();
    WorkflowWorkspace(const WorkflowWorkspace&) = delete;
    WorkflowWorkspace& operator=(const WorkflowWorkspace&) = delete;

    std::int64_t workers() const noexcept { return workers_; }

    // The kernel of worker `worker` (0 ... workers() - 1, at most 255) for `rounds` rounds
    // on a fresh copy of `seed`: returns the XOR of the worker index and each round's
    // first digest byte.
    std::uint8_t runWorker(std::int64_t worker, std::int64_t rounds, std::span<const std::uint8_t> seed);

  private:
    struct Worker;
    std::int64_t workers_;
    std::vector<std::unique_ptr<Worker>> perWorker_;
};

// One batch: the kernel for every worker of `workspace` in parallel (current oneTBB arena),
// XOR of their results (0 for no workers).
std::uint8_t runCryptoBatch(WorkflowWorkspace& workspace, std::int64_t roundsPerWorker,
                            std::span<const std::uint8_t> seed);
// The same with a workspace of its own (allocates; for tests and one-off batches).
std::uint8_t runCryptoBatch(std::int64_t workers, std::int64_t roundsPerWorker,
                            std::span<const std::uint8_t> seed);

// The whole benchmark with `workers` (1 ... 256) workers. Never throws; an unusable
// SHA-256 ends failed with OpenSSL's reason.
BenchmarkOutcome runCPUDeveloper(std::int64_t workers, const WorkloadContext& context);

} // namespace quarbel::cpu
