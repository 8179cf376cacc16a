// SPDX-License-Identifier: Apache-2.0
#include "storage_test_support.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/real_disk_speed.h"
#include "workloads/storage/storage_patterns.h"
#include "workloads/storage/storage_workloads.h"

#include <array>
#include <tuple>

using namespace quarbel;
using namespace quarbel::storage;
using namespace quarbel::storage::testing;

namespace {

constexpr std::int64_t kGiB = 1'073'741'824;

alignas(4096) std::byte gBuffer[1'048'576]; // aligned for O_DIRECT

std::vector<int> firstBytes(std::uint64_t seed, unsigned shift) {
    std::array<std::byte, 8> bytes{};
    fillPattern(bytes, seed, shift);
    std::vector<int> values;
    for (std::byte b : bytes)
        values.push_back(std::to_integer<int>(b));
    return values;
}

} // namespace

TEST(StoragePatterns, BytesFollowTheSeededGeneratorOfEachTest) {
    // Reference values computed independently (Python, arbitrary-precision arithmetic mod 2^64).
    EXPECT_EQ(firstBytes(kSequentialPatternSeed, kSequentialPatternShift),
              (std::vector<int>{0x05, 0x29, 0x69, 0x6b, 0x92, 0xcb, 0x86, 0x8b}));
    EXPECT_EQ(firstBytes(kRealSpeedPatternSeed, kRealSpeedPatternShift),
              (std::vector<int>{0xdb, 0x69, 0xf9, 0x18, 0xc3, 0x5e, 0x5f, 0x8d}));
}

