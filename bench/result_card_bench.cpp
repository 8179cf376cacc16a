// SPDX-License-Identifier: Apache-2.0
// Rendering and writing one result card, the step a user waits for after choosing where
// to save it (budget: under 150 ms), and its two halves.
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_exporter.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace quarbel;
using namespace quarbel::cards;

namespace {

const HardwareRows kHardware = {{"Architecture", "x86-64 (x86_64)"},
                                {"CPU", "AMD EPYC 7B13 64-Core Processor"},
                                {"Cores", "16 logical cores"},
                                {"Memory", "125.8 GB"},
                                {"Metal GPU", "llvmpipe (LLVM 15.0.6, 256 bits)"},
                                {"macOS", "Debian GNU/Linux 12 (bookworm), kernel 6.1.0"}};

BenchmarkOutcome outcome(BenchmarkID id) {
    return {OutcomeStatus::ok,
            1000 + 37.5 * double(indexOf(id)),
            {"Throughput", "12.34", "GB/s"},
            MeasurementLine{"Operations", "1234567", "ops"},
            15.02,
            "Processed 4096 blocks of 256 KB with text changes and SHA-256. Digest 9f86d081884c7d65."};
}

BenchmarkCardContent single() {
    return {BenchmarkID::cpuCrypto,
            outcome(BenchmarkID::cpuCrypto),
            {52.0, 48.0, std::nullopt},
            true,
            false,
            std::chrono::system_clock::now(),
            kHardware,
            "0.1.0",
            98.5,
            RateUncertainty{20, 0.01, 19},
            false};
}

SummaryCardContent global() {
    SummaryCardContent content;
    for (BenchmarkID id : kAllBenchmarks)
        content.rows[id] = {TestRunState::done, outcome(id)};
    content.rows[BenchmarkID::openCLCompute] = {TestRunState::skipped, skippedOutcome("No OpenCL device.")};
    content.summary = {"Full Suite Summary", 12, 1, 0, 13, 1200, 215, 71.0, 64.0, {}};
    content.globalScore = 1100;
    content.hardware = kHardware;
    content.appVersion = "0.1.0";
    return content;
}

template <typename Content, typename Render>
void renderAndWrite(benchmark::State& state, const Content& content, Render render) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("card.png"));
    for (auto _ : state) {
        const auto problem = ResultCardExporter::writePNG(render(content), path);
        if (problem) state.SkipWithError(problem->toStdString().c_str());
    }
}

void BM_SingleCardRenderAndWrite(benchmark::State& state) {
    renderAndWrite(state, single(), renderBenchmarkCard);
}
void BM_GlobalCardRenderAndWrite(benchmark::State& state) {
    renderAndWrite(state, global(), renderSummaryCard);
}

void BM_GlobalCardRenderOnly(benchmark::State& state) {
    const SummaryCardContent content = global();
    for (auto _ : state)
        benchmark::DoNotOptimize(renderSummaryCard(content));
}

void BM_GlobalCardEncodeOnly(benchmark::State& state) {
    const QImage image = renderSummaryCard(global());
    for (auto _ : state) {
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG", 70); // as the exporter writes it
        benchmark::DoNotOptimize(png.size());
    }
}

BENCHMARK(BM_SingleCardRenderAndWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GlobalCardRenderAndWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GlobalCardRenderOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GlobalCardEncodeOnly)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
