// The three storage benchmarks: sequential file throughput through the page cache,
// uncached sequential throughput of the volume, and random 4 KiB access. Each works in a
// fresh private scratch directory under the temporary root ($TMPDIR when set and not
// empty, else /tmp) and removes it, with everything in it, before returning.
//
// Threading: each function blocks the calling (background) thread for the whole test and
// creates no threads. They read the context's cancellation token only at their fixed
// check points and report progress in bytes (sequential tests) or operations (random).
// They never throw; every error becomes a failed outcome whose detail carries the system's
// error text.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstdint>
#include <optional>

namespace quarbel {

inline constexpr std::int64_t kMebibyte = 1'048'576;

struct SSDSequentialParameters {
    std::int64_t blockSize = 16 * kMebibyte; // bytes per write and per read request; > 0
    int blockCount = 64;                     // writes per run, so the file is blockSize * blockCount bytes
};

struct SSDRealSpeedParameters {
    // Test file size in bytes; absent means chosen from the free space of the volume
    // (1 to 8 GiB). Must be a multiple of 4096 so that uncached I/O accepts every request.
    std::optional<std::int64_t> fileSize;
    std::int64_t blockSize =
        64 * kMebibyte;             // bytes, the aligned buffer and largest request; multiple of 4096
    double passTargetSeconds = 2.0; // summed pass time that ends a phase; scaled by the context's budget
    int writePassCap = 3;           // most write passes
    int readPassCap = 4;            // most read passes
};

struct SSDRandomParameters {
    std::int64_t preparationChunkSize =
        8 * kMebibyte;               // bytes written per preparation write; multiple of 4096
    int preparationCount = 64;       // preparation writes, so the file is 512 MiB
    int readsPerRound = 4096;        // random 4 KiB reads per round
    int writesPerRound = 2048;       // random 4 KiB writes per round
    double timeBudgetSeconds = 15.0; // rounds stop after this long; scaled by the context's budget
};

// Writes a file in large blocks, syncs it, reads it back through the page cache.
// "Read" and "Write" rates in MB/s or GB/s; score is 3 x their mean in MB/s.
BenchmarkOutcome runSSDSequential(const WorkloadContext& context);
BenchmarkOutcome runSSDSequential(const WorkloadContext& context, const SSDSequentialParameters& parameters);

// Whole-file write and read passes with the page cache bypassed (O_DIRECT where the file
// system allows it, else buffered and labelled "standard"). Score is 5 x the mean rate.
BenchmarkOutcome runSSDRealSpeed(const WorkloadContext& context);
BenchmarkOutcome runSSDRealSpeed(const WorkloadContext& context, const SSDRealSpeedParameters& parameters);

// Rounds of random 4 KiB reads and writes inside a prepared file; "Read" and "Write" in
// IOPS; score is their mean divided by 8.
BenchmarkOutcome runSSDRandom(const WorkloadContext& context);
BenchmarkOutcome runSSDRandom(const WorkloadContext& context, const SSDRandomParameters& parameters);

// Removes every scratch directory a storage test currently holds. Async-signal-safe: meant
// for a SIGINT handler that is about to end the process without waiting for the workload
// to return (the normal stop path is to cancel the token and let the workload clean up).
void removeActiveScratchDirectories() noexcept;

} // namespace quarbel
