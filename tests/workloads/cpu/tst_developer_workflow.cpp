// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/developer_workflow.h"

#include "workload_test_support.h"

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <array>
#include <vector>

using namespace quarbel;
using namespace quarbel::cpu;
using quarbel::testing::StopAfterReports;

namespace {

// One worker's rounds through OpenSSL's one-shot digest on a plainly mutated copy.
std::uint8_t referenceWorker(std::int64_t worker, std::int64_t rounds,
                             const std::vector<std::uint8_t>& seed) {
    std::vector<std::uint8_t> block = seed;
    auto running = static_cast<std::uint8_t>(worker);
    for (std::int64_t r = 0; r < rounds; ++r) {
        block[0] = static_cast<std::uint8_t>(r % 256);
        block[1] = static_cast<std::uint8_t>(worker);
        block[2] = static_cast<std::uint8_t>((31 * r) % 256);
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned int length = 0;
        EXPECT_EQ(EVP_Digest(block.data(), block.size(), digest.data(), &length, EVP_sha256(), nullptr), 1);
        running ^= digest[0];
    }
    return running;
}

} // namespace

TEST(WorkflowSeed, StartsWithTheSpecifiedBytes) {
    const std::vector<std::uint8_t> seed = makeWorkflowSeed();
    ASSERT_EQ(seed.size(), 262'144u);
    const std::vector<std::uint8_t> first(seed.begin(), seed.begin() + 9);
    EXPECT_EQ(first, (std::vector<std::uint8_t>{0, 73, 146, 219, 36, 109, 182, 255, 73}));
    EXPECT_EQ(seed[262'143], static_cast<std::uint8_t>((262'143u * 73) ^ (262'143u >> 3)));
}

TEST(WorkflowKernel, MatchesOneShotSha256OfTheMutatedBlock) {
    const std::vector<std::uint8_t> seed = makeWorkflowSeed();
    WorkflowWorkspace workspace(3);
    EXPECT_EQ(workspace.runWorker(2, 0, seed), 2);
    // Round numbers past 255 wrap in the mutated bytes; reusing a worker starts again
    // from the seed.
    EXPECT_EQ(workspace.runWorker(1, 3, seed), referenceWorker(1, 3, seed));
    EXPECT_EQ(workspace.runWorker(1, 3, seed), referenceWorker(1, 3, seed));
    EXPECT_EQ(workspace.runWorker(2, 260, seed), referenceWorker(2, 260, seed));
    EXPECT_EQ(seed, makeWorkflowSeed()) << "the shared seed must never be written";
}

TEST(WorkflowKernel, BatchIsTheXorOfItsWorkers) {
    const std::vector<std::uint8_t> seed = makeWorkflowSeed();
    const std::uint8_t expected = referenceWorker(0, 2, seed) ^ referenceWorker(1, 2, seed) ^
                                  referenceWorker(2, 2, seed) ^ referenceWorker(3, 2, seed);
    EXPECT_EQ(runCryptoBatch(4, 2, seed), expected);
    EXPECT_EQ(runCryptoBatch(0, 2, seed), 0);
}

TEST(DeveloperWorkflow, OneWorkerCancelledInTheFirstBatchHashesEighteenBlocks) {
    StopAfterReports stop(1);
    const BenchmarkOutcome outcome = runCPUDeveloper(1, stop.context());
    ASSERT_EQ(stop.reports.size(), 1u);
    EXPECT_EQ(stop.reports[0].unitsDone, 4'718'592);
    EXPECT_EQ(stop.reports[0].unit.name, "bytes");

    EXPECT_EQ(outcome.status, OutcomeStatus::ok);
    const double throughput = 4'718'592.0 / outcome.duration / 1'048'576.0;
    EXPECT_NEAR(outcome.score, throughput * 2.4, throughput * 2.4 * 1e-9);
    EXPECT_EQ(outcome.primary.label, "Workflow");
    EXPECT_EQ(outcome.primary.unit, "MB/s");
    expectLiveRateReadsAsPrimary(stop.reports[0], outcome);
    EXPECT_EQ(*outcome.secondary, (MeasurementLine{"Threads", "1", ""}));
    const std::uint8_t batch = runCryptoBatch(1, 18, makeWorkflowSeed());
    EXPECT_EQ(outcome.detail,
              "Production workload: 256 KB blocks, text/binary mutation, and sustained SHA-256 "
              "hashing. Digest " +
                  std::to_string(batch) + ".");
}

TEST(DeveloperWorkflow, AnEvenBatchCountEndsTheDetailWithDigestZero) {
    StopAfterReports stop(2);
    const BenchmarkOutcome outcome = runCPUDeveloper(2, stop.context());
    ASSERT_EQ(stop.reports.size(), 2u);
    EXPECT_EQ(stop.reports[1].unitsDone, 2 * 2 * 18 * 262'144);
    EXPECT_EQ(outcome.secondary->value, "2");
    EXPECT_TRUE(outcome.detail.ends_with(" Digest 0.")) << outcome.detail;
}
