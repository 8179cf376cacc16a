// SPDX-License-Identifier: Apache-2.0
#include "storage_test_support.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_patterns.h"
#include "workloads/storage/storage_workloads.h"

#include <csignal>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace quarbel;
using namespace quarbel::storage;
using namespace quarbel::storage::testing;

namespace {

// Each test gets its own temporary root; afterwards no scratch directory may remain in it.
class StorageWorkloadTest : public ::testing::Test {
  protected:
    void TearDown() override {
        setScratchNoticeSink({});
        EXPECT_TRUE(scratchEntries(root_.path()).empty()) << "scratch directory left behind";
    }

    const std::string& root() const { return root_.path(); }

    TestDirectory root_;
    ScopedTemporaryRoot tmpdir_{root_.path()};
    CancellationToken token_;
    RecordingSink sink_;
    WorkloadContext context_ = contextWith(token_, sink_);
};

// Read and write rates in MB/s or GB/s, and a score of the stated factor times their mean, up
// to the rounding of the shown values.
void expectRatesAndScore(const BenchmarkOutcome& outcome, double factor) {
    ASSERT_TRUE(outcome.secondary);
    double sum = 0, tolerance = 0;
    for (const auto& [line, label] : {std::pair{outcome.primary, "Read"}, {*outcome.secondary, "Write"}}) {
        EXPECT_EQ(line.label, label);
        EXPECT_TRUE(line.unit == "MB/s" || line.unit == "GB/s") << line.unit;
        const double scale = line.unit == "GB/s" ? 1024.0 : 1.0;
        sum += std::stod(line.value) * scale;
        tolerance += 0.5 * (line.unit == "GB/s" ? 0.01 : 1.0) * scale;
    }
    EXPECT_NEAR(outcome.score, sum * 0.5 * factor, factor * 0.5 * tolerance + 1e-9);
}

// Each workload at a small size, with the texts of its failures.
struct SmallRun {
    const char* prefix;      // of every failure
    const char* writePrefix; // of a failed write
    BenchmarkOutcome (*run)(const WorkloadContext&);
};

const SmallRun kEveryWorkload[] = {
    {"SSD sequential test failed: ", "SSD sequential test failed: ",
     [](const WorkloadContext& c) {
         return runSSDSequential(c, {kMiB, 2});
     }},
    {"SSD real speed test failed: ", "SSD real speed test failed: write failed: ",
     [](const WorkloadContext& c) {
         return runSSDRealSpeed(
             c, {.fileSize = 2 * kMiB, .blockSize = kMiB, .writePassCap = 1, .readPassCap = 1});
     }},
    {"Random SSD test failed: ", "Random SSD test failed: ",
     [](const WorkloadContext& c) {
         return runSSDRandom(c, {.preparationChunkSize = kMiB,
                                 .preparationCount = 2,
                                 .readsPerRound = 16,
                                 .writesPerRound = 8,
                                 .timeBudgetSeconds = 0});
     }},
};

} // namespace

TEST_F(StorageWorkloadTest, SequentialWritesThePatternThenReadsTheWholeFileBack) {
    const SSDSequentialParameters parameters{kMiB, 4};
    std::vector<std::byte> firstBlockOnDisk;
    sink_.onReport = [&](const ProgressReport& progress) {
        if (progress.unitsDone != 4 * kMiB) return; // the moment the last block is written
        std::ifstream in(onlyScratchDirectory(root()) + "/sequential-media.bin", std::ios::binary);
        firstBlockOnDisk.resize(kMiB);
        in.read(reinterpret_cast<char*>(firstBlockOnDisk.data()), kMiB);
        if (in.gcount() != kMiB) firstBlockOnDisk.clear();
    };

    const BenchmarkOutcome outcome = runSSDSequential(context_, parameters);

    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    expectRatesAndScore(outcome, 3.0);
    EXPECT_GT(outcome.duration, 0.0);
    EXPECT_EQ(
        outcome.detail,
        "Sequential file test: 4 MB temporary media file, 1 MB blocks, sustained read/write throughput.");
    EXPECT_EQ(sink_.unitName, "bytes");
    // Four blocks written, once more after the flush (its time counts), then four read.
    EXPECT_EQ(sink_.units, (std::vector<std::int64_t>{1 * kMiB, 2 * kMiB, 3 * kMiB, 4 * kMiB, 4 * kMiB,
                                                      5 * kMiB, 6 * kMiB, 7 * kMiB, 8 * kMiB}));
    EXPECT_EQ(sink_.phases, (std::vector<int>{0, 0, 0, 0, 0, 1, 1, 1, 1})) << "writes, then reads";

    std::vector<std::byte> expected(kMiB);
    fillPattern(expected, kSequentialPatternSeed, kSequentialPatternShift);
    EXPECT_TRUE(firstBlockOnDisk == expected) << "the file does not hold the pattern block";
}

