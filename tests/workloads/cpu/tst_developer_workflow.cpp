// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/developer_workflow.h"

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <array>
#include <vector>

using namespace quarbel;
using namespace quarbel::cpu;

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

TEST(WorkflowSeed, FollowsItsGeneratorToTheLastByte) {
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
    // A batch is the XOR of its workers.
    const std::uint8_t expected = referenceWorker(0, 2, seed) ^ referenceWorker(1, 2, seed) ^
                                  referenceWorker(2, 2, seed) ^ referenceWorker(3, 2, seed);
    EXPECT_EQ(runCryptoBatch(4, 2, seed), expected);
    EXPECT_EQ(runCryptoBatch(0, 2, seed), 0);
}
