// SPDX-License-Identifier: Apache-2.0
// quarbel: the headless command line of the benchmark suite.
#include "cli/baseline_gate.h"
#include "cli/card_command.h"
#include "cli/devices_command.h"
#include "cli/export_command.h"
#include "cli/import_command.h"
#include "cli/info_command.h"
#include "cli/reference_command.h"
#include "cli/share_command.h"
#include "model/number_format.h"
#include "results/learned_floors.h"
#include "results/reference_results.h"
#include "results/report_file.h"
#include "results/run_comparison.h"
#include "results/store_report.h"
#include "run/benchmark_store.h"
#include "sensors/system_manifest.h"
#include "sensors/system_snapshot.h"
#include "session/card_writer.h"
#include "session/cards_directory.h"
#include "session/device_choices.h"
#include "session/output_check.h"
#include "session/run_arguments.h"
#include "session/run_session.h"
#include "session/stop_signals.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/storage/storage_workloads.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <tuple>
#include <unistd.h>

namespace {

using namespace quarbel;

constexpr const char* kDescription =
    "Quarbel benchmarks this machine with thirteen timed, sustained workloads and scores them in "
    "Quarbel points. Everything stays on this machine.\n"
    "On Linux the GPU benchmarks use Vulkan (the benchmarks named \"Metal\") and OpenCL.";

// Each command's --help ends with the exit codes that command really returns. A bad
// argument is refused with 2 by the parser before any command runs.
constexpr const char* kProgramExitStatus =
    "Exit status: 0 success, 2 bad arguments; 'quarbel COMMAND --help' lists each command's own.";

constexpr const char* kRunExitStatus =
    "Exit status:\n"
    "  0    every benchmark ended ok or skipped\n"
    "  1    a benchmark failed, or the output, the --json report or a "
    "result card could not be written\n"
    "  2    bad input; nothing was run\n"
    "  3    with --baseline and --fail-on-slower: a benchmark stayed slower "
    "than allowed\n"
    "  4    with --baseline and --fail-on-slower: nothing slower, but a "
    "benchmark could not be judged (noisy machine, failed or skipped in one run)\n"
    "  130  stopped by Ctrl-C, SIGTERM or SIGHUP";

constexpr const char* kListExitStatus = "Exit status:\n"
                                        "  0    the list was printed\n"
                                        "  1    standard output could not be written\n"
                                        "  2    bad arguments";

constexpr const char* kInfoExitStatus = "Exit status:\n"
                                        "  0    the system facts were printed\n"
                                        "  1    standard output could not be written\n"
                                        "  2    bad arguments";

constexpr const char* kDevicesExitStatus = "Exit status:\n"
                                           "  0    the devices were listed\n"
                                           "  1    standard output could not be written\n"
                                           "  2    bad arguments";

constexpr const char* kCardExitStatus = "Exit status:\n"
                                        "  0    the cards were written\n"
                                        "  1    a card or standard output could not be written\n"
                                        "  2    the report or DIR is unusable, or bad arguments; nothing "
                                        "was written";

constexpr const char* kHistoryExitStatus = "Exit status:\n"
                                           "  0    the history was printed (files that are not reports "
                                           "are skipped with a warning)\n"
                                           "  1    standard output could not be written\n"
                                           "  2    bad arguments";

constexpr const char* kCompareExitStatus =
    "Exit status:\n"
    "  0    the comparison was printed\n"
    "  1    standard output could not be written\n"
    "  2    a run that is not in the history or not a readable "
    "report, or bad arguments\n"
    "  3    with --fail-on-slower: a benchmark is slower than allowed\n"
    "  4    with --fail-on-slower: nothing slower, but a benchmark could "
    "not be judged (noisy machine, failed or skipped in one run)";

constexpr const char* kExportExitStatus =
    "Exit status:\n"
    "  0    the runs were exported\n"
    "  1    the output could not be written (nothing is left half-written)\n"
    "  2    a run that cannot be read, an unknown format, an unusable FILE, "
    "or bad arguments; nothing was written";

constexpr const char* kImportExitStatus = "Exit status:\n"
                                          "  0    every report was imported or was already in the history\n"
                                          "  1    the history could not be written\n"
                                          "  2    a file that is not a report, or bad arguments; nothing was "
                                          "imported";

int listBenchmarks() {
    std::printf("%-16s %-18s %-8s %s\n", "ID", "TITLE", "CATEGORY", "TARGET");
    for (BenchmarkID id : kAllBenchmarks) {
        std::printf("%-16s %-18s %-8s %d s\n", std::string(rawValue(id)).c_str(),
                    std::string(title(id)).c_str(), std::string(categoryTitle(category(id))).c_str(),
                    targetSeconds(id));
    }
    return session::kExitOk;
}

// The exit status once everything printed has been flushed: a failed standard output
// turns success into 1, with a message.
int afterFlushingOutput(int exitCode) {
    const std::string problem = session::flushProblem(stdout, "standard output");
    if (problem.empty()) return exitCode;
    std::fprintf(stderr, "quarbel: %s\n", problem.c_str());
    return exitCode == session::kExitOk ? session::kExitFailed : exitCode;
}

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

static int runCommandLine(int argc, char** argv) {
    session::ignoreWriteFaultSignals();
    // The GPU row names the Vulkan device the GPU workloads would choose.
    SystemSnapshot::setGpuNameProvider([] { return gpu::defaultDeviceName().value_or(std::string{}); });
    setDriverDescriptionProvider(gpu::chosenDriverDescriptions);

    CLI::App app{kDescription, "quarbel"};
    app.set_version_flag("--version", std::string("quarbel ") + QUARBEL_VERSION);
    app.require_subcommand(1);
    app.footer(kProgramExitStatus);

    app.add_subcommand("list", "List the benchmarks: identifier, title, category and target seconds")
        ->footer(kListExitStatus);

    auto* info = app.add_subcommand("info", "Show the machine's system facts and current temperatures");
    info->footer(kInfoExitStatus);
    bool infoAsJson = false;
    info->add_flag("--json", infoAsJson, "Print the same as JSON");

    auto* devices = app.add_subcommand(
        "devices",
        "List the Vulkan and OpenCL devices and the file systems a run can use, the chosen ones marked");
    devices->footer(kDevicesExitStatus);
    bool devicesAsJson = false;
    devices->add_flag("--json", devicesAsJson, "Print the same as JSON");

    auto* run = app.add_subcommand("run", "Run benchmarks headless and print their scores");
    run->footer(kRunExitStatus);
    std::vector<std::string> names;
    bool all = false;
    session::RunOptions options;
    std::string jsonPath;
    run->add_option("ids", names, "Benchmark identifiers to run, in order (see 'quarbel list')");
    run->add_flag("--all", all, "Run the full suite of thirteen benchmarks");
    run->add_flag("--accuracy", options.accuracy, "Accuracy Mode: three passes each, keep the median");
    run->add_flag("--quick", options.quick, "Divide every time budget by 10 (results are marked quick)");
    run->add_option("--json", jsonPath,
                    "Also write the results as JSON to FILE, a regular file replaced atomically (symbolic "
                    "links are followed), or to standard output for -")
        ->type_name("FILE");
    std::string cardsArgument;
    run->add_option("--cards", cardsArgument,
                    "Also write the global result card and one card per benchmark as PNG files into DIR, "
                    "created when missing")
        ->type_name("DIR");

    auto* card =
        app.add_subcommand("card", "Render the PNG result cards of a saved JSON report (no display needed)");
    card->footer(kCardExitStatus);
    std::string reportPath;
    std::string outArgument = ".";
    card->add_option("report", reportPath, "A report written by 'quarbel run --json'")
        ->required()
        ->type_name("REPORT.json");
    card->add_option("--out", outArgument, "Write the cards into DIR, created when missing (default: here)")
        ->type_name("DIR");

    bool noHistory = false;
    run->add_flag("--no-history", noHistory, "Do not keep this run in the history");
    std::string untilStablePercent;
    run->add_option(
           "--until-stable", untilStablePercent,
           "Rerun each benchmark until its score's 95 % interval is within PERCENT (default 2) of the "
           "score, or --max-passes ran; the median pass is kept")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    std::string maxPasses;
    run->add_option("--max-passes", maxPasses, "The most passes --until-stable runs (default 5)")
        ->type_name("N");

    app.add_subcommand("history", "List the runs kept in the history, newest first, numbered for 'compare'")
        ->footer(kHistoryExitStatus);

    auto* compare = app.add_subcommand(
        "compare", "Compare runs benchmark by benchmark with the first: faster, slower or within noise");
    compare->footer(kCompareExitStatus);
    std::vector<std::string> comparedRuns;
    bool compareAsJson = false;
    compare
        ->add_option("runs", comparedRuns,
                     "Two or more runs, each a report file or a number from 'quarbel history' (1 = newest); "
                     "the first is the baseline")
        ->required()
        ->expected(1, -1)
        ->type_name("A B [C...]");
    compare->add_flag("--json", compareAsJson, "Print the comparison as JSON");
    std::vector<std::string> comparedReferences;
    compare
        ->add_option("--reference", comparedReferences,
                     "Also compare with a reference result of a known machine that ships with Quarbel (see "
                     "'quarbel reference'); may be given more than once")
        ->type_name("NAME");
    std::string failOnSlower;
    compare
        ->add_option(
            "--fail-on-slower", failOnSlower,
            "Exit 3 when a benchmark is significantly slower in a later run than in the first by more than "
            "PERCENT (default: the noise threshold, 1 %); for CI")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    std::string compareJunit;
    compare
        ->add_option("--junit", compareJunit,
                     "With --fail-on-slower, also write the verdicts as JUnit XML to FILE")
        ->type_name("FILE");

    auto* exporter = app.add_subcommand(
        "export", "Export runs as CSV, Markdown, one self-contained HTML page, JSON or OpenMetrics text");
    exporter->footer(kExportExitStatus);
    std::vector<std::string> exportedRuns;
    std::string exportFormat;
    std::string exportOut;
    exporter
        ->add_option("runs", exportedRuns, "Runs to export: report files or numbers from 'quarbel history'")
        ->required()
        ->type_name("RUN...");
    exporter->add_option("--format", exportFormat, "csv, md, html, json, or openmetrics (one run)")
        ->required()
        ->type_name("FORMAT");
    exporter->add_option("--out", exportOut, "Write to FILE, replaced atomically, instead of standard output")
        ->type_name("FILE");

    auto* reference = app.add_subcommand(
        "reference", "List the reference results of known machines that ship with Quarbel");
    bool referenceAsJson = false;
    reference->add_flag("--json", referenceAsJson, "Print the same as JSON");

    auto* sharer = app.add_subcommand(
        "share", "Write one HTML page to hand a run to somebody: tables, charts and the report inside");
    std::string sharedRun, shareOut;
    sharer->add_option("run", sharedRun, "A report file or a number from 'quarbel history'")
        ->required()
        ->type_name("RUN");
    sharer
        ->add_option("--out", shareOut,
                     "Write the page to FILE, replaced atomically, or - for standard output (default: "
                     "quarbel-run-<start>.html here)")
        ->type_name("FILE");

    auto* importer =
        app.add_subcommand("import", "Add reports from other machines to this machine's history");
    importer->footer(kImportExitStatus);
    std::vector<std::string> importedFiles;
    importer
        ->add_option(
            "files", importedFiles,
            "Reports written by 'quarbel run --json' or a history, or pages written by 'quarbel share'")
        ->required()
        ->type_name("FILE...");

    std::string gpuChoice, openclChoice, storageChoice;
    run->add_option(
           "--gpu", gpuChoice,
           "The Vulkan device of the GPU benchmarks: an index or part of a name from 'quarbel devices'")
        ->type_name("ID");
    run->add_option("--opencl-device", openclChoice,
                    "The OpenCL device of OpenCL Compute: an index or part of a name from 'quarbel devices'")
        ->type_name("ID");
    run->add_option(
           "--storage-dir", storageChoice,
           "The folder under which the storage benchmarks write their scratch files (default: $TMPDIR, "
           "else /tmp)")
        ->type_name("DIR");
    std::string baselineArgument, runFailOnSlower, confirmArgument, runJunit;
    run->add_option(
           "--baseline", baselineArgument,
           "Compare the run with REPORT (a report file or a number from 'quarbel history') as it ends")
        ->type_name("REPORT");
    run->add_option(
           "--fail-on-slower", runFailOnSlower,
           "With --baseline: exit 3 when a benchmark is slower than the baseline by more than PERCENT "
           "(default: the noise threshold, 1 %), 4 when one could not be judged")
        ->expected(0, 1)
        ->type_name("[PERCENT]");
    run->add_option(
           "--confirm", confirmArgument,
           "With --fail-on-slower: rerun what was slower or not judged up to N times; only what stays "
           "so fails")
        ->type_name("N");
    run->add_option("--junit", runJunit,
                    "With --fail-on-slower, also write the verdicts as JUnit XML to FILE")
        ->type_name("FILE");

    std::string metricsPath;
    bool noTrace = false;
    std::string cooldownArgument;
    run->add_flag("--no-trace", noTrace,
                  "Do not record the sensor trace and the energy of each benchmark (for measuring what "
                  "recording costs)");
    run->add_option(
        "--cooldown", cooldownArgument,
        "Before each benchmark but the first, wait until the CPU is back within 3 \u00b0C of its "
        "temperature at the start (auto, at most 120 s; the default of full runs), for SECONDS, or "
        "not at all (0; the default of quick runs)");
    run->add_option("--metrics", metricsPath,
                    "Also write the results in the Prometheus text format to FILE, replaced atomically "
                    "(for node_exporter's textfile collector), or - for standard output")
        ->type_name("FILE");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return afterFlushingOutput(app.exit(e));
    } catch (const CLI::CallForAllHelp& e) {
        return afterFlushingOutput(app.exit(e));
    } catch (const CLI::Success& e) {
        return afterFlushingOutput(app.exit(e));
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "quarbel: %s\nRun 'quarbel --help' for usage.\n", e.what());
        return session::kExitBadInput;
    }

    if (app.got_subcommand("list")) return afterFlushingOutput(listBenchmarks());
    if (app.got_subcommand("devices")) {
        const cli::DeviceListing listing = cli::currentDevices();
        std::fputs((devicesAsJson ? cli::devicesJson(listing) : cli::devicesText(listing)).c_str(), stdout);
        return afterFlushingOutput(session::kExitOk);
    }
    if (app.got_subcommand("import")) return afterFlushingOutput(cli::importCommand(importedFiles));
    if (app.got_subcommand("reference")) return afterFlushingOutput(cli::referenceCommand(referenceAsJson));
    if (app.got_subcommand("share"))
        return afterFlushingOutput(cli::shareCommand(
            sharedRun, sharer->count("--out") > 0 ? std::optional(shareOut) : std::nullopt));
    if (app.got_subcommand("export"))
        return afterFlushingOutput(
            cli::exportCommand(exportedRuns, exportFormat,
                               exporter->count("--out") > 0 ? std::optional(exportOut) : std::nullopt));
    if (app.got_subcommand("card"))
        return afterFlushingOutput(cli::cardCommand(reportPath, outArgument, argc, argv));
    const auto warnAboutDeviceChoice = [] {
        if (const auto warning = gpu::deviceSelectionWarning())
            std::fprintf(stderr, "quarbel: %s\n", warning->c_str());
    };
    if (app.got_subcommand("info")) {
        warnAboutDeviceChoice();
        setScratchNoticeSink(
            [](const std::string& text) { std::fprintf(stderr, "quarbel: %s\n", text.c_str()); });
        reclaimStaleScratchDirectoriesAndNotify();
        const auto temperatures =
            makeTemperatureSnapshot(QuarbelReadTemperatures(), std::chrono::system_clock::now());
        const auto& rows = SystemSnapshot::rows();
        std::fputs((infoAsJson ? cli::infoJson(rows, temperatures, readSystemManifest())
                               : cli::infoText(rows, temperatures, readSystemManifest()))
                       .c_str(),
                   stdout);
        return afterFlushingOutput(session::kExitOk);
    }

    if (app.got_subcommand("history") || app.got_subcommand("compare")) {
        const HistoryListing history =
            listHistory(historyDirectory(),
                        app.got_subcommand("history") ? HistoryDetail::results : HistoryDetail::order);
        for (const auto& warning : history.warnings)
            std::fprintf(stderr, "quarbel: %s\n", warning.c_str());
        if (app.got_subcommand("history")) {
            std::fputs(historyText(history).c_str(), stdout);
            return afterFlushingOutput(session::kExitOk);
        }
        double allowedSlowdown = noiseThresholdPercent(std::nullopt);
        if (compare->count("--fail-on-slower") > 0 && !failOnSlower.empty()) {
            const auto percent = session::percentArgument("--fail-on-slower", failOnSlower, false);
            if (const auto* error = std::get_if<session::ArgumentError>(&percent)) {
                std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
                return session::kExitBadInput;
            }
            allowedSlowdown = std::get<double>(percent);
        }
        std::optional<ReportTarget> compareJunitTarget;
        if (compare->count("--junit") > 0) {
            auto target = cli::junitTarget(compare->count("--fail-on-slower") > 0, compareJunit);
            if (const auto* problem = std::get_if<std::string>(&target)) {
                std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
                return session::kExitBadInput;
            }
            compareJunitTarget = std::get<ReportTarget>(std::move(target));
        }
        for (const auto& name : comparedReferences) {
            const ReferenceLookup found = findReference(name);
            if (!found.problem.empty()) {
                std::fprintf(stderr, "quarbel: %s\n", found.problem.c_str());
                return session::kExitBadInput;
            }
            comparedRuns.push_back(found.path);
        }
        if (comparedRuns.size() < 2) {
            std::fprintf(stderr, "quarbel: compare needs two runs or more: add a run or --reference NAME\n");
            return session::kExitBadInput;
        }
        std::vector<SavedRun> saved;
        for (const auto& name : comparedRuns) {
            auto resolved = resolveSavedRun(name, history);
            if (const auto* problem = std::get_if<std::string>(&resolved)) {
                std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
                return session::kExitBadInput;
            }
            saved.push_back(std::get<SavedRun>(std::move(resolved)));
        }
        std::vector<RunComparison> comparisons;
        for (std::size_t i = 1; i < saved.size(); ++i)
            comparisons.push_back(compareRuns(saved.front(), saved[i]));
        std::string text;
        if (saved.size() == 2)
            text = compareAsJson ? comparisonJson(saved[0], saved[1], comparisons[0])
                                 : comparisonText(saved[0], saved[1], comparisons[0]);
        else
            text = compareAsJson ? manyRunsJson(saved, comparisons) : manyRunsText(saved, comparisons);
        std::fputs(text.c_str(), stdout);
        if (compare->count("--fail-on-slower") > 0)
            return afterFlushingOutput(
                cli::compareGateExit(saved, comparisons, allowedSlowdown, compareJunitTarget));
        return afterFlushingOutput(session::kExitOk);
    }

    auto ids = session::benchmarksToRun(names, all);
    if (auto* error = std::get_if<session::ArgumentError>(&ids)) {
        std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
        return session::kExitBadInput;
    }
    const auto untilStable = session::untilStableTarget(
        {run->count("--until-stable") > 0, untilStablePercent,
         run->count("--max-passes") > 0 ? std::optional(maxPasses) : std::nullopt, options.accuracy});
    if (const auto* error = std::get_if<session::ArgumentError>(&untilStable)) {
        std::fprintf(stderr, "quarbel: %s\n", error->message.c_str());
        return session::kExitBadInput;
    }
    options.untilStable = std::get<std::optional<StabilityTarget>>(untilStable);
    options.trace = !noTrace;
    if (run->count("--cooldown") > 0) {
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
        if (run->count(option) == 0) continue;
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
    if (run->count("--cards") > 0) {
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
        return run->count(option) > 0 ? std::optional(value) : std::nullopt;
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

int main(int argc, char** argv) {
    // Whatever a damaged file or a full disk throws ends with one line and the failure status,
    // never with an abort.
    try {
        return runCommandLine(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quarbel: stopped by an unexpected error: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "quarbel: stopped by an unexpected error\n");
    }
    std::fflush(stdout);
    return session::kExitFailed;
}
