// SPDX-License-Identifier: Apache-2.0
// Every CPU workload must run its units from a clean AVX register state, whatever state
// the thread that started it left behind: here the starting thread and every progress
// report deliberately leave the upper YMM halves in use.
#include "workloads/cpu/cpu_workloads.h"
#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/production_mix.h"
#include "workloads/cpu/raw_decode.h"
#include "workloads/cpu/tile_renderer.h"
#include "workloads/cpu/unit_of_work.h"

#include "workload_test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

using namespace quarbel;

namespace {

#if defined(__x86_64__)
// XGETBV with ECX = 1 reads XINUSE: bit 2 is the upper YMM halves, bit 6 the upper
// halves of ZMM0-15. Needs CPUID.(EAX=0DH, ECX=1):EAX bit 2.
bool canReadStateInUse() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__builtin_cpu_supports("avx") || !__get_cpuid_count(0x0D, 1, &eax, &ebx, &ecx, &edx)) return false;
    return (eax & (1u << 2)) != 0;
}

bool upperHalvesInUse() {
    unsigned low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return (low & ((1u << 2) | (1u << 6))) != 0;
}

// Loads a non-zero value into all of YMM1 without a closing VZEROUPPER.
void dirtyUpperHalves() {
    static const float one = 1.0f;
    asm volatile("vbroadcastss %0, %%ymm1" : : "m"(one) : "xmm1");
}
#endif

std::atomic<int> unitsSeen{0};
std::atomic<int> unitsStartedDirty{0};

void recordUnitStart() {
#if defined(__x86_64__)
    unitsSeen.fetch_add(1);
    if (upperHalvesInUse()) unitsStartedDirty.fetch_add(1);
#endif
}

// Stops after a few units and dirties the state after each one, on the workload's thread.
class DirtyingProgress final : public ProgressSink {
  public:
    void report(const ProgressReport&) noexcept override {
#if defined(__x86_64__)
        dirtyUpperHalves();
#endif
        if (++reports_ >= 3) token_.cancel();
    }
    WorkloadContext context() { return {&token_, this, 60.0, 1.0}; }

  private:
    CancellationToken token_;
    int reports_ = 0;
};

struct Workload {
    const char* name;
    std::function<BenchmarkOutcome(const WorkloadContext&)> run;
};

const Workload kWorkloads[] = {
    {"cpuInteger",
     [](const WorkloadContext& c) {
         return runCPUWorkloadProfile(1, BenchmarkID::cpuInteger, "Single-Core", c);
     }},
    {"cpuFloating",
     [](const WorkloadContext& c) {
         return runCPUWorkloadProfile(2, BenchmarkID::cpuFloating, "Multi-Core", c);
     }},
    {"cpuCrypto", [](const WorkloadContext& c) { return cpu::runCPUDeveloper(2, c); }},
    {"memoryStream", [](const WorkloadContext& c) { return cpu::runMemoryStream(c, 4096); }},
    {"cineTile", [](const WorkloadContext& c) { return cpu::runCineTile(c, 48, 27); }},
    {"rawCPUDecode", [](const WorkloadContext& c) { return cpu::runRawCPUDecode(c, 64, 34); }},
};

} // namespace

TEST(UnitOfWork, EveryCpuWorkloadStartsItsUnitsWithCleanUpperRegisterHalves) {
#if !defined(__x86_64__)
    GTEST_SKIP() << "the AVX register state exists on x86-64 only";
#else
    if (!canReadStateInUse()) GTEST_SKIP() << "this CPU cannot report which register state is in use";
    cpu::testing::setUnitStartObserver(recordUnitStart);
    for (const Workload& workload : kWorkloads) {
        SCOPED_TRACE(workload.name);
        unitsSeen = 0;
        unitsStartedDirty = 0;
        // A new thread inherits its creator's register state, dirty here on purpose.
        dirtyUpperHalves();
        std::thread runner([&] {
            DirtyingProgress progress;
            EXPECT_EQ(workload.run(progress.context()).status, OutcomeStatus::ok);
        });
        runner.join();
        EXPECT_GT(unitsSeen.load(), 0) << "the workload's units do not start through beginUnitOfWork()";
        EXPECT_EQ(unitsStartedDirty.load(), 0);
    }
    cpu::testing::setUnitStartObserver(nullptr);
#endif
}
