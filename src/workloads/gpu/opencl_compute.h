// SPDX-License-Identifier: Apache-2.0
// The OpenCL compute benchmark's plain C entry points and the outcome the run controller
// makes of their result. Everything goes through the system's OpenCL ICD loader; a machine
// without a platform or device gets status -1, never a crash.
#pragma once

#include "model/outcome.h"

#include <CL/cl.h>

#include <cstdint>

// The numeric result of one OpenCL run. On any non-zero status the four numbers are 0.
struct QLResult {
    double score = 0;   // Quarbel points, 120 x gflops
    double gflops = 0;  // nominal giga floating-point operations per second
    double gpu = 0;     // 1.0 when the device used is a GPU, else 0.0
    double seconds = 0; // measured elapsed time of the dispatch loop
    std::int32_t status =
        0; // 0 success; -1 no device; -2 host memory allocation failed; -3 an OpenCL call failed
    // How the dispatches ran: the device's own time on them (profiling events) over the loop's
    // wall time, negative when unknown; the most kernels enqueued before one wait.
    double busyFraction = -1;
    std::int32_t mostPerSubmission = 0;

    QLResult() = default;
    QLResult(std::int32_t code, double score, double gflops, double gpu, double seconds);
};

extern "C" {

// Builds the benchmark kernel with fast relaxed math on the device QLFindOpenCLDevice picks,
// fills count float4 values and dispatches the kernel over them, a batch at a time, until
// `seconds` have passed (at least one dispatch). count and iterations below 1 are taken
// as 1; a budget of 0 or less as 1 s. Synchronous, any thread; does not observe cancellation.
QLResult QuarbelRunOpenCL(std::int32_t count, std::int32_t iterations, double seconds);

// The first GPU device of the first platform that has one, else the first CPU device likewise.
// Returns 0 with both outputs set; the platform query's error code; -1 with no platform; -2
// with no GPU or CPU device.
cl_int QLFindOpenCLDevice(cl_device_id* device, cl_platform_id* platform);

// Wall-clock seconds (CLOCK_REALTIME); only differences are meaningful.
double QLNow(void);

} // extern "C"

namespace quarbel {

// The run controller's outcome for a QLResult: status 0 is ok with "Compute" GFLOPS and the
// device kind; every other status is the same skipped outcome.
BenchmarkOutcome openCLOutcome(const QLResult& result);

} // namespace quarbel
