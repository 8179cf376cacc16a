// SPDX-License-Identifier: Apache-2.0
// The pieces of the OpenCL benchmark that are checked on their own.
#pragma once

#include "workloads/gpu/opencl_compute.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quarbel::opencl {

// The kernel as one line of OpenCL C; entry point "bench", built with kBuildOptions.
inline constexpr const char* kKernelSource =
    "__kernel void bench(__global float4 *data, const int iterations, const int count) {  int gid = "
    "get_global_id(0);  if (gid >= count) return;  float4 v = data[gid] + (float4)(0.11f, 0.23f, 0.37f, "
    "0.41f);  "
    "for (int i = 0; i < iterations; ++i) {    float f = (float)i * 0.00013f;    v = native_sin(v * 1.00019f "
    "+ f) "
    "+ native_cos(v.yzwx * 0.99991f - f);    v = mad(v, (float4)(1.00001f, 0.99999f, 1.00003f, 0.99997f), "
    "(float4)(0.0001f, -0.0002f, 0.0003f, -0.0004f));  }  data[gid] = v;}";
inline constexpr const char* kKernelName = "bench";
inline constexpr const char* kBuildOptions = "-cl-fast-relaxed-math";
inline constexpr std::size_t kLocalWorkSize = 128;

// `count` work items rounded up to whole work groups of kLocalWorkSize.
std::size_t globalWorkSize(std::int32_t count) noexcept;

// Float k of the buffer (4 per element) is float(k mod 251) x 0.001.
void fillInitialData(std::span<float> data) noexcept;

// The two discovery calls, replaceable so that the device rule can be checked against any
// arrangement of platforms and devices. Signatures as clGetPlatformIDs and clGetDeviceIDs.
struct DeviceDiscovery {
    cl_int (*getPlatformIDs)(cl_uint, cl_platform_id*, cl_uint*) = &clGetPlatformIDs;
    cl_int (*getDeviceIDs)(cl_platform_id, cl_device_type, cl_uint, cl_device_id*,
                           cl_uint*) = &clGetDeviceIDs;
};
cl_int findDevice(const DeviceDiscovery& discovery, cl_device_id* device, cl_platform_id* platform);

// Every device of every platform (at most 8 of each), in platform order, labelled
// "<platform name> (<platform version>) <device name>" for matching QUARBEL_OPENCL_DEVICE.
struct PlatformDevice {
    cl_platform_id platform = nullptr;
    cl_device_id device = nullptr;
    std::string platformText; // "Portable Computing Language (OpenCL 3.0 PoCL 3.1 ...)"
    std::string deviceName;
};
std::vector<PlatformDevice> allDevices();

// The device QUARBEL_OPENCL_DEVICE names (an index into allDevices() or a part of its label),
// nullopt when unset or naming none.
std::optional<PlatformDevice> deviceFromEnvironment();

// Floating-point operations per element and iteration of the kernel, for its GFLOPS.
inline constexpr double kOperationsPerElementIteration = 42.0;

// QuarbelRunOpenCL, calling `afterBatch(workgroups, elapsedSeconds)` after each batch has
// finished, with the workgroups done so far; the loop ends early when it returns false (a stop
// request), and also while a batch still runs once `stopRequested` (asked every 20 ms) says so.
// `maxPerBatch` caps the kernels enqueued before one wait (1: one at a time). A kernel too long
// for one batch is enqueued in up to 64 parts, and past the budget the loop ends once the last
// kernel is whole, as the Vulkan loop does.
QLResult runOpenCL(std::int32_t count, std::int32_t iterations, double seconds,
                   const std::function<bool(std::int64_t, double)>& afterBatch,
                   std::uint32_t maxPerBatch = 256, const std::function<bool()>& stopRequested = {});

} // namespace quarbel::opencl
