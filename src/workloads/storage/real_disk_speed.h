// SPDX-License-Identifier: Apache-2.0
// The pieces of the real disk speed test, apart so that each can be checked on its own:
// the file size chosen from free space, the write and read phases, and the outcome.
#pragma once

#include "model/outcome.h"
#include "model/workload_context.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarbel::storage {

// The result of one phase: all its write passes, or all its read passes.
struct DiskSpeedPass {
    double seconds = 0;     // summed pass times, each clamped to at least 1 µs; 0 if none ran
    std::int64_t bytes = 0; // bytes moved over all passes
    int passes = 0;         // passes completed
    bool uncached = false;  // the page-cache bypass was granted on this phase's descriptor
};

struct PosixError {
    int code = 0;            // errno at the time of the failure
    std::string description; // "<operation> failed: <strerror text>"
};

// The error of `operation` from the current errno.
PosixError posixFailure(std::string_view operation);

struct DiskSpeedPhase {
    DiskSpeedPass pass;
    std::optional<PosixError> error; // set when the phase failed; `pass` is then meaningless
};

// What both phases need. `buffer` holds `blockSize` bytes aligned to 4096; every request
// is taken from (or read into) its start.
struct SequentialPassPlan {
    std::string file;
    std::int64_t fileSize = 0;  // bytes per pass
    std::int64_t blockSize = 0; // largest single request, bytes
    std::byte* buffer = nullptr;
    double targetSeconds = 2.0; // a phase ends once its summed pass time reaches this
    int passCap = 1;            // or after this many passes
};

// Counts bytes moved across both phases for the progress sink.
struct ProgressOrigin {
    std::int64_t bytesBefore = 0; // bytes moved before this phase
    double startSeconds = 0;      // monotonic time the measurement began
};

// Free bytes available to unprivileged users on the volume of `directory`, or the errno
// of the failed query.
struct FreeSpace {
    std::optional<std::int64_t> bytes; // unknown when the volume does not say
    int error = 0;
};
FreeSpace queryFreeSpace(const std::string& directory);

// 8, 4, 2 or 1 GiB: the largest size of which the free space is at least twelve times;
// 1 GiB when the free space is unknown.
std::int64_t diskSpeedFileSize(std::optional<std::int64_t> freeBytes);

// Creates the file (exclusively, 0600), then writes whole passes of `fileSize` bytes, each
// starting from an empty file and ending with fsync, until the time target or the cap.
// Checks cancellation before each pass. Pass timing excludes open, truncate and seek.
DiskSpeedPhase performSequentialWrite(const WorkloadContext& context, const SequentialPassPlan& plan,
                                      const ProgressOrigin& origin);

// Reads the file from its start in passes until the time target or the cap; a pass that
// meets end of file early counts only what it read. Checks cancellation before each pass.
DiskSpeedPhase performSequentialRead(const WorkloadContext& context, const SequentialPassPlan& plan,
                                     const ProgressOrigin& origin);

// The ok outcome from both phases: rates, score (5 x mean MB/s), mode and pass counts.
BenchmarkOutcome realDiskSpeedOutcome(const DiskSpeedPass& write, const DiskSpeedPass& read,
                                      std::int64_t fileSize);

} // namespace quarbel::storage