TEST_F(StorageWorkloadTest, SequentialWriteTimeIncludesTheFlushToTheDisk) {
    if (!pageCacheShowsUnsyncedPages(root() + "/sync-probe"))
        GTEST_SKIP() << "the file system here does not show unsynced pages";
    std::vector<std::optional<std::uint64_t>> unsynced;
    sink_.onReport = [&](const ProgressReport& progress) {
        if (progress.phase == kWritePhase)
            unsynced.push_back(unsyncedPages(onlyScratchDirectory(root()) + "/sequential-media.bin"));
    };
    ASSERT_EQ(runSSDSequential(context_, {kMiB, 4}).status, OutcomeStatus::ok);
    ASSERT_EQ(unsynced.size(), 5u);
    EXPECT_EQ(unsynced[4], 0u) << "the write time was taken before the data reached the disk";
}

TEST_F(StorageWorkloadTest, RealSpeedRunsUpToThreeWriteAndFourReadPassesOrOneOnceTheTargetIsMet) {
    const std::string mode = fileSystemAcceptsDirectIO(root()) ? "uncached" : "standard";
    const struct {
        const char* name;
        std::optional<double> budget; // an explicit budget replaces the pass target
        std::size_t reports;          // every 1 MiB request, and each write pass once more after its flush
        const char* detailEnd;
    } cases[] = {
        {"capped", std::nullopt, 24, " 3 MB test file, 3x write pass, 4x read pass."},
        {"target met", 0.0, 7, " 3 MB test file, 1x write pass, 1x read pass."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        sink_.units.clear();
        context_.budgetSeconds = c.budget;
        // The pass target is never reached: the caps or the budget end both phases.
        const BenchmarkOutcome outcome =
            runSSDRealSpeed(context_, {.fileSize = 3 * kMiB, .blockSize = kMiB, .passTargetSeconds = 1e9});
        ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
        EXPECT_EQ(outcome.detail, "Real disk speed: " + mode + " POSIX sequential I/O," + c.detailEnd);
        expectRatesAndScore(outcome, 5.0);
        ASSERT_EQ(sink_.units.size(), c.reports);
        EXPECT_EQ(sink_.units[2], 3 * kMiB);
    }
}

TEST_F(StorageWorkloadTest, RandomRunsWholeRoundsInsideAFileThatNeverGrows) {
    const SSDRandomParameters parameters{
        .preparationChunkSize = kMiB, .preparationCount = 2, .readsPerRound = 256, .writesPerRound = 128};
    context_.budgetSeconds = 0.0; // a round that outlasts the budget still completes, once
    std::vector<std::uintmax_t> fileSizes;
    sink_.onReport = [&](const ProgressReport&) {
        fileSizes.push_back(std::filesystem::file_size(onlyScratchDirectory(root()) + "/random.bin"));
    };

    const BenchmarkOutcome outcome = runSSDRandom(context_, parameters);

    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.primary, (MeasurementLine{"Read", outcome.primary.value, "IOPS"}));
    EXPECT_EQ(outcome.secondary, (MeasurementLine{"Write", outcome.secondary->value, "IOPS"}));
    EXPECT_EQ(outcome.primary.value.find('.'), std::string::npos);
    const double mean = (std::stod(outcome.primary.value) + std::stod(outcome.secondary->value)) * 0.5;
    EXPECT_NEAR(outcome.score, mean / 8.0, 0.5 / 8.0 + 1e-9);
    EXPECT_GT(outcome.duration, 0.0);
    EXPECT_EQ(outcome.detail, "Sustained random 4K access inside a 2 MB temporary file.");
    EXPECT_EQ(sink_.unitName, "operations");
    EXPECT_EQ(sink_.units, (std::vector<std::int64_t>{256, 384}));
    EXPECT_EQ(fileSizes, (std::vector<std::uintmax_t>{2 * kMiB, 2 * kMiB}));
}

