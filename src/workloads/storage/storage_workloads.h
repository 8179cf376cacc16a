// SPDX-License-Identifier: Apache-2.0
// The three storage benchmarks: sequential file throughput through the page cache,
// uncached sequential throughput of the volume, and random 4 KiB access. Each works in a
// fresh private scratch directory under the temporary root ($TMPDIR when set and not
// empty, else /tmp; created with mode 0700 when missing) and removes it, with everything
// in it, before returning. A write beyond the file-size limit (EFBIG, with SIGXFSZ
// ignored) or the volume's space fails the test like any other write error.
//
// Before making its own directory, each test reclaims the scratch directories that an
// interrupted run left in the temporary root and tells the notice sink what it gave back.
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
#include <functional>
#include <optional>
#include <string>
#include <vector>

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

// Removes every scratch directory a storage test currently holds, with its contents, and
// returns only once they are gone. Meant for a process that is about to end without
// waiting for the workload to return (the normal stop path is to cancel the token and let
// the workload clean up). Safe to call from any thread while the workloads run, including
// while one is removing its own directory; a directory whose creation overlaps the call is
// removed as well and that creation fails with ECANCELED. Async-signal-safe: lock-free
// atomics and system calls only.
void removeActiveScratchDirectories() noexcept;

// ---- Scratch directories left behind by an interrupted run ----

struct ReclaimFailure {
    std::string path; // the scratch directory that could not be removed completely
    int error = 0;    // errno of the first failure inside it
};

struct ReclaimReport {
    int directoriesRemoved = 0;
    std::int64_t bytesGivenBack = 0; // st_blocks * 512 of every file removed, bytes
    std::vector<ReclaimFailure> failures;
};

// Removes, directly in `root`, the directories named "Quarbel-" + a 36-character
// upper-case UUID that belong to this user and that no run holds any more: a run keeps an
// exclusive lock on its directory for as long as it exists, in this process or any other;
// directories of runs that ended without removing them (or of versions that took no lock)
// are free. Nothing else is touched: other names, files and symbolic links of a matching
// name stay, and links inside a removed directory are removed, never followed. A missing
// or unreadable root gives an empty report. Any thread.
ReclaimReport reclaimStaleScratchDirectories(const std::string& root);

// The text that tells the user what a reclaim in `root` did, one line per sentence:
// "Removed 2 scratch directories left by an interrupted run in /tmp (1.5 GB given back)."
// and "Could not remove the scratch directory <path> left by an interrupted run: <reason>."
// Empty when there is nothing to tell.
std::string reclaimNotice(const ReclaimReport& report, const std::string& root);

// Receives the notices of the storage tests (the reclaim notice above), on the thread of
// the test that produced them. Thread-safe; an empty function (the default) drops them.
void setScratchNoticeSink(std::function<void(const std::string&)> sink);

// Reclaims in the temporary root and passes the notice, if any, to the sink. This is what
// every storage test does first; a command that wants the same tidying calls it too.
ReclaimReport reclaimStaleScratchDirectoriesAndNotify();

} // namespace quarbel
