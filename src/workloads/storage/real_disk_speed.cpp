// SPDX-License-Identifier: Apache-2.0
// Real disk speed: whole-file sequential passes with the page cache bypassed, from one
// page-aligned buffer, until about two seconds of transfer time per phase.
#include "workloads/storage/real_disk_speed.h"

#include "model/number_format.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_patterns.h"
#include "workloads/storage/storage_workloads.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/statvfs.h>
#include <unistd.h>

namespace quarbel::storage {
namespace {

constexpr std::int64_t kGibibyte = 1'073'741'824;
constexpr std::size_t kBufferAlignment = 4096;
constexpr double kScoreFactor = 5.0;
constexpr const char* kFileName = "real-disk-speed.bin";
constexpr const char* kFailurePrefix = "SSD real speed test failed: ";

// O_DIRECT set after opening, so that a file system that refuses it (tmpfs on older
// kernels, some network file systems) still runs the test, buffered.
bool requestUncached(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0) return false;
    return ::fcntl(fd, F_SETFL, flags | O_DIRECT) == 0;
}

bool phaseIsOver(const DiskSpeedPass& pass, const SequentialPassPlan& plan) {
    return pass.seconds >= plan.targetSeconds || pass.passes >= plan.passCap;
}

struct FreeDeleter {
    void operator()(std::byte* memory) const noexcept { std::free(memory); }
};

} // namespace

PosixError posixFailure(std::string_view operation) {
    const int code = errno;
    return {code, std::string(operation) + " failed: " + errorText(code)};
}

FreeSpace queryFreeSpace(const std::string& directory) {
    struct statvfs stats {};
    if (::statvfs(directory.c_str(), &stats) != 0) return {std::nullopt, errno};
    if (stats.f_frsize == 0) return {std::nullopt, 0};
    const auto limit = static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max());
    const unsigned long long blocks = stats.f_bavail;
    const unsigned long long blockSize = stats.f_frsize;
    if (blocks > limit / blockSize) return {std::numeric_limits<std::int64_t>::max(), 0};
    return {static_cast<std::int64_t>(blocks * blockSize), 0};
}

std::int64_t diskSpeedFileSize(std::optional<std::int64_t> freeBytes) {
    if (!freeBytes) return kGibibyte;
    for (const std::int64_t size : {8 * kGibibyte, 4 * kGibibyte, 2 * kGibibyte}) {
        if (*freeBytes > 12 * size - 1) return size;
    }
    return kGibibyte;
}

DiskSpeedPhase performSequentialWrite(const WorkloadContext& context, const SequentialPassPlan& plan,
                                      const ProgressOrigin& origin) {
    DiskSpeedPhase phase;
    FileDescriptor fd(
        ::open(plan.file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!fd.isOpen()) return {{}, posixFailure("open for write")};
    phase.pass.uncached = requestUncached(fd.get());

    while (!context.cancelled()) {
        if (::ftruncate(fd.get(), 0) != 0) return {{}, posixFailure("truncate")};
        if (::lseek(fd.get(), 0, SEEK_SET) < 0) return {{}, posixFailure("seek write")};
        const double start = monotonicSeconds();
        std::int64_t remaining = plan.fileSize;
        while (remaining > 0) {
            const std::int64_t chunk = std::min(remaining, plan.blockSize);
            std::int64_t done = 0;
            while (done < chunk) {
                const ssize_t written =
                    ::write(fd.get(), plan.buffer + done, static_cast<std::size_t>(chunk - done));
                if (written < 0) {
                    if (errno == EINTR) continue;
                    return {{}, posixFailure("write")};
                }
                if (written == 0) return {{}, posixFailure("write returned zero")};
                done += written;
            }
            remaining -= chunk;
            context.reportProgress(origin.bytesBefore + phase.pass.bytes + (plan.fileSize - remaining),
                                   monotonicSeconds() - origin.startSeconds, kByteProgress, kWritePhase);
        }
        ::fsync(fd.get()); // a failed sync does not invalidate the measured transfer
        const double end = monotonicSeconds();
        // The flush belongs to the pass's measured time, so its slices must hold it too.
        context.reportProgress(origin.bytesBefore + phase.pass.bytes + plan.fileSize,
                               end - origin.startSeconds, kByteProgress, kWritePhase);
        phase.pass.bytes += plan.fileSize;
        phase.pass.seconds += std::max(kMinimumElapsed, end - start);
        phase.pass.passes += 1;
        if (phaseIsOver(phase.pass, plan)) break;
    }
    return phase;
}

DiskSpeedPhase performSequentialRead(const WorkloadContext& context, const SequentialPassPlan& plan,
                                     const ProgressOrigin& origin) {
    DiskSpeedPhase phase;
    FileDescriptor fd(openExisting(plan.file, O_RDONLY));
    if (!fd.isOpen()) return {{}, posixFailure("open for read")};
    phase.pass.uncached = requestUncached(fd.get());

    while (!context.cancelled()) {
        if (::lseek(fd.get(), 0, SEEK_SET) < 0) return {{}, posixFailure("seek read")};
        const double start = monotonicSeconds();
        std::int64_t got = 0;
        while (got < plan.fileSize) {
            const std::int64_t request = std::min(plan.fileSize - got, plan.blockSize);
            const ssize_t result = ::read(fd.get(), plan.buffer, static_cast<std::size_t>(request));
            if (result < 0) {
                if (errno == EINTR) continue;
                return {{}, posixFailure("read")};
            }
            if (result == 0) break; // the file is shorter than expected: count what was there
            got += result;
            context.reportProgress(origin.bytesBefore + phase.pass.bytes + got,
                                   monotonicSeconds() - origin.startSeconds, kByteProgress, kReadPhase);
        }
        const double end = monotonicSeconds();
        phase.pass.bytes += got;
        phase.pass.seconds += std::max(kMinimumElapsed, end - start);
        phase.pass.passes += 1;
        if (phaseIsOver(phase.pass, plan)) break;
    }
    return phase;
}

BenchmarkOutcome realDiskSpeedOutcome(const DiskSpeedPass& write, const DiskSpeedPass& read,
                                      std::int64_t fileSize) {
    const double writeRate = megabytesPerSecond(write.bytes, write.seconds);
    const double readRate = megabytesPerSecond(read.bytes, read.seconds);
    const char* mode = write.uncached && read.uncached ? "uncached" : "standard";

    return completedOutcome((writeRate + readRate) * 0.5 * kScoreFactor, rateMeasurement("Read", readRate),
                            rateMeasurement("Write", writeRate), write.seconds + read.seconds,
                            std::string("Real disk speed: ") + mode + " POSIX sequential I/O, " +
                                formatBytes(fileSize) + " test file, " + std::to_string(write.passes) +
                                "x write pass, " + std::to_string(read.passes) + "x read pass.");
}

} // namespace quarbel::storage

