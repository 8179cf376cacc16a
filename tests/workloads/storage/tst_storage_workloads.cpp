// SPDX-License-Identifier: Apache-2.0
// The three storage workloads end to end on real files in a private temporary root.
#include "storage_test_support.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_patterns.h"
#include "workloads/storage/storage_workloads.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace quarbel;
using namespace quarbel::storage;
using namespace quarbel::storage::testing;

namespace {

constexpr std::int64_t kMiB = 1'048'576;

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

// The score is the stated factor times the mean of the two shown rates, up to their rounding.
void expectScoreMatchesShownRates(const BenchmarkOutcome& outcome, double factor) {
    ASSERT_TRUE(outcome.secondary);
    auto tolerance = [](const MeasurementLine& line) { return line.unit == "GB/s" ? 0.005 * 1024 : 0.5; };
    const double read = megabytesPerSecondOf(outcome.primary.value, outcome.primary.unit);
    const double write = megabytesPerSecondOf(outcome.secondary->value, outcome.secondary->unit);
    EXPECT_NEAR(outcome.score, (read + write) * 0.5 * factor,
                factor * 0.5 * (tolerance(outcome.primary) + tolerance(*outcome.secondary)) + 1e-9);
}

void expectRateUnit(const MeasurementLine& line, const char* label) {
    EXPECT_EQ(line.label, label);
    EXPECT_TRUE(line.unit == "MB/s" || line.unit == "GB/s") << line.unit;
}

} // namespace

// ---- Sequential file test ----

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
    expectRateUnit(outcome.primary, "Read");
    expectRateUnit(*outcome.secondary, "Write");
    expectScoreMatchesShownRates(outcome, 3.0);
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
    if (!syncIsVisible(root())) GTEST_SKIP() << "the file system here does not show unsynced pages";
    std::vector<std::optional<std::uint64_t>> unsynced;
    sink_.onReport = [&](const ProgressReport& progress) {
        if (progress.phase == kWritePhase)
            unsynced.push_back(unsyncedPages(onlyScratchDirectory(root()) + "/sequential-media.bin"));
    };
    ASSERT_EQ(runSSDSequential(context_, {kMiB, 4}).status, OutcomeStatus::ok);
    ASSERT_EQ(unsynced.size(), 5u);
    EXPECT_EQ(unsynced[4], 0u) << "the write time was taken before the data reached the disk";
}

// ---- Real disk speed ----

TEST_F(StorageWorkloadTest, RealSpeedRunsUpToThreeWriteAndFourReadPasses) {
    SSDRealSpeedParameters parameters;
    parameters.fileSize = 3 * kMiB;
    parameters.blockSize = kMiB;
    parameters.passTargetSeconds = 1e9; // never reached: the caps end both phases

    const BenchmarkOutcome outcome = runSSDRealSpeed(context_, parameters);

    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    const std::string mode = fileSystemAcceptsDirectIO(root()) ? "uncached" : "standard";
    EXPECT_EQ(outcome.detail, "Real disk speed: " + mode +
                                  " POSIX sequential I/O, 3 MB test file, 3x write pass, 4x read pass.");
    expectRateUnit(outcome.primary, "Read");
    expectRateUnit(*outcome.secondary, "Write");
    expectScoreMatchesShownRates(outcome, 5.0);
    // Every 1 MiB request of 3 write and 4 read passes is reported, and each write pass once
    // more after its flush.
    ASSERT_EQ(sink_.units.size(), 24u);
    EXPECT_EQ(sink_.units[2], 3 * kMiB);
    EXPECT_EQ(sink_.units.back(), 21 * kMiB);
}

TEST_F(StorageWorkloadTest, RealSpeedStopsAfterOnePassOnceTheTimeTargetIsMet) {
    SSDRealSpeedParameters parameters;
    parameters.fileSize = 2 * kMiB;
    parameters.blockSize = kMiB;
    context_.budgetSeconds = 0.0; // an explicit budget replaces the 2-second target

    const BenchmarkOutcome outcome = runSSDRealSpeed(context_, parameters);

    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_TRUE(outcome.detail.ends_with(" 2 MB test file, 1x write pass, 1x read pass.")) << outcome.detail;
}

// ---- Random 4K ----

