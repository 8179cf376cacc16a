// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/opencl_compute.h"

#include "workloads/gpu/device_selection.h"
#include "workloads/gpu/opencl_detail.h"
#include "workloads/gpu/submission_plan.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

QLResult::QLResult(std::int32_t code, double scoreValue, double gflopsValue, double gpuValue,
                   double secondsValue)
    : status(code) {
    if (code != 0) return;
    score = scoreValue;
    gflops = gflopsValue;
    gpu = gpuValue;
    seconds = secondsValue;
}

namespace quarbel::opencl {
namespace {

constexpr cl_uint kMaxPlatforms = 8;
constexpr cl_uint kMaxDevices = 8;
constexpr double kScoreFactor = 120.0;

// Releases whatever was created, in the order buffer, kernel, program, queue, context.
struct OpenCLObjects {
    cl_context context = nullptr;
    cl_command_queue queue = nullptr;
    cl_mem buffer = nullptr;
    cl_program program = nullptr;
    cl_kernel kernel = nullptr;

    ~OpenCLObjects() {
        if (buffer != nullptr) clReleaseMemObject(buffer);
        if (kernel != nullptr) clReleaseKernel(kernel);
        if (program != nullptr) clReleaseProgram(program);
        if (queue != nullptr) clReleaseCommandQueue(queue);
        if (context != nullptr) clReleaseContext(context);
    }
};

const QLResult kCallFailed(-3, 0, 0, 0, 0);
constexpr auto kStopCheckInterval = std::chrono::milliseconds(20);
constexpr std::size_t kPartsPerDispatch = 64;

// Set by the runtime's callback when a batch's last command has completed (or failed). Shared
// with the callback, which may come after the wait was given up.
struct BatchCompletion {
    std::mutex mutex;
    std::condition_variable completed;
    bool done = false;
};

void CL_CALLBACK onBatchComplete(cl_event, cl_int, void* data) {
    auto* completion = static_cast<std::shared_ptr<BatchCompletion>*>(data);
    {
        std::lock_guard lock((*completion)->mutex);
        (*completion)->done = true;
    }
    (*completion)->completed.notify_all();
    delete completion;
}

// Waits until `event` (the batch's last command) has completed: woken at once by the runtime,
// and asking `goOn` every 20 ms meanwhile; false as soon as it says no (nothing is waited
// for then).
bool waitForBatch(cl_command_queue queue, cl_event event, const std::function<bool()>& goOn) {
    clFlush(queue);
    if (!goOn()) return false; // asked before anything is waited for, however fast the batch
    auto completion = std::make_shared<BatchCompletion>();
    auto* shared = new std::shared_ptr<BatchCompletion>(completion);
    if (clSetEventCallback(event, CL_COMPLETE, onBatchComplete, shared) != CL_SUCCESS) {
        delete shared;
        clFinish(queue); // no callback: wait as a plain queue would
        return true;
    }
    {
        std::unique_lock lock(completion->mutex);
        while (!completion->completed.wait_for(lock, kStopCheckInterval, [&] { return completion->done; })) {
            lock.unlock();
            const bool goesOn = goOn();
            lock.lock();
            if (!goesOn) return false;
        }
    }
    clFinish(queue); // the batch is done; this only reports an error the queue met
    return true;
}

} // namespace

std::size_t globalWorkSize(std::int32_t count) noexcept {
    const auto items = static_cast<std::size_t>(std::max<std::int32_t>(count, 1));
    return (items + kLocalWorkSize - 1) / kLocalWorkSize * kLocalWorkSize;
}

void fillInitialData(std::span<float> data) noexcept {
    for (std::size_t k = 0; k < data.size(); ++k)
        data[k] = static_cast<float>(k % 251) * 0.001f;
}

cl_int findDevice(const DeviceDiscovery& discovery, cl_device_id* device, cl_platform_id* platform) {
    cl_uint platformCount = 0;
    cl_int error = discovery.getPlatformIDs(0, nullptr, &platformCount);
    if (error != CL_SUCCESS) return error;
    if (platformCount == 0) return -1;
    cl_platform_id platforms[kMaxPlatforms] = {};
    error = discovery.getPlatformIDs(kMaxPlatforms, platforms, &platformCount);
    if (error != CL_SUCCESS) return error;
    platformCount = std::min(platformCount, kMaxPlatforms);

    // A GPU on any platform is preferred to a CPU device on an earlier one.
    for (cl_device_type type : {cl_device_type{CL_DEVICE_TYPE_GPU}, cl_device_type{CL_DEVICE_TYPE_CPU}}) {
        for (cl_uint p = 0; p < platformCount; ++p) {
            cl_uint deviceCount = 0;
            if (discovery.getDeviceIDs(platforms[p], type, 0, nullptr, &deviceCount) != CL_SUCCESS ||
                deviceCount < 1)
                continue;
            cl_device_id devices[kMaxDevices] = {};
            if (discovery.getDeviceIDs(platforms[p], type, kMaxDevices, devices, nullptr) != CL_SUCCESS)
                continue;
            *device = devices[0];
            *platform = platforms[p];
            return CL_SUCCESS;
        }
    }
    return -2;
}

std::vector<PlatformDevice> allDevices() {
    cl_uint platformCount = 0;
    if (clGetPlatformIDs(0, nullptr, &platformCount) != CL_SUCCESS || platformCount == 0) return {};
    cl_platform_id platforms[kMaxPlatforms] = {};
    platformCount = std::min(platformCount, kMaxPlatforms);
    if (clGetPlatformIDs(platformCount, platforms, nullptr) != CL_SUCCESS) return {};
    const auto text = [](auto query, auto object, auto what) {
        char value[512] = {};
        query(object, what, sizeof value - 1, value, nullptr);
        return std::string(value);
    };
    std::vector<PlatformDevice> all;
    for (cl_uint p = 0; p < platformCount; ++p) {
        cl_device_id devices[kMaxDevices] = {};
        cl_uint count = 0;
        if (clGetDeviceIDs(platforms[p], CL_DEVICE_TYPE_ALL, kMaxDevices, devices, &count) != CL_SUCCESS)
            continue;
        const std::string platformText = text(clGetPlatformInfo, platforms[p], CL_PLATFORM_NAME) + " (" +
                                         text(clGetPlatformInfo, platforms[p], CL_PLATFORM_VERSION) + ")";
        for (cl_uint d = 0; d < std::min(count, kMaxDevices); ++d)
            all.push_back(
                {platforms[p], devices[d], platformText, text(clGetDeviceInfo, devices[d], CL_DEVICE_NAME)});
    }
    return all;
}

std::optional<PlatformDevice> deviceFromEnvironment() {
    const char* wanted = std::getenv("QUARBEL_OPENCL_DEVICE");
    if (wanted == nullptr || *wanted == '\0') return std::nullopt;
    const auto all = allDevices();
    std::vector<gpu::DeviceCandidate> candidates;
    for (const auto& d : all)
        candidates.push_back({d.platformText + " " + d.deviceName, gpu::DeviceKind::other});
    const auto index = gpu::matchDeviceOverride(candidates, wanted);
    return index ? std::optional(all[*index]) : std::nullopt;
}

QLResult runOpenCL(std::int32_t count, std::int32_t iterations, double seconds,
                   const std::function<bool(std::int64_t, double)>& afterBatch, std::uint32_t maxPerBatch,
                   const std::function<bool()>& stopRequested) {
    cl_device_id device = nullptr;
    cl_platform_id platform = nullptr;
    if (QLFindOpenCLDevice(&device, &platform) != CL_SUCCESS) return QLResult(-1, 0, 0, 0, 0);

    count = std::max<std::int32_t>(count, 1);
    iterations = std::max<std::int32_t>(iterations, 1);
    const double budget = seconds > 0 ? seconds : 1.0;
    const std::size_t floats = static_cast<std::size_t>(count) * 4;
    const std::size_t bytes = floats * sizeof(float);
    std::unique_ptr<float[]> host(new (std::nothrow) float[floats]);
    if (!host) return QLResult(-2, 0, 0, 0, 0);
    fillInitialData({host.get(), floats});

    OpenCLObjects cl;
    cl_int error = CL_SUCCESS;
    cl.context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &error);
    if (error != CL_SUCCESS || cl.context == nullptr) return kCallFailed;
    // Profiling gives the device's own busy time; a queue that cannot profile still runs.
    cl.queue = clCreateCommandQueue(cl.context, device, CL_QUEUE_PROFILING_ENABLE, &error);
    const bool profiled = error == CL_SUCCESS && cl.queue != nullptr;
    if (!profiled) cl.queue = clCreateCommandQueue(cl.context, device, 0, &error);
    if (error != CL_SUCCESS || cl.queue == nullptr) return kCallFailed;
    cl.buffer =
        clCreateBuffer(cl.context, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, bytes, host.get(), &error);
    if (error != CL_SUCCESS || cl.buffer == nullptr) return kCallFailed;
    const char* source = kKernelSource;
    cl.program = clCreateProgramWithSource(cl.context, 1, &source, nullptr, &error);
    if (error != CL_SUCCESS || cl.program == nullptr) return kCallFailed;
    if (clBuildProgram(cl.program, 1, &device, kBuildOptions, nullptr, nullptr) != CL_SUCCESS)
        return kCallFailed;
    cl.kernel = clCreateKernel(cl.program, kKernelName, &error);
    if (error != CL_SUCCESS || cl.kernel == nullptr) return kCallFailed;
    const cl_int iterationArgument = iterations;
    const cl_int countArgument = count;
    error = clSetKernelArg(cl.kernel, 0, sizeof(cl_mem), &cl.buffer);
    error |= clSetKernelArg(cl.kernel, 1, sizeof(cl_int), &iterationArgument);
    error |= clSetKernelArg(cl.kernel, 2, sizeof(cl_int), &countArgument);
    if (error != CL_SUCCESS) return kCallFailed;

