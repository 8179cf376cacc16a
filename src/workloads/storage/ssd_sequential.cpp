// SPDX-License-Identifier: Apache-2.0
// Sequential file test: a large file written in big blocks, synced, and read back through
// the page cache. The write figure is a durable-write rate (open, writes, fsync and close
// are all timed); the read figure may come largely from memory, which is intended.
#include "workloads/storage/storage_workloads.h"

#include "model/number_format.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_patterns.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr const char* kFileName = "sequential-media.bin";
constexpr double kScoreFactor = 3.0;

BenchmarkOutcome sequentialFailure(int errorNumber) {
    return failedOutcome("SSD sequential test failed: " + storage::errorText(errorNumber));
}

} // namespace

BenchmarkOutcome runSSDSequential(const WorkloadContext& context) {
    return runSSDSequential(context, SSDSequentialParameters{});
}

BenchmarkOutcome runSSDSequential(const WorkloadContext& context, const SSDSequentialParameters& parameters) {
    using namespace storage;
    const std::int64_t blockSize = std::max<std::int64_t>(parameters.blockSize, 1);
    const auto blockBytes = static_cast<std::size_t>(blockSize);

    reclaimStaleScratchDirectoriesAndNotify();
    ScratchDirectory directory;
    if (const int error = directory.create(); error != 0) return sequentialFailure(error);
    const std::string file = directory.filePath(kFileName);

    // One block, generated before any timing and written over and over; the read phase
    // reads into it too, since the pattern is no longer needed then.
    auto block = std::make_unique_for_overwrite<std::byte[]>(blockBytes);
    fillPattern({block.get(), blockBytes}, kSequentialPatternSeed, kSequentialPatternShift);

    // A failed creation surfaces when the file is opened below; its errno says why.
    const int creationError = createEmptyFile(file);

    const double writeStart = monotonicSeconds();
    FileDescriptor output(openExisting(file, O_WRONLY));
    if (!output.isOpen()) return sequentialFailure(creationError != 0 ? creationError : errno);
    std::int64_t bytesWritten = 0;
    for (int round = 0; round < parameters.blockCount; ++round) {
        if (context.cancelled()) break;
        if (const int error = writeAll(output.get(), block.get(), blockBytes); error != 0) {
            return sequentialFailure(error);
        }
        bytesWritten += blockSize;
        context.reportProgress(bytesWritten, monotonicSeconds() - writeStart, kByteProgress, kWritePhase);
    }
    if (::fsync(output.get()) != 0) return sequentialFailure(errno);
    if (const int error = output.close(); error != 0) return sequentialFailure(error);
    const double writeEnd = monotonicSeconds();
    // The flush belongs to the write's measured time, so its slices must hold it too.
    context.reportProgress(bytesWritten, writeEnd - writeStart, kByteProgress, kWritePhase);

    // A stop during writing is reported only now, after the partial file was synced and closed.
    if (context.cancelled()) return failedOutcome("SSD sequential test was cancelled.");

    const double writeSeconds = std::max(kMinimumElapsed, writeEnd - writeStart);
    const double readStart = monotonicSeconds();
    FileDescriptor input(openExisting(file, O_RDONLY));
    if (!input.isOpen()) return sequentialFailure(errno);
    std::int64_t bytesRead = 0;
    // A stop while reading just ends the phase: the rate covers the chunks read so far.
    while (!context.cancelled()) {
        const ssize_t got = readUpTo(input.get(), block.get(), blockBytes);
        if (got < 0) return sequentialFailure(errno);
        if (got == 0) break;
        bytesRead += got;
        context.reportProgress(bytesWritten + bytesRead, writeSeconds + (monotonicSeconds() - readStart),
                               kByteProgress, kReadPhase);
    }
    if (const int error = input.close(); error != 0) return sequentialFailure(error);
    const double readEnd = monotonicSeconds();
    const double readSeconds = std::max(kMinimumElapsed, readEnd - readStart);

    const double writeRate = megabytesPerSecond(bytesWritten, writeSeconds);
    const double readRate = megabytesPerSecond(bytesRead, readSeconds);
    const std::int64_t fileSize = blockSize * parameters.blockCount;

    return completedOutcome((writeRate + readRate) * 0.5 * kScoreFactor, rateMeasurement("Read", readRate),
                            rateMeasurement("Write", writeRate), writeSeconds + readSeconds,
                            "Sequential file test: " + formatBytes(fileSize) + " temporary media file, " +
                                formatBytes(blockSize) + " blocks, sustained read/write throughput.");
}

} // namespace quarbel
