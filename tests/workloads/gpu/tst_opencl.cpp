// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_workloads.h"
#include "workloads/gpu/opencl_compute.h"
#include "workloads/gpu/opencl_detail.h"

#include "gpu_test_support.h"

using namespace quarbel;
using quarbel::testing::Float4;
using quarbel::testing::referenceKernel;

namespace {

// A fake arrangement of platforms, each with its {gpus, cpus}, for the discovery rule. A handle
// says where it came from: 1000 x (platform + 1), plus 100 for a GPU, plus the device's index.
std::vector<std::array<int, 2>> gFakePlatforms;
cl_int gFakePlatformError = CL_SUCCESS;

template <typename Handle>
Handle fakeHandle(std::size_t platform, cl_device_type type = 0, std::size_t device = 0) {
    return reinterpret_cast<Handle>((platform + 1) * 1000 + (type == CL_DEVICE_TYPE_GPU ? 100 : 0) + device);
}

cl_int fakeGetPlatformIDs(cl_uint entries, cl_platform_id* platforms, cl_uint* count) {
    if (gFakePlatformError != CL_SUCCESS) return gFakePlatformError;
    if (count != nullptr) *count = static_cast<cl_uint>(gFakePlatforms.size());
    for (cl_uint i = 0; platforms != nullptr && i < entries && i < gFakePlatforms.size(); ++i)
        platforms[i] = fakeHandle<cl_platform_id>(i);
    return CL_SUCCESS;
}

cl_int fakeGetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint entries, cl_device_id* devices,
                        cl_uint* count) {
    const std::size_t index = reinterpret_cast<std::size_t>(platform) / 1000 - 1;
    const auto available = static_cast<cl_uint>(gFakePlatforms[index][type == CL_DEVICE_TYPE_GPU ? 0 : 1]);
    if (available == 0) return CL_DEVICE_NOT_FOUND;
    if (count != nullptr) *count = available;
    for (cl_uint i = 0; devices != nullptr && i < entries && i < available; ++i)
        devices[i] = fakeHandle<cl_device_id>(index, type, i);
    return CL_SUCCESS;
}

cl_int findWithFakes(cl_device_id& device, cl_platform_id& platform) {
    opencl::DeviceDiscovery discovery;
    discovery.getPlatformIDs = &fakeGetPlatformIDs;
    discovery.getDeviceIDs = &fakeGetDeviceIDs;
    return opencl::findDevice(discovery, &device, &platform);
}

} // namespace

TEST(OpenCLDeviceDiscovery, AGpuOnAnyOfTheFirstEightPlatformsBeatsACpuAndErrorsSayWhatWasMissing) {
    std::vector<std::array<int, 2>> nineWithADeviceOnlyOnTheLast(9);
    nineWithADeviceOnlyOnTheLast[8] = {1, 1};
    const struct {
        const char* name;
        std::vector<std::array<int, 2>> platforms;
        cl_int platformError, result;
        std::size_t platform = 0;
        cl_device_type type = CL_DEVICE_TYPE_GPU;
    } cases[] = {
        {"a GPU on a later platform", {{0, 2}, {0, 0}, {3, 1}, {1, 0}}, CL_SUCCESS, CL_SUCCESS, 2},
        {"else the first CPU", {{0, 0}, {0, 2}, {0, 1}}, CL_SUCCESS, CL_SUCCESS, 1, CL_DEVICE_TYPE_CPU},
        {"no platform", {}, CL_SUCCESS, -1},
        {"no device", {{0, 0}, {0, 0}}, CL_SUCCESS, -2},
        {"only the first 8 platforms count", nineWithADeviceOnlyOnTheLast, CL_SUCCESS, -2},
        // CL_PLATFORM_NOT_FOUND_KHR, as ocl-icd says without vendors.
        {"the loader's error", {{1, 1}}, -1001, -1001},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        gFakePlatforms = c.platforms;
        gFakePlatformError = c.platformError;
        cl_device_id device = nullptr;
        cl_platform_id platform = nullptr;
        ASSERT_EQ(findWithFakes(device, platform), c.result);
        if (c.result != CL_SUCCESS) continue;
        EXPECT_EQ(platform, fakeHandle<cl_platform_id>(c.platform));
        EXPECT_EQ(device, fakeHandle<cl_device_id>(c.platform, c.type));
    }
    gFakePlatformError = CL_SUCCESS;
}

