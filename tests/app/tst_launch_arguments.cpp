// SPDX-License-Identifier: Apache-2.0
// The desktop program's command line.
#include "app/display_check.h"
#include "app/launch_arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

using namespace quarbel;
using namespace quarbel::app;

namespace {

auto parse(const std::vector<std::string>& arguments) {
    std::vector<std::string> args{"quarbel-gui"};
    args.insert(args.end(), arguments.begin(), arguments.end());
    return parseLaunchArguments(args);
}

} // namespace

TEST(LaunchArguments, GoodArgumentsGiveTheRunToStart) {
    struct Case {
        std::vector<std::string> args;
        std::vector<BenchmarkID> ids; // empty: no run
        bool accuracy, quick, quitWhenDone;
        std::string jsonPath;
    };
    const std::string report = (std::filesystem::temp_directory_path() / "quarbel-gui-report.json").string();
    const Case cases[] = {
        {{}, {}, false, false, false, ""},
        {{"--accuracy"}, {}, true, false, false, ""},
        {{"--quick", "--history"}, {}, false, true, false, ""},
        {{"--run", "all"}, {kAllBenchmarks.begin(), kAllBenchmarks.end()}, false, false, false, ""},
        {{"--run", "cpuInteger,ssdRandom", "--quick", "--quit-when-done", "--json", report},
         {BenchmarkID::cpuInteger, BenchmarkID::ssdRandom},
         false,
         true,
         true,
         report},
        {{"--run=memoryStream", "--accuracy"}, {BenchmarkID::memoryStream}, true, false, false, ""},
    };
    for (const Case& c : cases) {
        const auto parsed = parse(c.args);
        ASSERT_TRUE(std::holds_alternative<LaunchOptions>(parsed)) << std::get<LaunchExit>(parsed).text;
        const auto& options = std::get<LaunchOptions>(parsed);
        EXPECT_EQ(options.accuracy, c.accuracy);
        EXPECT_EQ(options.quick, c.quick);
        EXPECT_EQ(options.quitWhenDone, c.quitWhenDone);
        EXPECT_EQ(options.history, std::ranges::count(c.args, "--history") == 1);
        ASSERT_EQ(options.run.has_value(), !c.ids.empty());
        if (!options.run) continue;
        EXPECT_EQ(options.run->ids, c.ids);
        EXPECT_EQ(options.run->accuracy, c.accuracy);
        EXPECT_EQ(options.run->quick, c.quick);
        EXPECT_EQ(options.run->report ? options.run->report->path : std::string(), c.jsonPath);
    }
}

TEST(LaunchArguments, BadArgumentsExitWith2AndSayWhyHelpAndVersionWith0) {
    struct Case {
        std::vector<std::string> args;
        std::string message;
        int exitCode = 2;
    };
    const Case cases[] = {
        {{"--help"}, "--quit-when-done", 0},
        {{"--version"}, std::string("quarbel-gui ") + QUARBEL_VERSION + "\n", 0},
        {{"--bogus"}, "--bogus"},
        {{"--run"}, "--run"},
        {{"--run", "cpuInteger,warpDrive"}, "unknown benchmark 'warpDrive'"},
        {{"--run", "cpuInteger,cpuInteger"}, "named more than once"},
        {{"--run", "all,cpuInteger"}, "--run all runs every benchmark"},
        {{"--json", "out.json"}, "--json needs --run"},
        {{"--quit-when-done"}, "--quit-when-done needs --run"},
        {{"--run", "all", "--json", "/nonexistent-quarbel-dir/out.json"}, "does not exist"},
        {{"--run", "all", "--json", "/"}, "is a directory"},
    };
    for (const Case& c : cases) {
        const auto parsed = parse(c.args);
        ASSERT_TRUE(std::holds_alternative<LaunchExit>(parsed)) << c.message;
        const auto& exit = std::get<LaunchExit>(parsed);
        EXPECT_EQ(exit.exitCode, c.exitCode) << c.message;
        EXPECT_TRUE(c.args[0] != "--version" || exit.text == c.message) << exit.text;
        EXPECT_NE(exit.text.find(c.message), std::string::npos) << exit.text;
        EXPECT_EQ(exit.text.rfind(c.exitCode == 2 ? "quarbel-gui: " : "", 0), 0u) << exit.text;
    }
}

TEST(LaunchArguments, AMissingDisplayIsNamedBeforeQtWouldAbort) {
    struct Case {
        const char* name;
        std::vector<const char*> args;
        const char* platform; // QT_QPA_PLATFORM; nullptr: unset
        const char* wayland;  // WAYLAND_DISPLAY
        const char* display;  // DISPLAY
        std::optional<std::string> problem;
    };
    // No X server listens on display 987 here: nothing creates it.
    const Case cases[] = {
        {"no display at all", {}, nullptr, nullptr, nullptr, "no display is set (DISPLAY is empty)"},
        {"an unreachable X display", {}, nullptr, nullptr, ":987", "the display \":987\" cannot be reached"},
        {"a platform asked for by name", {"-platform", "offscreen"}, nullptr, nullptr, ":987", std::nullopt},
        {"a platform set in the environment", {}, "offscreen", nullptr, nullptr, std::nullopt},
        {"a Wayland session is Qt's to judge", {}, nullptr, "wayland-0", nullptr, std::nullopt},
    };
    // The variables as they were, put back at the end.
    std::vector<std::pair<const char*, std::optional<std::string>>> environment;
    for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"})
        environment.emplace_back(name, std::getenv(name) ? std::optional<std::string>(std::getenv(name))
                                                         : std::nullopt);
    const auto set = [](const char* name, const char* value) {
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    };
    for (const Case& c : cases) {
        set("QT_QPA_PLATFORM", c.platform);
        set("WAYLAND_DISPLAY", c.wayland);
        set("DISPLAY", c.display);
        std::vector<const char*> argv{"quarbel-gui"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        EXPECT_EQ(missingDisplayProblem(static_cast<int>(argv.size()), argv.data()), c.problem) << c.name;
    }
    for (const auto& [name, value] : environment)
        set(name, value ? value->c_str() : nullptr);
}