TEST(StoragePatterns, RandomOffsetsContinueOneSequenceAndStayInsideTheFile) {
    RandomOffsetGenerator offsets(131'072); // 512 MiB of pages
    std::vector<std::int64_t> drawn;
    for (int i = 0; i < 6145; ++i)
        drawn.push_back(offsets.next());
    EXPECT_EQ(drawn[0], 341'123'072);
    EXPECT_EQ(drawn[1], 99'323'904);
    EXPECT_EQ(drawn[2], 250'429'440);
    EXPECT_EQ(drawn[4096], 22'355'968);  // first write of round one follows the 4096 reads
    EXPECT_EQ(drawn[6144], 131'407'872); // first read of round two
    for (int i = 0; i < 1'000'000; ++i) {
        const std::int64_t offset = offsets.next();
        ASSERT_EQ(offset % 4096, 0);
        ASSERT_LT(offset, 536'870'912);
    }

    RandomOffsetGenerator smallFile(300); // rounded down to 256 pages
    EXPECT_EQ(smallFile.next(), 335'872);
    for (int i = 0; i < 10'000; ++i)
        ASSERT_LT(smallFile.next(), 256 * 4096);
}

TEST(StoragePatterns, RatesSwitchToGigabytesAtTheUnroundedThreshold) {
    EXPECT_EQ(rateMeasurement("Read", 1024.0), (MeasurementLine{"Read", "1.00", "GB/s"}));
    EXPECT_EQ(rateMeasurement("Write", 1023.6), (MeasurementLine{"Write", "1024", "MB/s"}));
    EXPECT_EQ(rateMeasurement("Read", 2560.0), (MeasurementLine{"Read", "2.50", "GB/s"}));
    EXPECT_EQ(rateMeasurement("Read", 0.0), (MeasurementLine{"Read", "0", "MB/s"}));
    EXPECT_DOUBLE_EQ(megabytesPerSecond(1'048'576, 0.5), 2.0);
    EXPECT_DOUBLE_EQ(megabytesPerSecond(1'048'576, 0.0), 1'000'000.0); // clamped to 1 µs
}

TEST(RealDiskSpeed, FileSizeGrowsWithFreeSpaceAtTwelveTimesEachSize) {
    EXPECT_EQ(diskSpeedFileSize(std::nullopt), kGiB);
    EXPECT_EQ(diskSpeedFileSize(103'079'215'104), 8 * kGiB);
    EXPECT_EQ(diskSpeedFileSize(103'079'215'103), 4 * kGiB);
    EXPECT_EQ(diskSpeedFileSize(51'539'607'552), 4 * kGiB);
    EXPECT_EQ(diskSpeedFileSize(51'539'607'551), 2 * kGiB);
    EXPECT_EQ(diskSpeedFileSize(24 * kGiB), 2 * kGiB);
    EXPECT_EQ(diskSpeedFileSize(24 * kGiB - 1), kGiB);
    EXPECT_EQ(diskSpeedFileSize(-1), kGiB);
}

TEST(RealDiskSpeed, OutcomeShowsRatesModeAndPassCounts) {
    const DiskSpeedPass write{1.0, kGiB, 1, true};
    const DiskSpeedPass readNothing{0.0, 0, 0, true};
    const BenchmarkOutcome stoppedBeforeReading = realDiskSpeedOutcome(write, readNothing, kGiB);
    EXPECT_EQ(stoppedBeforeReading.status, OutcomeStatus::ok);
    EXPECT_EQ(stoppedBeforeReading.primary, (MeasurementLine{"Read", "0", "MB/s"}));
    EXPECT_EQ(stoppedBeforeReading.secondary, (MeasurementLine{"Write", "1.00", "GB/s"}));
    EXPECT_DOUBLE_EQ(stoppedBeforeReading.score, 2560.0);
    EXPECT_DOUBLE_EQ(stoppedBeforeReading.duration, 1.0);
    EXPECT_EQ(
        stoppedBeforeReading.detail,
        "Real disk speed: uncached POSIX sequential I/O, 1.0 GB test file, 1x write pass, 0x read pass.");

    const DiskSpeedPass bufferedRead{0.5, 4 * kGiB, 4, false};
    const BenchmarkOutcome standard =
        realDiskSpeedOutcome({2.0, 3 * 8 * kGiB, 3, true}, bufferedRead, 8 * kGiB);
    EXPECT_EQ(
        standard.detail,
        "Real disk speed: standard POSIX sequential I/O, 8.0 GB test file, 3x write pass, 4x read pass.");
    EXPECT_EQ(standard.primary.value, "8.00");
    EXPECT_EQ(standard.secondary->value, "12.00");
    EXPECT_DOUBLE_EQ(standard.duration, 2.5);
}

TEST(RealDiskSpeed, PhasesCountOnlyTheBytesPresentStopWhenCancelledAndReportTheFailingOperation) {
    TestDirectory root;
    const std::string file = root.path() + "/short.bin";
    writeFile(file, 1'048'576);
    const SequentialPassPlan plan{file, 4 * 1'048'576, 1'048'576, gBuffer, 1e9, 2};
    CancellationToken token;
    RecordingSink sink;
    const DiskSpeedPhase read = performSequentialRead(contextWith(token, sink), plan, {});
    ASSERT_FALSE(read.error) << read.error->description;
    EXPECT_EQ(read.pass.passes, 2);
    EXPECT_EQ(read.pass.bytes, 2 * 1'048'576);
    EXPECT_EQ(read.pass.uncached, fileSystemAcceptsDirectIO(root.path()));

    const SequentialPassPlan missing{root.path() + "/missing.bin", 4096, 4096, gBuffer, 1e9, 1};
    const DiskSpeedPhase failed = performSequentialRead(contextWith(token, sink), missing, {});
    ASSERT_TRUE(failed.error);
    EXPECT_EQ(failed.error->description, "open for read failed: No such file or directory");
    EXPECT_EQ(failed.error->code, ENOENT);

    // The file is created exclusively and never through a symbolic link.
    const std::string victim = root.path() + "/victim.bin";
    writeFile(victim, 4);
    const std::string link = root.path() + "/link.bin";
    ASSERT_EQ(::symlink(victim.c_str(), link.c_str()), 0);
    const SequentialPassPlan throughLink{link, 4096, 4096, gBuffer, 1e9, 1};
    const DiskSpeedPhase write = performSequentialWrite(contextWith(token, sink), throughLink, {});
    ASSERT_TRUE(write.error);
    EXPECT_EQ(write.error->description, "open for write failed: File exists");
    EXPECT_EQ(std::filesystem::file_size(victim), 4u);

    token.cancel();
    const DiskSpeedPhase none = performSequentialRead(contextWith(token, sink), plan, {});
    ASSERT_FALSE(none.error);
    EXPECT_EQ(std::tuple(none.pass.passes, none.pass.bytes, none.pass.seconds),
              std::tuple(0, std::int64_t{0}, 0.0));
}

TEST(FileDescriptor, ReportsAFailedCloseAndReleasesTheDescriptorEitherWay) {
    const int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    FileDescriptor wrapped(fd);
    ASSERT_EQ(::close(fd), 0); // behind the wrapper's back: its own close must fail
    EXPECT_EQ(wrapped.close(), EBADF);
    EXPECT_FALSE(wrapped.isOpen());
    EXPECT_EQ(wrapped.close(), 0) << "nothing is left to close";
}