    const std::size_t local = kLocalWorkSize;
    const std::size_t groups = globalWorkSize(count) / local;
    // A kernel too long for one batch is enqueued in parts, each a run of whole workgroups.
    const auto parts = static_cast<std::uint32_t>(std::min<std::size_t>(groups, kPartsPerDispatch));
    const auto groupsBefore = [&](std::uint64_t part) {
        return part / parts * groups + groups * (part % parts) / parts;
    };
    const gpu::SubmissionPlan plan{.maxDispatches = std::max<std::uint32_t>(maxPerBatch, 1)};
    std::uint32_t batch = 1;
    std::uint64_t partsDone = 0;
    double busy = 0;
    bool busyKnown = profiled;
    std::uint32_t mostPerBatch = 0;
    std::vector<std::pair<std::size_t, std::size_t>> ranges; // offset and size in work items
    const double start = QLNow();
    for (;;) {
        const double submitted = QLNow();
        ranges.clear();
        for (std::uint64_t part = partsDone, left = batch; left > 0;) {
            const std::uint64_t take = std::min<std::uint64_t>(left, parts - part % parts);
            const std::size_t begin = groupsBefore(part) % groups * local;
            ranges.emplace_back(begin, (groupsBefore(part + take) - groupsBefore(part)) * local);
            part += take;
            left -= take;
        }
        cl_event first = nullptr, last = nullptr;
        for (std::size_t i = 0; i < ranges.size(); ++i) {
            cl_event* event = i == 0 ? &first : i + 1 == ranges.size() ? &last : nullptr;
            if (clEnqueueNDRangeKernel(cl.queue, cl.kernel, 1, &ranges[i].first, &ranges[i].second, &local, 0,
                                       nullptr, event) != CL_SUCCESS) {
                if (first != nullptr) clReleaseEvent(first);
                return kCallFailed;
            }
        }
        // Waited for in short steps, so that a stop is seen within one step even while a batch
        // (or the first part, which a CPU device also compiles) takes seconds. What is still
        // queued after a stop finishes on its own: the objects live until it has.
        if (!waitForBatch(cl.queue, last != nullptr ? last : first,
                          [&] { return !stopRequested || !stopRequested(); })) {
            clReleaseEvent(first);
            if (last != nullptr) clReleaseEvent(last);
            break;
        }
        if (profiled) {
            cl_ulong began = 0, ended = 0;
            const cl_event end = last != nullptr ? last : first;
            const bool timed = clGetEventProfilingInfo(first, CL_PROFILING_COMMAND_START, sizeof(began),
                                                       &began, nullptr) == CL_SUCCESS &&
                               clGetEventProfilingInfo(end, CL_PROFILING_COMMAND_END, sizeof(ended), &ended,
                                                       nullptr) == CL_SUCCESS &&
                               ended >= began;
            busy += timed ? static_cast<double>(ended - began) * 1e-9 : 0;
            busyKnown = busyKnown && timed;
        }
        clReleaseEvent(first);
        if (last != nullptr) clReleaseEvent(last);
        partsDone += batch;
        mostPerBatch = std::max(mostPerBatch, std::max<std::uint32_t>(batch / parts, 1));
        const double finished = QLNow();
        const bool goOn =
            !afterBatch || afterBatch(static_cast<std::int64_t>(groupsBefore(partsDone)), finished - start);
        if (!goOn) break;
        batch = gpu::partsForNextSubmission(plan, (finished - submitted) / batch, budget - (finished - start),
                                            parts, static_cast<std::uint32_t>(partsDone % parts));
        if (batch == 0) break;
    }
    const double dispatches = static_cast<double>(groupsBefore(partsDone)) / static_cast<double>(groups);
    const double elapsed = QLNow() - start;