namespace quarbel {

BenchmarkOutcome runSSDRealSpeed(const WorkloadContext& context) {
    return runSSDRealSpeed(context, SSDRealSpeedParameters{});
}

BenchmarkOutcome runSSDRealSpeed(const WorkloadContext& context, const SSDRealSpeedParameters& parameters) {
    using namespace storage;
    auto failure = [](const std::string& description) { return failedOutcome(kFailurePrefix + description); };

    reclaimStaleScratchDirectoriesAndNotify();
    ScratchDirectory directory;
    if (const int error = directory.create(); error != 0) return failure(errorText(error));
    const std::string file = directory.filePath(kFileName);

    std::int64_t fileSize = 0;
    if (parameters.fileSize) {
        fileSize = *parameters.fileSize;
    } else {
        const FreeSpace freeSpace = queryFreeSpace(directory.path());
        if (freeSpace.error != 0) return failure(errorText(freeSpace.error));
        fileSize = diskSpeedFileSize(freeSpace.bytes);
    }

    const std::int64_t blockSize = std::max<std::int64_t>(parameters.blockSize, kBufferAlignment);
    void* memory = nullptr;
    const int allocationError =
        ::posix_memalign(&memory, kBufferAlignment, static_cast<std::size_t>(blockSize));
    if (allocationError != 0 || memory == nullptr)
        return failure("Could not allocate aligned disk I/O buffer.");
    const std::unique_ptr<std::byte, FreeDeleter> buffer(static_cast<std::byte*>(memory));
    fillPattern({buffer.get(), static_cast<std::size_t>(blockSize)}, kRealSpeedPatternSeed,
                kRealSpeedPatternShift);

    const double targetSeconds = context.budget(parameters.passTargetSeconds);
    const SequentialPassPlan writePlan{file,         fileSize,      blockSize,
                                       buffer.get(), targetSeconds, parameters.writePassCap};
    const ProgressOrigin writeOrigin{0, monotonicSeconds()};
    const DiskSpeedPhase write = performSequentialWrite(context, writePlan, writeOrigin);
    if (write.error) return failure(write.error->description);

    if (context.cancelled()) return failedOutcome("SSD real speed test was cancelled.");

    SequentialPassPlan readPlan = writePlan;
    readPlan.passCap = parameters.readPassCap;
    const DiskSpeedPhase read =
        performSequentialRead(context, readPlan, {write.pass.bytes, writeOrigin.startSeconds});
    if (read.error) return failure(read.error->description);
    // No cancellation check here: a stop while reading yields the rates of what was read.

    return realDiskSpeedOutcome(write.pass, read.pass, fileSize);
}

} // namespace quarbel
