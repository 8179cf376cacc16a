// SPDX-License-Identifier: Apache-2.0
#include "model/catalogue.h"
#include "model/scoring_versions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace quarbel;

TEST(Catalogue, StageLinesAdvanceEveryTwoSecondsAndWrapOrShowTheExplanation) {
    const auto id = BenchmarkID::cpuInteger;
    EXPECT_EQ(liveStatusLine(id, 0), "Pinning the workload to one logical core.");
    EXPECT_EQ(liveStatusLine(id, 1.999), "Pinning the workload to one logical core.");
    EXPECT_EQ(liveStatusLine(id, 2.0), "Running text, binary, image, simulation, and SIMD kernels.");
    EXPECT_EQ(liveStatusLine(id, 5.99), "Collecting single-core throughput and checksum validation.");
    EXPECT_EQ(liveStatusLine(id, 6.0), "Pinning the workload to one logical core.");
    // Benchmarks without stages show their explanation throughout.
    for (double elapsed : {0.0, 3.0, 7.5, 1000.0})
        EXPECT_EQ(liveStatusLine(BenchmarkID::cineTile, elapsed), runningExplanation(BenchmarkID::cineTile));
    EXPECT_TRUE(runningStageLines(BenchmarkID::metalVisual).empty());
    EXPECT_EQ(runningStageLines(BenchmarkID::ssdRandom).size(), 3u);
}

TEST(Catalogue, RawValuesRoundTripExactly) {
    for (BenchmarkID id : kAllBenchmarks)
        EXPECT_EQ(benchmarkFromRawValue(rawValue(id)), id);
    for (const char* unknown : {"CPUInteger", "cpuinteger", ""})
        EXPECT_FALSE(benchmarkFromRawValue(unknown)) << unknown;
    EXPECT_EQ(rawValue(BenchmarkID::openCLCompute), "openCLCompute");
}

TEST(Catalogue, CategoriesHoldEveryBenchmarkOnceInCatalogueOrder) {
    std::multiset<BenchmarkID> seen;
    for (BenchmarkCategory c : kAllCategories) {
        const auto ids = byCategory(c);
        EXPECT_TRUE(
            std::is_sorted(ids.begin(), ids.end(), [](auto a, auto b) { return indexOf(a) < indexOf(b); }));
        for (BenchmarkID id : ids)
            EXPECT_EQ(category(id), c);
        seen.insert(ids.begin(), ids.end());
    }
    EXPECT_EQ(seen.size(), kBenchmarkCount);
    for (BenchmarkID id : kAllBenchmarks)
        EXPECT_EQ(seen.count(id), 1u);
    EXPECT_EQ(byCategory(BenchmarkCategory::system).size(), 1u);
    EXPECT_EQ(category(BenchmarkID::memoryStream), BenchmarkCategory::system);
}

TEST(Catalogue, VersionsOnOneSideOfABenchmarksLastChangeScoreItAlike) {
    const auto id = BenchmarkID::cpuInteger;
    ASSERT_EQ(scoredAlikeSince(id), "0.1.0");
    struct Case {
        const char *a, *b;
        std::optional<bool> alike;
    };
    for (const Case& c :
         {Case{"0.1.0", "0.1.0", true}, Case{"0.1.0", "0.12.3", true}, Case{"0.1.0-rc1", "2.0.0", true},
          Case{"0.0.9", "0.1.0", false}, Case{"0.1.0", "0.0.10", false}, Case{"0.0.1", "0.0.9", true},
          Case{"", "0.1.0", std::nullopt}, Case{"1.0", "0.1.0", std::nullopt},
          Case{"0.1.x", "0.1.0", std::nullopt}})
        EXPECT_EQ(scoredAlike(id, c.a, c.b), c.alike) << c.a << " / " << c.b;
}
