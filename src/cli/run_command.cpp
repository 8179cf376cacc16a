// SPDX-License-Identifier: Apache-2.0
#include "cli/run_command.h"

#include "cli/baseline_gate.h"
#include "cli/command_output.h"
#include "results/learned_floors.h"
#include "results/report_file.h"
#include "results/run_history.h"
#include "results/store_report.h"
#include "run/benchmark_store.h"
#include "sensors/system_manifest.h"
#include "sensors/system_snapshot.h"
#include "session/card_writer.h"
#include "session/cards_directory.h"
#include "session/device_choices.h"
#include "session/run_arguments.h"
#include "session/stop_signals.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/storage/storage_workloads.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <tuple>
#include <unistd.h>

namespace quarbel::cli {
namespace {

int runBenchmarks(int argc, char** argv, session::RunOptions options) {
    const auto application = session::makeApplication(argc, argv, options.cardsDirectory.has_value());
    QCoreApplication& app = *application;
    BenchmarkStore store;
    // With the report on standard output, everything meant for people goes to standard error.
    std::FILE* out = (options.report && options.report->standardOutput) ||
                             (options.metrics && options.metrics->standardOutput)
                         ? stderr
                         : stdout;
    session::RunSession run(store, std::move(options), out, isatty(fileno(out)) != 0, systemRowPairs);
    session::StopSignals stopSignals;
    QObject::connect(&stopSignals, &session::StopSignals::stopRequested, [&](int count, int) {
        if (count == 1) {
            run.requestStop();
            return;
        }
        // A second request leaves at once, still taking the scratch files along.
        std::fputs("\nquarbel: stopped at once\n", stderr);
        removeActiveScratchDirectories();
        std::_Exit(session::kExitStopped);
    });
    int exitCode = session::kExitOk;
    QObject::connect(&run, &session::RunSession::finished, [&](int code) {
        exitCode = code;
        app.quit();
    });
    // The storage benchmarks first remove scratch directories that interrupted runs left
    // behind, and say so from their own thread: the line is printed on the main thread,
    // between the session's own lines.
    setScratchNoticeSink([&run](const std::string& text) {
        QMetaObject::invokeMethod(
            &run, [&run, text] { run.notice(text); }, Qt::QueuedConnection);
    });
    QTimer::singleShot(0, &run, &session::RunSession::start);
    app.exec();
    setScratchNoticeSink({});
    return exitCode;
}

} // namespace

void addRunOptions(CLI::App& run, RunArguments& a) {
    run.add_option("ids", a.names, "Benchmark identifiers to run, in order (see 'quarbel list')");
    run.add_flag("--all", a.all, "Run the full suite of thirteen benchmarks");
    run.add_flag("--accuracy", a.options.accuracy, "Accuracy Mode: three passes each, keep the median");
    run.add_flag("--quick", a.options.quick, "Divide every time budget by 10 (results are marked quick)");
    run.add_option("--json", a.jsonPath,
                   "Also write the results as JSON to FILE, a regular file replaced atomically (symbolic "
                   "links are followed), or to standard output for -")
        ->type_name("FILE");
    run.add_option("--cards", a.cardsArgument,
                   "Also write the global result card and one card per benchmark as PNG files into DIR, "
                   "created when missing")
        ->type_name("DIR");
    run.add_flag("--no-history", a.noHistory, "Do not keep this run in the history");
    run.add_option(
           "--until-stable", a.untilStablePercent,
           "Rerun each benchmark until its score's 95 % interval is within PERCENT (default 2) of the "
           "score, or --max-passes ran; the median pass is kept")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    run.add_option("--max-passes", a.maxPasses, "The most passes --until-stable runs (default 5)")
        ->type_name("N");
    run.add_option(
           "--gpu", a.gpuChoice,
           "The Vulkan device of the GPU benchmarks: an index or part of a name from 'quarbel devices'")
        ->type_name("ID");
    run.add_option("--opencl-device", a.openclChoice,
                   "The OpenCL device of OpenCL Compute: an index or part of a name from 'quarbel devices'")
        ->type_name("ID");
    run.add_option(
           "--storage-dir", a.storageChoice,
           "The folder under which the storage benchmarks write their scratch files (default: $TMPDIR, "
           "else /tmp)")
        ->type_name("DIR");
    run.add_option(
           "--baseline", a.baselineArgument,
           "Compare the run with REPORT (a report file or a number from 'quarbel history') as it ends")
        ->type_name("REPORT");
    run.add_option(
           "--fail-on-slower", a.runFailOnSlower,
           "With --baseline: exit 3 when a benchmark is slower than the baseline by more than PERCENT "
           "(default: the noise threshold, 1 %), 4 when one could not be judged")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    run.add_option(
           "--confirm", a.confirmArgument,
           "With --fail-on-slower: rerun what was slower or not judged up to N times; only what stays "
           "so fails")
        ->type_name("N");
    run.add_option("--junit", a.runJunit,
                   "With --fail-on-slower, also write the verdicts as JUnit XML to FILE")
        ->type_name("FILE");

    run.add_flag("--no-trace", a.noTrace,
                 "Do not record the sensor trace and the energy of each benchmark (for measuring what "
                 "recording costs)");
    run.add_option(
        "--cooldown", a.cooldownArgument,
        "Before each benchmark but the first, wait until the CPU is back within 3 \u00b0C of its "
        "temperature at the start (auto, at most 120 s; the default of full runs), for SECONDS, or "
        "not at all (0; the default of quick runs)");
    run.add_option("--metrics", a.metricsPath,
                   "Also write the results in the Prometheus text format to FILE, replaced atomically "
                   "(for node_exporter's textfile collector), or - for standard output")
        ->type_name("FILE");
}

int runCommand(const CLI::App& run, RunArguments& a, int argc, char** argv) {
    // Each argument under its own name (a binding names every member, in declaration order).
    auto& [names, all, options, jsonPath, cardsArgument, untilStablePercent, maxPasses, gpuChoice,
           openclChoice, storageChoice, baselineArgument, runFailOnSlower, confirmArgument, runJunit,
           metricsPath, cooldownArgument, noHistory, noTrace] = a;
    auto ids = session::benchmarksToRun(names, all);
    if (auto* error = std::get_if<session::ArgumentError>(&ids)) {
        std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
        return session::kExitBadInput;
    }
    const auto untilStable = session::untilStableTarget(
        {run.count("--until-stable") > 0, untilStablePercent,
         run.count("--max-passes") > 0 ? std::optional(maxPasses) : std::nullopt, options.accuracy});
    if (const auto* error = std::get_if<session::ArgumentError>(&untilStable)) {
        std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
        return session::kExitBadInput;
    }
    options.untilStable = std::get<std::optional<StabilityTarget>>(untilStable);
    options.trace = !noTrace;
    if (run.count("--cooldown") > 0) {
        auto cooldown = parseCooldown(cooldownArgument);
        if (const auto* problem = std::get_if<std::string>(&cooldown)) {
            std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
            return session::kExitBadInput;
        }
        options.cooldown = std::get<CooldownSetting>(cooldown);
    }
    // The files written after the run are checked before it: a run is never lost to them.
    for (auto [option, path, target] : {std::tuple{"--json", &jsonPath, &options.report},
                                        std::tuple{"--metrics", &metricsPath, &options.metrics}}) {
        if (run.count(option) == 0) continue;
        auto resolved = resolveReportTarget(option, *path);
        if (const auto* problem = std::get_if<std::string>(&resolved)) {
            std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
            return session::kExitBadInput;
        }
        *target = std::get<ReportTarget>(std::move(resolved));
    }
    if (options.report && options.report->standardOutput && options.metrics &&
        options.metrics->standardOutput) {
        std::fprintf(stderr, "quarbel: --json - and --metrics - cannot both write to standard output\n");
        return session::kExitBadInput;
    }
    if (run.count("--cards") > 0) {
        auto directory = session::prepareCardsDirectory("--cards", cardsArgument);
        if (const auto* problem = std::get_if<std::string>(&directory)) {
            std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
            return session::kExitBadInput;
        }
        options.cardsDirectory = std::get<session::CardsDirectory>(std::move(directory)).path;
    }
    options.ids = std::get<std::vector<BenchmarkID>>(std::move(ids));
    if (!noHistory) options.historyDirectory = historyDirectory();
    // Earlier runs of this machine teach the intervals its run-to-run noise, kept or not.
    options.noiseFloors = learnNoiseFloors(listHistory(historyDirectory(), HistoryDetail::results),
                                           readMachineIdentity().machineId, QUARBEL_VERSION);
    const auto optional = [&](const char* option, const std::string& value) {
        return run.count(option) > 0 ? std::optional(value) : std::nullopt;
    };
    auto gate = cli::gateOptionsFrom({optional("--baseline", baselineArgument),
                                      optional("--fail-on-slower", runFailOnSlower),
                                      optional("--confirm", confirmArgument), optional("--junit", runJunit)},
                                     historyDirectory());
    if (const auto* problem = std::get_if<std::string>(&gate)) {
        std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
        return session::kExitBadInput;
    }
    if (const auto problem = session::applyDeviceChoices({optional("--gpu", gpuChoice),
                                                          optional("--opencl-device", openclChoice),
                                                          optional("--storage-dir", storageChoice)})) {
        std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
        return session::kExitBadInput;
    }
    warnAboutDeviceChoice();
    if (auto& gateOptions = std::get<std::optional<cli::GateOptions>>(gate))
        return cli::runWithBaseline(std::move(options), *gateOptions, [&](session::RunOptions once) {
            return runBenchmarks(argc, argv, std::move(once));
        });
    return runBenchmarks(argc, argv, std::move(options));
}

} // namespace quarbel::cli
