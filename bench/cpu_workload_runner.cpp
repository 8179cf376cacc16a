// Runs one CPU workload for the comparison scripts, in a oneTBB arena of a chosen size.
// Usage: quarbel_cpu_workload_runner <production|crypto|stream|tile|raw> <seconds> <threads>
// For production and crypto, <threads> is also the worker count. Prints one line:
// "rate=<the workload's measured rate> score=<points> primary=<value unit> detail=<text>".
#include "workloads/cpu/developer_workflow.h"
#include "workloads/cpu/memory_stream.h"
#include "workloads/cpu/production_mix.h"
#include "workloads/cpu/raw_decode.h"
#include "workloads/cpu/tile_renderer.h"

#include <oneapi/tbb/task_arena.h>

#include <cstdio>
#include <cstdlib>
#include <string>

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

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s <production|crypto|stream|tile|raw> <seconds> <threads>\n", argv[0]);
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
    if (run.outcome.status != OutcomeStatus::ok) {
        std::fprintf(stderr, "%s\n", run.outcome.detail.c_str());
        return 1;
    }
    std::printf("rate=%.6f score=%.2f primary=%s %s detail=%s\n", run.outcome.score / run.scoreFactor,
                run.outcome.score, run.outcome.primary.value.c_str(), run.outcome.primary.unit.c_str(),
                run.outcome.detail.c_str());
    return 0;
}
