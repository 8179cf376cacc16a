// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/developer_workflow.h"

#include "model/number_format.h"
#include "workloads/cpu/fatal.h"
#include "workloads/cpu/parallel.h"
#include "workloads/cpu/timed_loop.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <array>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

namespace quarbel::cpu {
namespace {

std::string openSSLReason(const char* fallback) {
    const unsigned long code = ERR_get_error();
    if (code == 0) return fallback;
    std::array<char, 256> text{};
    ERR_error_string_n(code, text.data(), text.size());
    return text.data();
}

} // namespace

std::vector<std::uint8_t> makeWorkflowSeed() {
    std::vector<std::uint8_t> seed(static_cast<std::size_t>(kWorkflowBlockBytes));
    for (std::size_t n = 0; n < seed.size(); ++n)
        seed[n] = static_cast<std::uint8_t>((n * 73) ^ (n >> 3));
    return seed;
}

struct WorkflowWorkspace::Worker {
    std::vector<std::uint8_t> block;
    EVP_MD_CTX* digest = nullptr;
    ~Worker() { EVP_MD_CTX_free(digest); }
};

WorkflowWorkspace::WorkflowWorkspace(std::int64_t workers) : workers_(workers) {
    require(workers >= 0 && workers <= kWorkflowMaxWorkers,
            "the developer workflow supports 0 to 256 workers");
    // One fetched SHA-256 shared by every context; each context holds its own reference.
    EVP_MD* sha256 = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    if (sha256 == nullptr) throw std::runtime_error(openSSLReason("OpenSSL has no SHA-256"));
    try {
        for (std::int64_t i = 0; i < workers; ++i) {
            auto worker = std::make_unique<Worker>();
            worker->block.resize(static_cast<std::size_t>(kWorkflowBlockBytes));
            worker->digest = EVP_MD_CTX_new();
            if (worker->digest == nullptr || EVP_DigestInit_ex2(worker->digest, sha256, nullptr) != 1)
                throw std::runtime_error(openSSLReason("OpenSSL could not set up SHA-256"));
            perWorker_.push_back(std::move(worker));
        }
    } catch (...) {
        EVP_MD_free(sha256);
        throw;
    }
    EVP_MD_free(sha256);
}

WorkflowWorkspace::~WorkflowWorkspace() = default;

std::uint8_t WorkflowWorkspace::runWorker(std::int64_t worker, std::int64_t rounds,
                                          std::span<const std::uint8_t> seed) {
    require(worker >= 0 && worker < workers_, "developer workflow worker index out of range");
    require(rounds >= 0, "the developer workflow needs a non-negative round count");
    require(seed.size() == static_cast<std::size_t>(kWorkflowBlockBytes),
            "the workflow seed must be 256 KiB");
    Worker& state = *perWorker_[static_cast<std::size_t>(worker)];
    std::uint8_t* block = state.block.data();
    std::memcpy(block, seed.data(), seed.size());

    auto running = static_cast<std::uint8_t>(worker);
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    for (std::int64_t round = 0; round < rounds; ++round) {
        block[0] = static_cast<std::uint8_t>(round);
        block[1] = static_cast<std::uint8_t>(worker);
        block[2] = static_cast<std::uint8_t>(31 * round);
        // Re-initialising with a null type keeps the context's SHA-256 and allocates nothing.
        unsigned int length = 0;
        const bool hashed = EVP_DigestInit_ex2(state.digest, nullptr, nullptr) == 1 &&
                            EVP_DigestUpdate(state.digest, block, seed.size()) == 1 &&
                            EVP_DigestFinal_ex(state.digest, digest.data(), &length) == 1;
        require(hashed && length == 32, "SHA-256 failed on a set-up context");
        running ^= digest[0];
    }
    return running;
}

std::uint8_t runCryptoBatch(WorkflowWorkspace& workspace, std::int64_t roundsPerWorker,
                            std::span<const std::uint8_t> seed) {
    const std::int64_t workers = workspace.workers();
    std::array<std::uint8_t, kWorkflowMaxWorkers> slots{};
    parallelFor(workers, [&](std::int64_t worker) {
        slots[static_cast<std::size_t>(worker)] = workspace.runWorker(worker, roundsPerWorker, seed);
    });
    std::uint8_t value = 0;
    for (std::int64_t i = 0; i < workers; ++i)
        value ^= slots[static_cast<std::size_t>(i)];
    return value;
}

std::uint8_t runCryptoBatch(std::int64_t workers, std::int64_t roundsPerWorker,
                            std::span<const std::uint8_t> seed) {
    WorkflowWorkspace workspace(workers);
    return runCryptoBatch(workspace, roundsPerWorker, seed);
}

BenchmarkOutcome runCPUDeveloper(std::int64_t workers, const WorkloadContext& context) {
    try {
        const std::vector<std::uint8_t> seed = makeWorkflowSeed();
        WorkflowWorkspace workspace(workers);
        runCryptoBatch(workspace, kWorkflowWarmUpRounds, seed);

        const std::int64_t bytesPerBatch =
            checkedMultiply(checkedMultiply(workers, kWorkflowRoundsPerBatch), kWorkflowBlockBytes);
        std::int64_t bytesHashed = 0;
        std::uint8_t digestByte = 0;
        const TimedLoopResult timing = repeatUntilBudget(
            context, context.budget(kWorkflowBudgetSeconds), ProgressUnit{"bytes", "MB/s", 0x1p-20}, [&] {
                digestByte ^= runCryptoBatch(workspace, kWorkflowRoundsPerBatch, seed);
                bytesHashed = checkedAdd(bytesHashed, bytesPerBatch);
                return bytesHashed;
            });

        const double throughput = static_cast<double>(bytesHashed) / timing.elapsedSeconds * 0x1p-20;
        return completedOutcome(
            throughput * kWorkflowScoreFactor, MeasurementLine{"Workflow", format(throughput, 1), "MB/s"},
            MeasurementLine{"Threads", std::to_string(workers), ""}, timing.elapsedSeconds,
            "Production workload: 256 KB blocks, text/binary mutation, and sustained SHA-256 "
            "hashing. Digest " +
                std::to_string(digestByte) + ".");
    } catch (const std::exception& error) {
        return failedOutcome("The developer workflow could not hash: " + std::string(error.what()) + ".");
    }
}

} // namespace quarbel::cpu
