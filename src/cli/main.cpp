// quarbel: the headless command line of the benchmark suite.
#include "cli/info_command.h"
#include "cli/run_arguments.h"
#include "cli/run_session.h"
#include "cli/stop_signals.h"
#include "run/benchmark_store.h"
#include "sensors/system_snapshot.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/storage/storage_workloads.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

namespace {

using namespace quarbel;

constexpr const char* kDescription =
    "Quarbel benchmarks this machine with thirteen timed, sustained workloads and scores them in "
    "Quarbel points. Everything stays on this machine.\n"
    "On Linux the GPU benchmarks use Vulkan (the benchmarks named \"Metal\") and OpenCL.";

int listBenchmarks() {
    std::printf("%-16s %-18s %-8s %s\n", "ID", "TITLE", "CATEGORY", "TARGET");
    for (BenchmarkID id : kAllBenchmarks) {
        std::printf("%-16s %-18s %-8s %d s\n", std::string(rawValue(id)).c_str(),
                    std::string(title(id)).c_str(), std::string(categoryTitle(category(id))).c_str(),
                    targetSeconds(id));
    }
    return 0;
}

int runBenchmarks(int argc, char** argv, cli::RunOptions options) {
    QCoreApplication app(argc, argv);
    BenchmarkStore store;
    cli::RunSession session(store, std::move(options), stdout, isatty(STDOUT_FILENO) != 0,
                            cli::systemRowPairs);
    cli::StopSignals stopSignals;
    QObject::connect(&stopSignals, &cli::StopSignals::stopRequested, [&](int count) {
        if (count == 1) {
            session.requestStop();
            return;
        }
        // A second request leaves at once, still taking the scratch files along.
        std::fputs("\nquarbel: stopped at once\n", stderr);
        removeActiveScratchDirectories();
        std::_Exit(130);
    });
    int exitCode = 0;
    QObject::connect(&session, &cli::RunSession::finished, [&](int code) {
        exitCode = code;
        app.quit();
    });
    QTimer::singleShot(0, &session, &cli::RunSession::start);
    app.exec();
    return exitCode;
}

} // namespace

int main(int argc, char** argv) {
    // The "Metal GPU" row names the Vulkan device the GPU workloads would choose.
    SystemSnapshot::setGpuNameProvider([] { return gpu::defaultDeviceName().value_or(std::string{}); });

    CLI::App app{kDescription, "quarbel"};
    app.set_version_flag("--version", std::string("quarbel ") + QUARBEL_VERSION);
    app.require_subcommand(1);

    app.add_subcommand("list", "List the benchmarks: identifier, title, category and target seconds");

    auto* info = app.add_subcommand("info", "Show the machine's system facts and current temperatures");
    bool infoAsJson = false;
    info->add_flag("--json", infoAsJson, "Print the same as JSON");

    auto* run = app.add_subcommand("run", "Run benchmarks headless and print their scores");
    std::vector<std::string> names;
    bool all = false;
    cli::RunOptions options;
    run->add_option("ids", names, "Benchmark identifiers to run, in order (see 'quarbel list')");
    run->add_flag("--all", all, "Run the full suite of thirteen benchmarks");
    run->add_flag("--accuracy", options.accuracy, "Accuracy Mode: three passes each, keep the median");
    run->add_flag("--quick", options.quick, "Divide every time budget by 10 (results are marked quick)");
    run->add_option("--json", options.jsonPath, "Write the results as JSON to FILE")->type_name("FILE");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::Success& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "quarbel: %s\nRun 'quarbel --help' for usage.\n", e.what());
        return 2;
    }

    if (app.got_subcommand("list")) return listBenchmarks();
    if (app.got_subcommand("info")) {
        const auto temperatures =
            makeTemperatureSnapshot(QuarbelReadTemperatures(), std::chrono::system_clock::now());
        const auto& rows = SystemSnapshot::rows();
        std::fputs(
            (infoAsJson ? cli::infoJson(rows, temperatures) : cli::infoText(rows, temperatures)).c_str(),
            stdout);
        return 0;
    }

    auto ids = cli::benchmarksToRun(names, all);
    if (auto* error = std::get_if<cli::ArgumentError>(&ids)) {
        std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
        return 2;
    }
    if (options.jsonPath.size() || run->count("--json") > 0) {
        if (const std::string problem = cli::jsonPathProblem(options.jsonPath); !problem.empty()) {
            std::fprintf(stderr, "quarbel: %s\n", problem.c_str());
            return 2;
        }
    }
    options.ids = std::get<std::vector<BenchmarkID>>(std::move(ids));
    return runBenchmarks(argc, argv, std::move(options));
}