TEST_F(StorageWorkloadTest, RandomRunsWholeRoundsInsideAFileThatNeverGrows) {
    SSDRandomParameters parameters;
    parameters.preparationChunkSize = kMiB;
    parameters.preparationCount = 2;
    parameters.readsPerRound = 256;
    parameters.writesPerRound = 128;
    context_.budgetSeconds = 0.0; // a round that outlasts the budget still completes, once
    std::vector<std::uintmax_t> fileSizes;
    sink_.onReport = [&](const ProgressReport&) {
        fileSizes.push_back(std::filesystem::file_size(onlyScratchDirectory(root()) + "/random.bin"));
    };

    const BenchmarkOutcome outcome = runSSDRandom(context_, parameters);

    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.primary.label, "Read");
    EXPECT_EQ(outcome.primary.unit, "IOPS");
    EXPECT_EQ(outcome.secondary->label, "Write");
    EXPECT_EQ(outcome.secondary->unit, "IOPS");
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
    SSDRealSpeedParameters realSpeed;
    realSpeed.fileSize = 3 * kMiB;
    realSpeed.blockSize = kMiB;
    realSpeed.passTargetSeconds = 1e9;
    SSDRandomParameters random;
    random.preparationChunkSize = kMiB;
    random.preparationCount = 1;
    random.readsPerRound = 64;
    random.writesPerRound = 32;
    random.timeBudgetSeconds = 20; // far beyond one round: only the stop ends it early
    const struct {
        const char* name;
        std::function<BenchmarkOutcome(const WorkloadContext&)> run;
        std::int64_t stopAbove;          // units done that the stop follows
        const char* cancelled;           // the failure's text; none: an ok outcome of the work done
        std::vector<std::int64_t> units; // every report
    } cases[] = {
        // A stop while writing is reported once the partial file was synced and closed.
        {"sequential, writing",
         [](auto& c) {
             return runSSDSequential(c, {kMiB, 8});
         },
         0,
         "SSD sequential test was cancelled.",
         {kMiB, kMiB}},
        // A stop while reading keeps the rate of the chunks already read.
        {"sequential, reading",
         [](auto& c) {
             return runSSDSequential(c, {kMiB, 4});
         },
         4 * kMiB,
         nullptr,
         {kMiB, 2 * kMiB, 3 * kMiB, 4 * kMiB, 4 * kMiB, 5 * kMiB}},
        // The pass in progress ends, its flush included.
        {"real speed",
         [&](auto& c) { return runSSDRealSpeed(c, realSpeed); },
         0,
         "SSD real speed test was cancelled.",
         {kMiB, 2 * kMiB, 3 * kMiB, 3 * kMiB}},
        // The round in progress ends.
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

// ---- Every workload: stale directories first, clean failures ----

namespace {

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
         SSDRealSpeedParameters parameters;
         parameters.fileSize = 2 * kMiB;
         parameters.blockSize = kMiB;
         parameters.writePassCap = 1;
         parameters.readPassCap = 1;
         return runSSDRealSpeed(c, parameters);
     }},
    {"Random SSD test failed: ", "Random SSD test failed: ",
     [](const WorkloadContext& c) {
         SSDRandomParameters parameters;
         parameters.preparationChunkSize = kMiB;
         parameters.preparationCount = 2;
         parameters.readsPerRound = 16;
         parameters.writesPerRound = 8;
         parameters.timeBudgetSeconds = 0;
         return runSSDRandom(c, parameters);
     }},
};

} // namespace

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

TEST_F(StorageWorkloadTest, UncreatableTemporaryRootFailsWithTheSystemText) {
    writeFile(root() + "/file", 1);
    ReadOnlyDirectory readOnly(root() + "/read-only");
    struct Case {
        std::string tmpdir;
        int error;
    };
    std::vector<Case> cases{{root() + "/file/tmp", ENOTDIR}};
    if (readOnly.available()) { // not where a root without CAP_SYS_ADMIN cannot mount
        cases.push_back({readOnly.path(), readOnly.refusal()});
        cases.push_back({readOnly.path() + "/missing/tmp", readOnly.refusal()});
    }
    for (const Case& c : cases) {
        ScopedTemporaryRoot pointAt(c.tmpdir);
        for (const SmallRun& workload : kEveryWorkload) {
            EXPECT_EQ(workload.run(context_),
                      failedOutcome(workload.prefix + std::string(std::strerror(c.error))));
        }
        EXPECT_TRUE(scratchEntries(c.tmpdir).empty());
    }
    EXPECT_FALSE(std::filesystem::exists(readOnly.path() + "/missing"));
}

TEST_F(StorageWorkloadTest, FileSizeLimitFailsEachWorkloadCleanly) {
    // In a child, so that the limit and the ignored SIGXFSZ stay out of this process.
    int channel[2];
    ASSERT_EQ(::pipe(channel), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(channel[0]);
        ::signal(SIGXFSZ, SIG_IGN);
        const struct rlimit limit { 256 * 1024, 256 * 1024 };
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::string lines;
        for (const SmallRun& workload : kEveryWorkload) {
            lines += workload.run(context_).detail + " [" + std::to_string(scratchEntries(root()).size()) +
                     " left]\n";
        }
        const int error =
            writeAll(channel[1], reinterpret_cast<const std::byte*>(lines.data()), lines.size());
        ::_exit(error == 0 ? 0 : 1);
    }
    ::close(channel[1]);
    std::string received;
    char buffer[512];
    for (ssize_t got; (got = ::read(channel[0], buffer, sizeof buffer)) != 0;) {
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) break;
        received.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(channel[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;

    std::string expected;
    for (const SmallRun& workload : kEveryWorkload)
        expected += workload.writePrefix + std::string(std::strerror(EFBIG)) + " [0 left]\n";
    EXPECT_EQ(received, expected);
}

TEST_F(StorageWorkloadTest, FullVolumeFailsWithNoSpaceAndRemovesTheScratchDirectory) {
    const std::string small = root() + "/small-volume";
    TmpfsMount mount(small, kMiB, false);
    if (!mount.mounted()) GTEST_SKIP() << mount.skipReason();
    ScopedTemporaryRoot pointAtSmall(small);
    for (const SmallRun& workload : kEveryWorkload) {
        EXPECT_EQ(workload.run(context_),
                  failedOutcome(workload.writePrefix + std::string(std::strerror(ENOSPC))));
        EXPECT_TRUE(scratchEntries(small).empty());
    }
    EXPECT_EQ(std::filesystem::space(small).available, std::filesystem::space(small).capacity)
        << "the volume must be empty again";
}