TEST(OpenCLCompute, KernelOverWholeWorkGroupsUpdatesExactlyTheCountedElementsLikeTheCpu) {
    EXPECT_EQ(opencl::globalWorkSize(2'097'152), 2'097'152u);
    EXPECT_EQ(opencl::globalWorkSize(1'000), 1'024u);
    EXPECT_EQ(opencl::globalWorkSize(129), 256u);
    EXPECT_EQ(opencl::globalWorkSize(0), 128u);
    EXPECT_EQ(opencl::globalWorkSize(-5), 128u);
    cl_device_id device = nullptr;
    cl_platform_id platform = nullptr;
    ASSERT_EQ(QLFindOpenCLDevice(&device, &platform), CL_SUCCESS) << "the test machine provides PoCL";

    constexpr cl_int kCount = 1'000;
    constexpr cl_int kIterations = 2;
    const std::size_t global = opencl::globalWorkSize(kCount);
    std::vector<float> data(global * 4);
    opencl::fillInitialData(data);
    const std::vector<float> initial = data;

    cl_int error = CL_SUCCESS;
    cl_context context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &error);
    cl_command_queue queue = clCreateCommandQueue(context, device, 0, &error);
    // The buffer holds the whole rounded-up range, so stray writes past count would show.
    const std::size_t bytes = data.size() * sizeof(float), local = opencl::kLocalWorkSize;
    cl_mem buffer =
        clCreateBuffer(context, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, bytes, data.data(), &error);
    const char* source = opencl::kKernelSource;
    cl_program program = clCreateProgramWithSource(context, 1, &source, nullptr, &error);
    ASSERT_EQ(clBuildProgram(program, 1, &device, opencl::kBuildOptions, nullptr, nullptr), CL_SUCCESS);
    cl_kernel kernel = clCreateKernel(program, opencl::kKernelName, &error);
    clSetKernelArg(kernel, 0, sizeof(cl_mem), &buffer);
    clSetKernelArg(kernel, 1, sizeof(cl_int), &kIterations);
    clSetKernelArg(kernel, 2, sizeof(cl_int), &kCount);
    EXPECT_EQ(clEnqueueNDRangeKernel(queue, kernel, 1, nullptr, &global, &local, 0, nullptr, nullptr),
              CL_SUCCESS);
    EXPECT_EQ(clEnqueueReadBuffer(queue, buffer, CL_TRUE, 0, bytes, data.data(), 0, nullptr, nullptr),
              CL_SUCCESS);
    clReleaseMemObject(buffer);
    clReleaseKernel(kernel);
    clReleaseProgram(program);
    clReleaseCommandQueue(queue);
    clReleaseContext(context);

    for (std::size_t element = 0; element < static_cast<std::size_t>(kCount); ++element) {
        const float* in = &initial[element * 4];
        const Float4 v = referenceKernel({in[0], in[1], in[2], in[3]}, kIterations);
        // native_sin/native_cos under relaxed math promise no accuracy; 1e-3 allows for that
        // while any change to the arithmetic moves values by far more.
        for (std::size_t lane = 0; lane < 4; ++lane)
            ASSERT_NEAR(data[element * 4 + lane], v[lane], 1e-3) << "element " << element << " lane " << lane;
    }
    for (std::size_t k = static_cast<std::size_t>(kCount) * 4; k < data.size(); ++k)
        ASSERT_EQ(data[k], initial[k]) << "work item past count wrote float " << k;
}

