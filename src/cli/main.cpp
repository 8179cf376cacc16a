// SPDX-License-Identifier: Apache-2.0
// quarbel: the headless command line of the benchmark suite.
#include "cli/card_command.h"
#include "cli/command_output.h"
#include "cli/compare_command.h"
#include "cli/devices_command.h"
#include "cli/export_command.h"
#include "cli/help_text.h"
#include "cli/import_command.h"
#include "cli/info_command.h"
#include "cli/reference_command.h"
#include "cli/run_command.h"
#include "cli/share_command.h"
#include "run/benchmark_store.h"
#include "sensors/system_manifest.h"
#include "sensors/system_snapshot.h"
#include "session/output_check.h"
#include "session/run_session.h"
#include "session/stop_signals.h"
#include "workloads/gpu/gpu_device_name.h"
#include "workloads/storage/storage_workloads.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace {

using namespace quarbel;

int listBenchmarks() {
    std::printf("%-16s %-18s %-8s %s\n", "ID", "TITLE", "CATEGORY", "TARGET");
    for (BenchmarkID id : kAllBenchmarks) {
        std::printf("%-16s %-18s %-8s %d s\n", std::string(rawValue(id)).c_str(),
                    std::string(title(id)).c_str(), std::string(categoryTitle(category(id))).c_str(),
                    targetSeconds(id));
    }
    return session::kExitOk;
}

} // namespace

static int runCommandLine(int argc, char** argv) {
    session::ignoreWriteFaultSignals();
    // The GPU row names the Vulkan device the GPU workloads would choose.
    SystemSnapshot::setGpuNameProvider([] { return gpu::defaultDeviceName().value_or(std::string{}); });
    setDriverDescriptionProvider(gpu::chosenDriverDescriptions);

    CLI::App app{cli::kDescription, "quarbel"};
    app.set_version_flag("--version", std::string("quarbel ") + QUARBEL_VERSION);
    app.require_subcommand(1);
    app.footer(cli::kProgramExitStatus);

    app.add_subcommand("list", "List the benchmarks: identifier, title, category and target seconds")
        ->footer(cli::kListExitStatus);

    auto* info = app.add_subcommand("info", "Show the machine's system facts and current temperatures");
    info->footer(cli::kInfoExitStatus);
    bool infoAsJson = false;
    info->add_flag("--json", infoAsJson, "Print the same as JSON");

    auto* devices = app.add_subcommand(
        "devices",
        "List the Vulkan and OpenCL devices and the file systems a run can use, the chosen ones marked");
    devices->footer(cli::kDevicesExitStatus);
    bool devicesAsJson = false;
    devices->add_flag("--json", devicesAsJson, "Print the same as JSON");

    auto* run = app.add_subcommand("run", "Run benchmarks headless and print their scores");
    run->footer(cli::kRunExitStatus);
    cli::RunArguments runArguments;
    cli::addRunOptions(*run, runArguments);

    auto* card =
        app.add_subcommand("card", "Render the PNG result cards of a saved JSON report (no display needed)");
    card->footer(cli::kCardExitStatus);
    std::string reportPath;
    std::string outArgument = ".";
    card->add_option("report", reportPath, "A report written by 'quarbel run --json'")
        ->required()
        ->type_name("REPORT.json");
    card->add_option("--out", outArgument, "Write the cards into DIR, created when missing (default: here)")
        ->type_name("DIR");

    app.add_subcommand("history", "List the runs kept in the history, newest first, numbered for 'compare'")
        ->footer(cli::kHistoryExitStatus);

    auto* compare = app.add_subcommand(
        "compare", "Compare runs benchmark by benchmark with the first: faster, slower or within noise");
    compare->footer(cli::kCompareExitStatus);
    cli::CompareArguments compareArguments;
    cli::addCompareOptions(*compare, compareArguments);

    auto* exporter = app.add_subcommand(
        "export", "Export runs as CSV, Markdown, one self-contained HTML page, JSON or OpenMetrics text");
    exporter->footer(cli::kExportExitStatus);
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
    importer->footer(cli::kImportExitStatus);
    std::vector<std::string> importedFiles;
    importer
        ->add_option(
            "files", importedFiles,
            "Reports written by 'quarbel run --json' or a history, or pages written by 'quarbel share'")
        ->required()
        ->type_name("FILE...");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return cli::afterFlushingOutput(app.exit(e));
    } catch (const CLI::CallForAllHelp& e) {
        return cli::afterFlushingOutput(app.exit(e));
    } catch (const CLI::Success& e) {
        return cli::afterFlushingOutput(app.exit(e));
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "quarbel: %s\nRun 'quarbel --help' for usage.\n", e.what());
        return session::kExitBadInput;
    }

    if (app.got_subcommand("list")) return cli::afterFlushingOutput(listBenchmarks());
    if (app.got_subcommand("devices")) {
        const cli::DeviceListing listing = cli::currentDevices();
        std::fputs((devicesAsJson ? cli::devicesJson(listing) : cli::devicesText(listing)).c_str(), stdout);
        return cli::afterFlushingOutput(session::kExitOk);
    }
    if (app.got_subcommand("import")) return cli::afterFlushingOutput(cli::importCommand(importedFiles));
    if (app.got_subcommand("reference"))
        return cli::afterFlushingOutput(cli::referenceCommand(referenceAsJson));
    if (app.got_subcommand("share"))
        return cli::afterFlushingOutput(cli::shareCommand(
            sharedRun, sharer->count("--out") > 0 ? std::optional(shareOut) : std::nullopt));
    if (app.got_subcommand("export"))
        return cli::afterFlushingOutput(
            cli::exportCommand(exportedRuns, exportFormat,
                               exporter->count("--out") > 0 ? std::optional(exportOut) : std::nullopt));
    if (app.got_subcommand("card"))
        return cli::afterFlushingOutput(cli::cardCommand(reportPath, outArgument, argc, argv));
    if (app.got_subcommand("info")) {
        cli::warnAboutDeviceChoice();
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
        return cli::afterFlushingOutput(session::kExitOk);
    }

    if (app.got_subcommand("history") || app.got_subcommand("compare"))
        return cli::historyOrCompareCommand(app.got_subcommand("history"), *compare, compareArguments);
    return cli::runCommand(*run, runArguments, argc, argv);
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
