// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/checksum_text.h"
#include "workloads/cpu/cpu_workloads.h"
#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/parallel.h"
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
using namespace quarbel::cpu;
using quarbel::testing::StopAfterReports;

namespace {

// The checksum the raw decode's detail shows after frames 0 .. frames - 1 of a small frame.
std::uint64_t rawChecksum(int width, int height, int frames) {
    const auto raw = makeRawFrame(width, height);
    std::vector<std::uint64_t> rows(static_cast<std::size_t>(height));
    std::uint64_t value = 0;
    for (int frame = 0; frame < frames; ++frame) {
        decodeRawCPUFrame(raw, width, height, static_cast<std::uint64_t>(frame), rows);
        for (const std::uint64_t row : rows)
            value ^= row;
    }
    return value;
}

struct CpuRun {
    const char* name;
    std::size_t units; // one unit is ended by a budget of zero, more by a stop after the last
    std::function<BenchmarkOutcome(const WorkloadContext&)> run;
    std::int64_t unitsDone; // in the last report
    const char* unitName;
    double scorePerUnit;     // score x measured seconds / units done
    MeasurementLine primary; // value not compared
    MeasurementLine secondary;
    std::string detail;
};

CpuRun row(const char* name, std::size_t units, std::function<BenchmarkOutcome(const WorkloadContext&)> run,
           std::int64_t unitsDone, const char* unitName, double scorePerUnit, MeasurementLine primary,
           MeasurementLine secondary, std::string detail) {
    return {name, units, run, unitsDone, unitName, scorePerUnit, primary, secondary, detail};
}

std::vector<CpuRun> everyCpuWorkload() {
    const std::string mix = "Mixed production workload: text/binary transforms, image math, simulation, "
                            "lightweight ML, and SIMD mixing. Checksum ";
    const std::string workflow = "Production workload: 256 KB blocks, text/binary mutation, and sustained "
                                 "SHA-256 hashing. Digest ";
    const std::string raw = "Synthetic RAW CPU decode: 16-bit Bayer, simple demosaic, color transform, and "
                            "gamma. Checksum ";
    const std::int64_t workers = multiCoreWorkerCount();
    const MeasurementLine multiCore{"Multi-Core", "", "units/s"};
    std::vector<std::uint32_t> tile(48 * 27);
    renderTileFrame({48, 27, tile});
    // An even number of identical batches or frames cancels the checksum to 0.
    return {
        row(
            "memoryStream", 1, [](auto& c) { return runMemoryStream(c, 1000); }, 1, "passes",
            12'000 / 1e9 * 470, {"Bandwidth", "", "GB/s"}, {"Working Set", "183", "MB"},
            "Sustained stream triad with 1 passes over a large working set."),
        row(
            "memoryStream, three passes", 3, [](auto& c) { return runMemoryStream(c, 64); }, 3, "passes",
            64 * 12 / 1e9 * 470, {"Bandwidth", "", "GB/s"}, {"Working Set", "183", "MB"},
            "Sustained stream triad with 3 passes over a large working set."),
        row(
            "production mix, two workers", 1,
            [](auto& c) { return runCPUWorkloadProfile(2, BenchmarkID::cpuFloating, "Multi-Core", c); }, 52,
            "rounds", 720, multiCore, {"Threads", "2", ""},
            mix + checksumPrefix(runCPUMixedBatch(2, 26)) + "."),
        row("cpuInteger", 2, runSingleCoreProfile, 52, "rounds", 980, {"Single-Core", "", "units/s"},
            {"Threads", "1", ""}, mix + "0."),
        row("cpuFloating", 1, runMultiCoreProfile, workers * 26, "rounds", workers == 1 ? 980.0 : 720.0,
            multiCore, {"Threads", std::to_string(workers), ""},
            mix + checksumPrefix(runCPUMixedBatch(workers, 26)) + "."),
        row(
            "cpuCrypto, one worker", 1, [](auto& c) { return runCPUDeveloper(1, c); }, 18 * 262'144, "bytes",
            2.4 / 1'048'576, {"Workflow", "", "MB/s"}, {"Threads", "1", ""},
            workflow + std::to_string(runCryptoBatch(1, 18, makeWorkflowSeed())) + "."),
        row(
            "cpuCrypto, two workers", 2, [](auto& c) { return runCPUDeveloper(2, c); }, 2 * 2 * 18 * 262'144,
            "bytes", 2.4 / 1'048'576, {"Workflow", "", "MB/s"}, {"Threads", "2", ""}, workflow + "0."),
        row(
            "cineTile", 1, [](auto& c) { return runCineTile(c, 48, 27); }, 1, "frames",
            48 * 27 * 4 / 1e6 * 2650, {"Renderer", "", "MPix/s"}, {"Frames", "1", ""},
            "Sustained CPU tile render at 48x27, checksum " + checksumPrefix(tileFrameChecksum(tile)) + "."),
        row(
            "cineTile, two frames", 2, [](auto& c) { return runCineTile(c, 48, 27); }, 2, "frames",
            48 * 27 * 4 / 1e6 * 2650, {"Renderer", "", "MPix/s"}, {"Frames", "2", ""},
            "Sustained CPU tile render at 48x27, checksum 0."),
        row(
            "rawCPUDecode", 1, [](auto& c) { return runRawCPUDecode(c, 131, 5); }, 1, "frames", 1050,
            {"Decode", "", "FPS"}, {"Frame", "4K DCI", "RAW"},
            raw + checksumPrefix(rawChecksum(131, 5, 1)) + "."),
        // Successive frames differ, so their checksums do not cancel.
        row(
            "rawCPUDecode, two frames", 2, [](auto& c) { return runRawCPUDecode(c, 131, 5); }, 2, "frames",
            1050, {"Decode", "", "FPS"}, {"Frame", "4K DCI", "RAW"},
            raw + checksumPrefix(rawChecksum(131, 5, 2)) + "."),
    };
}

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
#else
bool canReadStateInUse() { return false; } // the AVX register state exists on x86-64 only
bool upperHalvesInUse() { return false; }
void dirtyUpperHalves() {}
#endif

std::atomic<int> unitsSeen{0};
std::atomic<int> unitsStartedDirty{0};

void recordUnitStart() {
    unitsSeen.fetch_add(1);
    if (upperHalvesInUse()) unitsStartedDirty.fetch_add(1);
}

} // namespace