TEST(OpenCLCompute, ArgumentsBelowOneRunOneElementOneIterationForOneSecondAndTheOutcomeSaysCpu) {
    const QLResult result = QuarbelRunOpenCL(0, 0, 0.0);
    ASSERT_EQ(result.status, 0);
    EXPECT_GE(result.seconds, 1.0);
    EXPECT_EQ(result.gpu, 0.0) << "PoCL is a CPU device";
    // gflops = 1 element x 1 iteration x dispatches x 42 / seconds / 1e9: a whole count of dispatches.
    const double dispatches = result.gflops * result.seconds * 1e9 / 42.0;
    EXPECT_GE(dispatches, 0.999);
    EXPECT_NEAR(dispatches, std::round(dispatches), 1e-3);
    EXPECT_DOUBLE_EQ(result.score, 120.0 * result.gflops);

    // Through the controller: the dispatches as progress.
    quarbel::testing::CancellingProgress progress(1'000'000);
    WorkloadContext context = progress.context();
    context.budgetSeconds = 0.05;
    const BenchmarkOutcome outcome = runOpenCLCompute(context, {256, 4});
    ASSERT_EQ(outcome.status, OutcomeStatus::ok) << outcome.detail;
    EXPECT_EQ(outcome.secondary, (MeasurementLine{"Device", "CPU", ""}));
    ASSERT_FALSE(progress.units.empty());
    EXPECT_GE(progress.units.back(), 1);
    EXPECT_GE(outcome.duration, 0.05);
}

TEST(OpenCLCompute, BatchesKernelsBetweenWaitsProfilesThemAndStopsWhenAsked) {
    std::vector<std::int64_t> counts;
    const QLResult result = opencl::runOpenCL(
        256, 4, 60.0,
        [&](std::int64_t workgroups, double) {
            counts.push_back(workgroups);
            return counts.size() < 3; // a stop request after the third batch
        },
        16);
    ASSERT_EQ(result.status, 0);
    ASSERT_EQ(counts.size(), 3u) << "the loop ends on the stop, not the 60 s budget";
    EXPECT_LT(result.seconds, 30.0);
    // Two workgroups of 128 a kernel: the first batch is one of them, later ones end on whole kernels.
    EXPECT_EQ(counts[0], 1);
    EXPECT_EQ(counts[1] % 2, 0);
    EXPECT_GT(result.mostPerSubmission, 1) << "a tiny kernel is batched";
    EXPECT_LE(result.mostPerSubmission, 16);
    // gflops counts exactly the workgroups reported.
    EXPECT_NEAR(result.gflops * result.seconds * 1e9 / (256.0 * 4 * 42),
                static_cast<double>(counts.back()) / 2, 1e-6);
    EXPECT_GT(result.busyFraction, 0.0) << "PoCL profiles its queue";
    EXPECT_LE(result.busyFraction, 1.0);
    // A stop seen while a batch still runs ends the loop without waiting for the batch.
    int batchesEnded = 0;
    const QLResult stopped = opencl::runOpenCL(
        256, 4, 60.0, [&](std::int64_t, double) { return ++batchesEnded > 0; }, 16, [] { return true; });
    EXPECT_EQ(stopped.status, 0);
    EXPECT_EQ(batchesEnded, 0);
    EXPECT_EQ(stopped.gflops, 0.0) << "the unfinished batch is not counted";
    const BenchmarkOutcome outcome = openCLOutcome(result);
    ASSERT_TRUE(outcome.gpu.has_value());
    EXPECT_EQ(outcome.gpu->dispatchesPerSubmission, static_cast<std::uint32_t>(result.mostPerSubmission));
    EXPECT_EQ(outcome.gpu->busyFraction, result.busyFraction);
}

TEST(OpenCLOutcome, MapsSuccessAndEveryFailureStatus) {
    const BenchmarkOutcome gpu = openCLOutcome(QLResult(0, 1234.5, 10.2875, 1.0, 15.25));
    EXPECT_EQ(gpu.status, OutcomeStatus::ok);
    EXPECT_EQ(gpu.score, 1234.5);
    EXPECT_EQ(gpu.primary, (MeasurementLine{"Compute", "10.29", "GFLOPS"}));
    EXPECT_EQ(gpu.secondary, (MeasurementLine{"Device", "GPU", ""}));
    EXPECT_EQ(gpu.duration, 15.25);
    EXPECT_EQ(gpu.detail, "Sustained OpenCL kernel with fast math for optional legacy compute coverage.");
    EXPECT_EQ(openCLOutcome(QLResult(0, 1, 1, 0.0, 1)).secondary->value, "CPU");

    for (std::int32_t status : {-1, -2, -3}) {
        const QLResult failed(status, 99, 99, 1, 99);
        EXPECT_EQ(failed.score, 0.0);
        EXPECT_EQ(failed.seconds, 0.0);
        EXPECT_EQ(openCLOutcome(failed),
                  skippedOutcome("OpenCL is unavailable or no compatible device was found."));
    }
}
