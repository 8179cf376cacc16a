// SPDX-License-Identifier: Apache-2.0
// Random 4K test: rounds of random one-page reads and writes inside a prepared file,
// through the page cache, counted as operations per second of time spent in the phases.
#include "workloads/storage/storage_workloads.h"

#include "model/number_format.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_patterns.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace quarbel {
namespace {

constexpr const char* kFileName = "random.bin";
constexpr std::size_t kOperationSize = 4096;

BenchmarkOutcome randomFailure(int errorNumber) {
    return failedOutcome("Random SSD test failed: " + storage::errorText(errorNumber));
}

// One page at `offset`; the data is not used, only the transfer counts.
bool readPage(int fd, std::byte* page, std::int64_t offset) {
    for (;;) {
        if (::pread(fd, page, kOperationSize, static_cast<off_t>(offset)) >= 0) return true;
        if (errno != EINTR) return false;
    }
}

} // namespace

BenchmarkOutcome runSSDRandom(const WorkloadContext& context) {
    return runSSDRandom(context, SSDRandomParameters{});
}

BenchmarkOutcome runSSDRandom(const WorkloadContext& context, const SSDRandomParameters& parameters) {
    using namespace storage;
    reclaimStaleScratchDirectoriesAndNotify();
    ScratchDirectory directory;
    if (const int error = directory.create(); error != 0) return randomFailure(error);
    const std::string file = directory.filePath(kFileName);

    // Both buffers start the same sequence, so the file's first page equals the write block.
    std::array<std::byte, kOperationSize> writeBlock{};
    fillPattern(writeBlock, kSequentialPatternSeed, kSequentialPatternShift);
    std::array<std::byte, kOperationSize> readPageBuffer{};

    const int creationError = createEmptyFile(file);
    {
        FileDescriptor output(openExisting(file, O_WRONLY));
        if (!output.isOpen()) return randomFailure(creationError != 0 ? creationError : errno);
        const auto chunkBytes =
            static_cast<std::size_t>(std::max<std::int64_t>(parameters.preparationChunkSize, 1));
        auto chunk = std::make_unique_for_overwrite<std::byte[]>(chunkBytes);
        fillPattern({chunk.get(), chunkBytes}, kSequentialPatternSeed, kSequentialPatternShift);
        // Preparation is never interrupted: the rounds need the whole file.
        for (int i = 0; i < parameters.preparationCount; ++i) {
            if (const int error = writeAll(output.get(), chunk.get(), chunkBytes); error != 0) {
                return randomFailure(error);
            }
        }
        if (::fsync(output.get()) != 0) return randomFailure(errno);
        if (const int error = output.close(); error != 0) return randomFailure(error);
    }

    const std::int64_t fileSize = parameters.preparationChunkSize * parameters.preparationCount;
    RandomOffsetGenerator offsets(fileSize / RandomOffsetGenerator::kPageSize);
    const double budgetSeconds = context.budget(parameters.timeBudgetSeconds);
    const double measurementStart = monotonicSeconds();
    std::int64_t readOperations = 0;
    std::int64_t writeOperations = 0;
    double readSeconds = 0;
    double writeSeconds = 0;

    // Each phase opens and closes its own descriptor inside its timing; close errors are
    // not data errors and are ignored. A round is never cut short.
    for (;;) {
        const double readStart = monotonicSeconds();
        {
            FileDescriptor input(openExisting(file, O_RDONLY));
            if (!input.isOpen()) return randomFailure(errno);
            for (int i = 0; i < parameters.readsPerRound; ++i) {
                if (!readPage(input.get(), readPageBuffer.data(), offsets.next()))
                    return randomFailure(errno);
            }
        }
        const double readEnd = monotonicSeconds();
        readOperations += parameters.readsPerRound;
        readSeconds += std::max(kMinimumElapsed, readEnd - readStart);
        context.reportProgress(readOperations + writeOperations, readSeconds + writeSeconds,
                               kOperationProgress, kReadPhase);

        const double writeStart = monotonicSeconds();
        {
            FileDescriptor output(openExisting(file, O_WRONLY));
            if (!output.isOpen()) return randomFailure(errno);
            for (int i = 0; i < parameters.writesPerRound; ++i) {
                const int error =
                    positionedWriteAll(output.get(), writeBlock.data(), kOperationSize, offsets.next());
                if (error != 0) return randomFailure(error);
            }
            if (::fsync(output.get()) != 0) return randomFailure(errno);
        }
        const double writeEnd = monotonicSeconds();
        writeOperations += parameters.writesPerRound;
        writeSeconds += std::max(kMinimumElapsed, writeEnd - writeStart);
        context.reportProgress(readOperations + writeOperations, readSeconds + writeSeconds,
                               kOperationProgress, kWritePhase);

        if (monotonicSeconds() - measurementStart >= budgetSeconds) break;
        if (context.cancelled()) break; // a stop ends the test with the rounds done so far
    }

    const double readIOPS = static_cast<double>(readOperations) / std::max(kMinimumElapsed, readSeconds);
    const double writeIOPS = static_cast<double>(writeOperations) / std::max(kMinimumElapsed, writeSeconds);

    return completedOutcome((readIOPS + writeIOPS) * 0.5 * 0.125, {"Read", format(readIOPS, 0), "IOPS"},
                            {"Write", format(writeIOPS, 0), "IOPS"}, readSeconds + writeSeconds,
                            "Sustained random 4K access inside a " + formatBytes(fileSize) +
                                " temporary file.");
}

} // namespace quarbel
