// SPDX-License-Identifier: Apache-2.0
#include "app/launch_arguments.h"

#include "session/run_arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace quarbel::app {
namespace {

constexpr const char* kProgram = "quarbel-gui";

LaunchExit badArgument(const std::string& message) {
    return {2, std::string(kProgram) + ": " + message + "\nRun 'quarbel-gui --help' for usage.\n"};
}

} // namespace

std::variant<LaunchOptions, LaunchExit> parseLaunchArguments(const std::vector<std::string>& arguments) {
    CLI::App app{
        "Quarbel benchmarks this machine with thirteen timed, sustained workloads and scores them in "
        "Quarbel points. Everything stays on this machine.",
        kProgram};
    app.set_version_flag("--version", std::string(kProgram) + " " + QUARBEL_VERSION);

    std::vector<std::string> names;
    session::RunOptions run;
    bool quitWhenDone = false;
    std::string jsonPath;
    app.add_option("--run", names, "Start this run as the window opens: all, or identifiers in order")
        ->delimiter(',')
        ->type_name("all|ID[,ID...]");
    app.add_flag("--accuracy", run.accuracy, "Accuracy Mode: three passes each, keep the median");
    app.add_flag("--quick", run.quick,
                 "Divide every time budget by 10 for this run and the window's later ones (results are "
                 "marked quick)");
    app.add_option("--json", jsonPath, "Write the run's results as JSON to FILE (needs --run)")
        ->type_name("FILE");
    app.add_flag("--quit-when-done", quitWhenDone, "Quit once the run's summary is out (needs --run)");
    bool history = false;
    app.add_flag("--history", history, "Open the Run History beside the main window");

    std::vector<const char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    try {
        app.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::CallForVersion& version) {
        return LaunchExit{0, std::string(version.what()) + "\n"};
    } catch (const CLI::Success&) {
        return LaunchExit{0, app.help()};
    } catch (const CLI::ParseError& error) {
        return badArgument(error.what());
    }

    const bool runGiven = app.count("--run") > 0;
    for (const char* option : {"--json", "--quit-when-done"}) {
        if (!runGiven && app.count(option) > 0) return badArgument(std::string(option) + " needs --run");
    }
    LaunchOptions options;
    options.accuracy = run.accuracy;
    options.quick = run.quick;
    options.quitWhenDone = quitWhenDone;
    options.history = history;
    if (!runGiven) return options;

    const bool all = std::find(names.begin(), names.end(), "all") != names.end();
    if (all && names.size() > 1)
        return badArgument("--run all runs every benchmark; name identifiers or all");
    if (names.empty()) return badArgument("--run needs all or benchmark identifiers (see 'quarbel list')");
    auto ids = session::benchmarksToRun(all ? std::vector<std::string>{} : names, all);
    if (const auto* error = std::get_if<session::ArgumentError>(&ids)) return badArgument(error->message);
    if (app.count("--json") > 0) {
        auto target = resolveReportTarget("--json", jsonPath);
        if (const auto* problem = std::get_if<std::string>(&target)) return badArgument(*problem);
        run.report = std::get<ReportTarget>(std::move(target));
    }
    run.ids = std::get<std::vector<BenchmarkID>>(std::move(ids));
    options.run = std::move(run);
    return options;
}

} // namespace quarbel::app
