// SPDX-License-Identifier: Apache-2.0
// One unit of each CPU kernel: a production round, a block hash, a triad pass, a
// rendered row and a decoded RAW row.
#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/production_mix.h"
#include "workloads/cpu/raw_decode.h"
#include "workloads/cpu/tile_renderer.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace quarbel::cpu;

namespace {

void productionRound(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(runCPUKernel(0, 1));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(productionRound)->Unit(benchmark::kMicrosecond);

void workflowBlockHash(benchmark::State& state) {
    const std::vector<std::uint8_t> seed = makeWorkflowSeed();
    WorkflowWorkspace workspace(1);
    for (auto _ : state)
        benchmark::DoNotOptimize(workspace.runWorker(0, 1, seed));
    state.SetBytesProcessed(state.iterations() * kWorkflowBlockBytes);
}
BENCHMARK(workflowBlockHash)->Unit(benchmark::kMicrosecond);

void streamTriadPass(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(kStreamElements);
    const std::vector<float> a(n, 1.125f), b(n, 2.25f);
    std::vector<float> c(n, 0.5f);
    std::int64_t pass = 0;
    for (auto _ : state) {
        streamTriad(a, b, c, streamScalar(pass++));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kStreamElements * 12);
}
BENCHMARK(streamTriadPass)->Unit(benchmark::kMillisecond);

void tileRow(benchmark::State& state) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kTileWidth * kTileHeight));
    const TileImage image{kTileWidth, kTileHeight, pixels};
    for (auto _ : state) {
        renderTileRow(image, kTileHeight / 2);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kTileWidth * kTileSamplesPerPixel); // samples
}
BENCHMARK(tileRow)->Unit(benchmark::kMicrosecond);

void rawDecodeRow(benchmark::State& state) {
    const auto raw = makeRawFrame(kRawWidth, kRawHeight);
    std::uint64_t frame = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeRawRow(raw, kRawWidth, kRawHeight, kRawHeight / 2, frame++));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(rawDecodeRow)->Unit(benchmark::kMicrosecond);

} // namespace