    cl_device_type type = 0;
    clGetDeviceInfo(device, CL_DEVICE_TYPE, sizeof(type), &type, nullptr);
    const double gpu = (type & CL_DEVICE_TYPE_GPU) != 0 ? 1.0 : 0.0;
    const double work = static_cast<double>(count) * static_cast<double>(iterations) * dispatches *
                        kOperationsPerElementIteration;
    const double gflops = work / elapsed / 1e9;
    QLResult result(0, kScoreFactor * gflops, gflops, gpu, elapsed);
    result.busyFraction = busyKnown && elapsed > 0 ? std::min(busy / elapsed, 1.0) : -1;
    result.mostPerSubmission = static_cast<std::int32_t>(mostPerBatch);
    return result;
}

} // namespace quarbel::opencl

extern "C" {

QLResult QuarbelRunOpenCL(std::int32_t count, std::int32_t iterations, double seconds) {
    return quarbel::opencl::runOpenCL(count, iterations, seconds, {});
}

cl_int QLFindOpenCLDevice(cl_device_id* device, cl_platform_id* platform) {
    if (const auto chosen = quarbel::opencl::deviceFromEnvironment()) {
        *device = chosen->device;
        *platform = chosen->platform;
        return CL_SUCCESS;
    }
    return quarbel::opencl::findDevice({}, device, platform);
}

double QLNow(void) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // extern "C"
