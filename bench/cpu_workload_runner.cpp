// SPDX-License-Identifier: Apache-2.0
// Runs one CPU workload for the comparison scripts, in a clean process.
// Usage: quarbel_cpu_workload_runner <production|crypto|stream|tile|raw> <seconds> <threads>
//        quarbel_cpu_workload_runner <benchmark id> <budget scale>
// The first form runs a kernel in a oneTBB arena of a chosen size (for production and
// crypto, <threads> is also the worker count). The second runs a CPU benchmark exactly as
// quarbel dispatches it (default budget times the scale, on a thread of its own, default
// arena), as the bare side of bench/in_process_vs_bare.sh. Both print one line:
// "rate=<the workload's measured rate> score=<points> primary=<value unit> detail=<text>".
#include "workloads/cpu/cpu_workloads.h"
#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/parallel.h"
#include "workloads/cpu/production_mix.h"
#include "workloads/cpu/raw_decode.h"
#include "workloads/cpu/tile_renderer.h"

#include <oneapi/tbb/task_arena.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using namespace quarbel;

namespace {

struct Run {
    BenchmarkOutcome outcome;
    double scoreFactor = 1;
};

bool runNamed(const std::string& name, int threads, const WorkloadContext& context, Run& run) {
    if (name == "production") {
        run.outcome = runCPUWorkloadProfile(threads, BenchmarkID::cpuFloating, "Production", context);
        run.scoreFactor = threads == 1 ? cpu::kSingleWorkerScoreFactor : cpu::kMultiWorkerScoreFactor;
    } else if (name == "crypto") {
        run.outcome = cpu::runCPUDeveloper(threads, context);
        run.scoreFactor = cpu::kWorkflowScoreFactor;
    } else if (name == "stream") {
        run.outcome = cpu::runMemoryStream(context, cpu::kStreamElements);
        run.scoreFactor = cpu::kStreamScoreFactor;
    } else if (name == "tile") {
        run.outcome = cpu::runCineTile(context, cpu::kTileWidth, cpu::kTileHeight);
        run.scoreFactor = cpu::kTileScoreFactor;
    } else if (name == "raw") {
        run.outcome = cpu::runRawCPUDecode(context, cpu::kRawWidth, cpu::kRawHeight);
        run.scoreFactor = cpu::kRawScoreFactor;
    } else {
        return false;
    }
    return true;
}

// The CPU benchmarks by identifier, as the run controller dispatches them.
bool runBenchmark(const std::string& id, const WorkloadContext& context, Run& run) {
    struct Entry {
        const char* id;
        BenchmarkOutcome (*function)(const WorkloadContext&);
        double scoreFactor;
    };
    const Entry entries[] = {
        {"cpuInteger", runSingleCoreProfile, cpu::kSingleWorkerScoreFactor},
        {"cpuFloating", runMultiCoreProfile,
         cpu::multiCoreWorkerCount() == 1 ? cpu::kSingleWorkerScoreFactor : cpu::kMultiWorkerScoreFactor},
        {"cpuCrypto", runCPUDeveloper, cpu::kWorkflowScoreFactor},
        {"memoryStream", runMemoryStream, cpu::kStreamScoreFactor},
        {"cineTile", runCineTile, cpu::kTileScoreFactor},
        {"rawCPUDecode", runRawCPUDecode, cpu::kRawScoreFactor},
    };
    for (const Entry& entry : entries) {
        if (id != entry.id) continue;
        // A thread of its own, as the run controller's background task.
        std::thread([&] { run.outcome = entry.function(context); }).join();
        run.scoreFactor = entry.scoreFactor;
        return true;
    }
    return false;
}

int report(const Run& run) {
    if (run.outcome.status != OutcomeStatus::ok) {
        std::fprintf(stderr, "%s\n", run.outcome.detail.c_str());
        return 1;
    }
    std::printf("rate=%.6f score=%.2f primary=%s %s detail=%s\n", run.outcome.score / run.scoreFactor,
                run.outcome.score, run.outcome.primary.value.c_str(), run.outcome.primary.unit.c_str(),
                run.outcome.detail.c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3) {
        WorkloadContext context;
        context.budgetScale = std::atof(argv[2]);
        Run run;
        if (!runBenchmark(argv[1], context, run)) {
            std::fprintf(stderr, "unknown CPU benchmark %s\n", argv[1]);
            return 2;
        }
        return report(run);
    }
    if (argc != 4) {
        std::fprintf(stderr,
                     "usage: %s <production|crypto|stream|tile|raw> <seconds> <threads>\n"
                     "       %s <benchmark id> <budget scale>\n",
                     argv[0], argv[0]);
        return 2;
    }
    const std::string name = argv[1];
    const int threads = std::atoi(argv[3]);
    if (threads < 1) {
        std::fprintf(stderr, "threads must be at least 1\n");
        return 2;
    }
    WorkloadContext context;
    context.budgetSeconds = std::atof(argv[2]);

    Run run;
    bool known = false;
    tbb::task_arena arena(threads);
    arena.execute([&] { known = runNamed(name, threads, context, run); });
    if (!known) {
        std::fprintf(stderr, "unknown workload %s\n", name.c_str());
        return 2;
    }
    return report(run);
}