TEST_F(StorageWorkloadTest, AStopEndsEachWorkloadAtItsNextSafePoint) {
    const SSDSequentialParameters eightBlocks{kMiB, 8}, fourBlocks{kMiB, 4};
    const SSDRealSpeedParameters realSpeed{.fileSize = 3 * kMiB, .blockSize = kMiB, .passTargetSeconds = 1e9};
    // A time budget far beyond one round: only the stop ends it early.
    const SSDRandomParameters random{.preparationChunkSize = kMiB,
                                     .preparationCount = 1,
                                     .readsPerRound = 64,
                                     .writesPerRound = 32,
                                     .timeBudgetSeconds = 20};
    const struct {
        const char* name;
        std::function<BenchmarkOutcome(const WorkloadContext&)> run;
        std::int64_t stopAbove;          // units done that the stop follows
        const char* cancelled;           // the failure's text; none: an ok outcome of the work done
        std::vector<std::int64_t> units; // every report
    } cases[] = {
        // A stop while writing is reported once the partial file was synced and closed.
        {"sequential, writing",
         [&](auto& c) { return runSSDSequential(c, eightBlocks); },
         0,
         "SSD sequential test was cancelled.",
         {kMiB, kMiB}},
        // A stop while reading keeps the rate of the chunks already read.
        {"sequential, reading",
         [&](auto& c) { return runSSDSequential(c, fourBlocks); },
         4 * kMiB,
         nullptr,
         {kMiB, 2 * kMiB, 3 * kMiB, 4 * kMiB, 4 * kMiB, 5 * kMiB}},
        {"real speed",
         [&](auto& c) { return runSSDRealSpeed(c, realSpeed); },
         0,
         "SSD real speed test was cancelled.",
         {kMiB, 2 * kMiB, 3 * kMiB, 3 * kMiB}},
        {"random", [&](auto& c) { return runSSDRandom(c, random); }, 0, nullptr, {64, 96}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CancellationToken token;
        RecordingSink sink;
        sink.onReport = [&](const ProgressReport& progress) {
            if (progress.unitsDone > c.stopAbove) token.cancel();
        };
        const BenchmarkOutcome outcome = c.run(contextWith(token, sink));
        if (c.cancelled) {
            EXPECT_EQ(outcome, failedOutcome(c.cancelled));
        } else {
            EXPECT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
        }
        EXPECT_EQ(sink.units, c.units);
    }
}

TEST_F(StorageWorkloadTest, EveryWorkloadFirstReclaimsStaleScratchDirectoriesAndSaysSo) {
    std::vector<std::string> notices;
    setScratchNoticeSink([&](const std::string& text) { notices.push_back(text); });
    for (const SmallRun& workload : kEveryWorkload) {
        const std::string stale = root() + "/Quarbel-" + makeUUIDText();
        ASSERT_TRUE(std::filesystem::create_directory(stale));
        writeFile(stale + "/random.bin", static_cast<std::size_t>(2 * kMiB));
        notices.clear();
        EXPECT_EQ(workload.run(context_).status, OutcomeStatus::ok) << workload.prefix;
        EXPECT_EQ(notices,
                  (std::vector<std::string>{"Removed 1 scratch directory left by an interrupted run in " +
                                            root() + " (2 MB given back)."}));
    }
}

TEST_F(StorageWorkloadTest, AnUncreatableRootOrAFullVolumeFailsWithTheSystemTextAndLeavesNothing) {
    writeFile(root() + "/file", 1);
    // A directory in which nothing can be created: a read-only tmpfs as root (root ignores
    // permission bits; one without CAP_SYS_ADMIN cannot mount it), else one of mode 0500.
    const std::string readOnly = root() + "/read-only";
    std::filesystem::create_directory(readOnly);
    const bool asRoot = ::geteuid() == 0;
    const TmpfsMount readOnlyMount(readOnly, kMiB, true);
    const std::string small = root() + "/small-volume";
    const TmpfsMount smallMount(small, kMiB, false);
    struct Case {
        std::string tmpdir;
        int error;
        bool writing; // fails in a write, not in creating the directory
    };
    std::vector<Case> cases{{root() + "/file/tmp", ENOTDIR, false}};
    if (asRoot ? readOnlyMount.mounted() : ::chmod(readOnly.c_str(), 0500) == 0) {
        cases.push_back({readOnly, asRoot ? EROFS : EACCES, false});
        cases.push_back({readOnly + "/missing/tmp", asRoot ? EROFS : EACCES, false});
    }
    if (smallMount.mounted()) cases.push_back({small, ENOSPC, true});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tmpdir);
        ScopedTemporaryRoot pointAt(c.tmpdir);
        for (const SmallRun& workload : kEveryWorkload) {
            EXPECT_EQ(workload.run(context_),
                      failedOutcome((c.writing ? workload.writePrefix : workload.prefix) +
                                    std::string(std::strerror(c.error))));
            EXPECT_TRUE(scratchEntries(c.tmpdir).empty());
        }
    }
    EXPECT_FALSE(std::filesystem::exists(readOnly + "/missing"));
    if (smallMount.mounted()) {
        EXPECT_EQ(std::filesystem::space(small).available, std::filesystem::space(small).capacity)
            << "the volume must be empty again";
    }
}

TEST_F(StorageWorkloadTest, FileSizeLimitFailsEachWorkloadCleanly) {
    // In a child, so that the limit and the ignored SIGXFSZ stay out of this process.
    const std::string log = root() + "/details.txt";
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const struct rlimit limit { 256 * 1024, 256 * 1024 };
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::ofstream out(log);
        for (const SmallRun& workload : kEveryWorkload)
            out << workload.run(context_).detail << " [" << scratchEntries(root()).size() << " left]\n";
        ::_exit(out.flush() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    std::stringstream received;
    received << std::ifstream(log).rdbuf();

    std::string expected;
    for (const SmallRun& workload : kEveryWorkload)
        expected += workload.writePrefix + std::string(std::strerror(EFBIG)) + " [0 left]\n";
    EXPECT_EQ(received.str(), expected);
}
