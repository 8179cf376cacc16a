// SPDX-License-Identifier: Apache-2.0
// quarbel-gui as a user meets it, on a private Xvfb, driven from the keyboard with xdotool.
#include "../cli/process.h"
#include "support/temp_dir.h"
#include "support/xvfb_server.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

using namespace quarbel::test;
namespace fs = std::filesystem;

namespace {

const std::string kGui = QUARBEL_GUI_BINARY;

std::string fileText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::size_t fileCount(const fs::path& folder) {
    std::error_code missing; // a folder not made yet holds no file
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder, missing), {}));
}

} // namespace

TEST(DesktopProgram, ARunStartedInTheWindowAfterTheRequestedRunLeavesItsReportAndExitCodeAlone) {
    std::string xdotool;
    std::istringstream path(std::getenv("PATH") != nullptr ? std::getenv("PATH") : "");
    for (std::string folder; xdotool.empty() && std::getline(path, folder, ':');)
        if (const fs::path candidate = fs::path(folder) / "xdotool"; access(candidate.c_str(), X_OK) == 0)
            xdotool = candidate.string();
    if (xdotool.empty()) GTEST_SKIP() << "xdotool is not installed";
    auto xvfb = XvfbServer::start();
    if (!xvfb) GTEST_SKIP() << "Xvfb could not be started";
    TempDir home;
    const fs::path runtime = home.path() / "runtime";
    fs::create_directory(runtime);
    chmod(runtime.c_str(), 0700);
    const fs::path report = home.path() / "report.json";
    const fs::path runs = home.path() / "data" / "quarbel" / "runs";
    const std::vector<std::string> env{"DISPLAY=" + xvfb->display(),
                                       "QT_QPA_PLATFORM=xcb",
                                       "XDG_RUNTIME_DIR=" + runtime.string(),
                                       "QUARBEL_RUN_LOCK_DIR=" + (runtime / "quarbel").string(),
                                       "XDG_DATA_HOME=" + (home.path() / "data").string(),
                                       "XDG_CONFIG_HOME=" + (home.path() / "config").string(),
                                       "TMPDIR=" + home.path().string()};
    // Ctrl+R in the main window: Run Selected, the benchmark of the requested run.
    const auto runSelectedInTheWindow = [&] {
        return runProcess({xdotool, "search", "--sync", "--onlyvisible", "--name", "^Quarbel$", "windowfocus",
                           "--sync", "key", "ctrl+r"},
                          {"DISPLAY=" + xvfb->display()}, {}, 10'000)
            .exitCode;
    };

    ChildProcess gui({kGui, "--run", "cpuInteger", "--quick", "--json", report.string()}, env);
    ASSERT_TRUE(gui.readUntil([&] { return gui.out().find("Global score:") != std::string::npos; }, 60'000))
        << gui.out();
    // The report is put in place whole, after the table.
    ASSERT_TRUE(gui.readUntil([&] { return fs::exists(report) && fileCount(runs) == 1; }, 10'000));
    const std::string requestedReport = fileText(report);
    const auto json = nlohmann::json::parse(requestedReport);
    ASSERT_EQ(json["results"].size(), 1u);
    ASSERT_FALSE(json["summary"].is_null());

    // A second run that ends, then a third that quitting stops.
    ASSERT_EQ(runSelectedInTheWindow(), 0);
    ASSERT_TRUE(gui.readUntil([&] { return fileCount(runs) == 2; }, 30'000)) << "the second run never ended";
    ASSERT_EQ(runSelectedInTheWindow(), 0);
    gui.readUntil([] { return false; }, 300);
    gui.signal(SIGTERM);
    const ProcessResult result = gui.wait(30'000);

    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(fileCount(runs), 3u) << "the window's runs are kept in the history";
    EXPECT_EQ(fileText(report), requestedReport);
    const std::size_t table = result.out.find("Global score:");
    EXPECT_TRUE(table != std::string::npos && table == result.out.rfind("Global score:"))
        << "standard output carries the requested run only: " << result.out;
}