TEST(EveryCpuWorkload, RatesTheUnitsItRanNamesThemAndStartsEachWithCleanUpperRegisterHalves) {
    const bool checkRegisters = canReadStateInUse();
    quarbel::cpu::testing::setUnitStartObserver(recordUnitStart);
    for (const CpuRun& row : everyCpuWorkload()) {
        SCOPED_TRACE(row.name);
        unitsSeen = 0;
        unitsStartedDirty = 0;
        // A new thread inherits its creator's register state, dirty here on purpose, and every
        // progress report dirties it again on the workload's thread.
        dirtyUpperHalves();
        StopAfterReports stop = row.units == 1 ? StopAfterReports(1000, 0.0, dirtyUpperHalves)
                                               : StopAfterReports(row.units, 60.0, dirtyUpperHalves);
        BenchmarkOutcome outcome;
        std::thread([&] { outcome = row.run(stop.context()); }).join();
        EXPECT_GT(unitsSeen.load(), 0) << "the workload's units do not start through beginUnitOfWork()";
        if (checkRegisters) {
            EXPECT_EQ(unitsStartedDirty.load(), 0);
        }
        ASSERT_EQ(stop.reports.size(), row.units);
        const auto& last = stop.reports.back();
        EXPECT_EQ(last.unitsDone, row.unitsDone);
        EXPECT_EQ(last.unit.name, row.unitName);
        ASSERT_EQ(outcome.status, OutcomeStatus::ok);
        EXPECT_NEAR(outcome.score * outcome.duration / double(row.unitsDone), row.scorePerUnit,
                    row.scorePerUnit * 1e-9);
        EXPECT_EQ(outcome.primary.label, row.primary.label);
        EXPECT_EQ(outcome.primary.unit, row.primary.unit);
        // The live rate of the units reported, over the measured time, reads as the result.
        const auto rate = liveRate(last.unitsDone, outcome.duration, last.unit);
        ASSERT_TRUE(rate.has_value());
        EXPECT_EQ(rate->unit, outcome.primary.unit);
        EXPECT_NEAR(rate->value, std::stod(outcome.primary.value), 0.051 + rate->value * 1e-6);
        EXPECT_EQ(outcome.secondary, row.secondary);
        EXPECT_EQ(outcome.detail, row.detail);
    }
    quarbel::cpu::testing::setUnitStartObserver(nullptr);
}
