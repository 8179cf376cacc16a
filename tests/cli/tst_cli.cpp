// SPDX-License-Identifier: Apache-2.0
// The quarbel binary as a user meets it: arguments, exit codes, output and the report.
#include "process.h"
#include "support/temp_dir.h"
#include "workloads/gpu/gpu_device_name.h"

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/mount.h>
#include <unistd.h>

using namespace quarbel::test;
namespace fs = std::filesystem;

namespace {

const std::string kQuarbel = QUARBEL_BINARY;

} // namespace

TEST(QuarbelCommand, BadInputIsRefusedWithOneLineAndExitCode2BeforeAnythingRuns) {
    TempDir dir;
    const fs::path existing = dir.path() / "sub";
    fs::create_directory(existing);
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{"run", "cpuTurbo"}, "unknown benchmark 'cpuTurbo'; valid identifiers: cpuInteger, cpuFloating,"},
        {{"run", "ssdRandom", "cpuInteger", "ssdRandom"}, "benchmark 'ssdRandom' is named more than once"},
        {{"run", "--all", "cpuInteger"}, "--all runs every benchmark"},
        {{"run"}, "name the benchmarks to run, or pass --all"},
        {{"run", "--all", "--json", (dir.path() / "missing" / "r.json").string()}, "does not exist"},
        {{"run", "--all", "--json", existing.string()}, "is a directory"},
        {{"run", "--all", "--bogus"}, "--bogus"},
        {{"run", "cpuInteger", "--metrics", (dir.path() / "missing" / "m.prom").string()},
         "quarbel: --metrics " + (dir.path() / "missing" / "m.prom").string() + ": directory"},
        {{"run", "cpuInteger", "--json", "-", "--metrics", "-"}, "cannot both write to standard output"},
        {{"export", "1", "--format", "csv", "--out", existing.string()},
         "quarbel: --out " + existing.string() + " is a directory"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args{kQuarbel};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto result = runProcess(args);
        EXPECT_EQ(result.exitCode, 2) << c.args.back();
        EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "") << "nothing may run after bad input";
    }
}

TEST(QuarbelCommand, RefusesAReportDirectoryItCannotWriteTo) {
    TempDir dir;
    const fs::path readOnly = dir.path() / "ro";
    fs::create_directory(readOnly);
    if (geteuid() == 0) {
        // Root writes through permission bits; a read-only mount is what stops it.
        if (mount("tmpfs", readOnly.c_str(), "tmpfs", MS_RDONLY, "size=64k") != 0)
            GTEST_SKIP() << "cannot mount a read-only tmpfs here";
    } else {
        fs::permissions(readOnly, fs::perms::owner_read | fs::perms::owner_exec);
    }
    const auto result = runProcess({kQuarbel, "run", "cpuInteger", "--json", (readOnly / "r.json").string()});
    if (geteuid() == 0) umount(readOnly.c_str());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("cannot create a file in"), std::string::npos) << result.err;
}

TEST(QuarbelCommand, VersionHelpAndList) {
    const auto version = runProcess({kQuarbel, "--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out.rfind("quarbel ", 0), 0u) << version.out;

    const auto help = runProcess({kQuarbel, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("Vulkan"), std::string::npos);
    EXPECT_NE(help.out.find("OpenCL"), std::string::npos);

    const auto list = runProcess({kQuarbel, "list"});
    ASSERT_EQ(list.exitCode, 0);
    const std::vector<std::string> order = {
        "cpuInteger",    "cpuFloating",  "cpuCrypto",     "memoryStream", "cineTile",
        "metalVisual",   "metalCompute", "openCLCompute", "rawCPUDecode", "rawMetalDecode",
        "ssdSequential", "ssdRealSpeed", "ssdRandom"};
    std::size_t position = 0;
    for (const auto& id : order) {
        const auto found = list.out.find("\n" + id + " ", position);
        ASSERT_NE(found, std::string::npos) << id << " missing or out of order";
        position = found + 1;
    }
    EXPECT_NE(list.out.find("memoryStream     Memory Stream      System   12 s"), std::string::npos)
        << list.out;
}

TEST(QuarbelCommand, EachCommandsHelpEndsWithTheExitCodesThatCommandReturns) {
    struct Case {
        std::string command;
        std::vector<int> codes;
    };
    const std::vector<Case> cases = {
        {"list", {0, 1, 2}},    {"info", {0, 1, 2}},    {"run", {0, 1, 2, 3, 4, 130}},
        {"card", {0, 1, 2}},    {"history", {0, 1, 2}}, {"compare", {0, 1, 2, 3, 4}},
        {"devices", {0, 1, 2}},
    };
    const std::regex codeLine("\n  ([0-9]+) +[a-z]");
    for (const auto& c : cases) {
        const auto help = runProcess({kQuarbel, c.command, "--help"});
        ASSERT_EQ(help.exitCode, 0) << c.command;
        const auto footer = help.out.find("Exit status:\n");
        ASSERT_NE(footer, std::string::npos) << help.out;
        std::vector<int> listed;
        const std::string text = help.out.substr(footer);
        for (auto it = std::sregex_iterator(text.begin(), text.end(), codeLine); it != std::sregex_iterator();
             ++it)
            listed.push_back(std::stoi((*it)[1].str()));
        EXPECT_EQ(listed, c.codes) << c.command << "\n" << text;
        // The 2 of every footer is the one a bad argument really gets.
        EXPECT_EQ(runProcess({kQuarbel, c.command, "--bogus"}).exitCode, 2) << c.command;
    }
}

TEST(QuarbelCommand, JsonReportHasTheDocumentedShape) {
    TempDir dir;
    const fs::path report = dir.path() / "result.json";
    // Without a Vulkan device the benchmark is skipped at once; the report's shape is the same.
    const auto result = runProcess({kQuarbel, "run", "metalVisual", "--quick", "--json", report.string()},
                                   {"VK_ICD_FILENAMES=/nonexistent/quarbel-no-vulkan.json",
                                    "VK_DRIVER_FILES=/nonexistent/quarbel-no-vulkan.json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Running GPU Visual Tour (Standard Mode, quick: a tenth of each time budget)"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("Global score: "), std::string::npos);

    std::ifstream in(report);
    const auto json = nlohmann::json::parse(in);
    EXPECT_EQ(json["schema"], 1);
    EXPECT_EQ(json["app"]["name"], "Quarbel");
    EXPECT_TRUE(json["app"]["version"].is_string());
    EXPECT_EQ(json["mode"], "standard");
    EXPECT_EQ(json["quick"], true);
    EXPECT_TRUE(json["startedAt"].get<std::string>().ends_with("Z"));
    EXPECT_TRUE(json["system"].is_array());
    ASSERT_EQ(json["results"].size(), 1u);
    const auto& entry = json["results"][0];
    EXPECT_EQ(entry["id"], "metalVisual");
    EXPECT_EQ(entry["title"], "GPU Visual Tour");
    EXPECT_EQ(entry["category"], "GPU");
    for (const char* key : {"status", "score", "scoreText", "primary", "secondary", "duration", "detail"})
        EXPECT_TRUE(entry.contains(key)) << key;
    for (const char* key : {"label", "value", "unit"})
        EXPECT_TRUE(entry["primary"].contains(key)) << key;
    const auto& summary = json["summary"];
    EXPECT_EQ(summary["title"], "Selected Test Summary");
    EXPECT_EQ(summary["total"], 1);
    EXPECT_TRUE(summary["peakCPU"].is_null() || summary["peakCPU"].is_number());
    for (const char* key : {"completed", "skipped", "failed", "score", "duration", "peakGPU", "finishedAt"})
        EXPECT_TRUE(summary.contains(key)) << key;
    EXPECT_TRUE(json["globalScore"].is_number());
    EXPECT_EQ(json["log"].back(), json["log"].back().get<std::string>().substr(0, 11) + "Ready");

    for (const auto& file : fs::directory_iterator(dir.path()))
        EXPECT_EQ(file.path().filename(), "result.json") << "no temporary file may stay behind";
}

TEST(QuarbelCommand, ARunBesideAnotherWarnsThatBothAreSkewedAndStillRuns) {
    const std::vector<std::string> noVulkan = {"VK_ICD_FILENAMES=/nonexistent/quarbel-no-vulkan.json",
                                               "VK_DRIVER_FILES=/nonexistent/quarbel-no-vulkan.json"};
    const std::vector<std::string> shortRun = {kQuarbel, "run", "metalVisual", "--quick"};
    const std::string warning = "Another Quarbel run is in progress (pid ";
    ChildProcess first({kQuarbel, "run", "cpuInteger"});
    ASSERT_TRUE(first.readUntil([&] { return first.out().find("] Running ") != std::string::npos; }, 30000));

    const auto second = runProcess(shortRun, noVulkan);
    EXPECT_EQ(second.exitCode, 0) << second.err;
    EXPECT_NE(second.out.find("] " + warning + std::to_string(first.pid()) +
                              "): both runs' results will be skewed.\n"),
              std::string::npos)
        << second.out;
    EXPECT_NE(second.out.find("Summary:"), std::string::npos) << "the run goes ahead";

    // Killed outright, the first run leaves nothing that makes a later run warn.
    first.signal(SIGKILL);
    const auto killed = first.wait();
    EXPECT_EQ(killed.out.find(warning), std::string::npos) << "the first run was alone";
    const auto third = runProcess(shortRun, noVulkan);
    EXPECT_EQ(third.exitCode, 0) << third.err;
    EXPECT_EQ(third.out.find(warning), std::string::npos) << third.out;
}

TEST(QuarbelCommand, CtrlCCancelsTheRunningWorkloadAndLeavesNoScratchFiles) {
    TempDir tmp;
    for (const std::string id : {"cpuInteger", "ssdSequential"}) {
        const auto result = runProcess({kQuarbel, "run", id, "cineTile"}, {"TMPDIR=" + tmp.path().string()},
                                       "] Running ", 30000);
        EXPECT_EQ(result.exitCode, 130) << id << "\n" << result.out << result.err;
        EXPECT_NE(result.out.find("] Run stopped\n"), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("] Ready\n"), std::string::npos);
        EXPECT_EQ(result.out.find("Summary:"), std::string::npos) << "a stopped run has no summary";
        EXPECT_EQ(result.out.find("CPU Tile Render:"), std::string::npos) << "nothing runs after the stop";
        EXPECT_TRUE(fs::is_empty(tmp.path())) << id << " left files in TMPDIR";
    }
}

TEST(QuarbelCommand, DevicesListsWhatARunCanUseAndARunTakesTheChosenOnesIntoItsManifest) {
    const auto listed = runProcess({kQuarbel, "devices", "--json"});
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    const auto devices = nlohmann::json::parse(listed.out);
    ASSERT_EQ(devices["vulkan"].size(), 1u) << "lavapipe";
    EXPECT_EQ(devices["vulkan"][0]["type"], "CPU");
    EXPECT_TRUE(devices["vulkan"][0]["unifiedMemory"].get<bool>());
    EXPECT_TRUE(devices["vulkan"][0]["chosen"].get<bool>());
    ASSERT_GE(devices["opencl"].size(), 1u) << "PoCL";
    EXPECT_TRUE(devices["opencl"][0]["chosen"].get<bool>());
    EXPECT_FALSE(devices["filesystems"].empty());
    const auto text = runProcess({kQuarbel, "devices"});
    EXPECT_NE(text.out.find("* 0  llvmpipe"), std::string::npos) << text.out;

    // Each choice is checked before anything runs, and the run records what it used.
    TempDir storage;
    const auto run =
        runProcess({kQuarbel, "run", "cpuInteger", "--quick", "--no-history", "--json", "-", "--gpu",
                    "llvmpipe", "--opencl-device", "0", "--storage-dir", storage.path().string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::map<std::string, std::string> manifest;
    const auto report = nlohmann::json::parse(run.out);
    for (const auto& field : report["manifest"])
        manifest[field["key"].get<std::string>()] = field["value"].get<std::string>();
    EXPECT_EQ(manifest["storageDirectory"], storage.path().string());
    EXPECT_EQ(manifest["gpuDriver"].rfind("llvmpipe", 0), 0u) << manifest["gpuDriver"];
    EXPECT_FALSE(manifest["virtualization"].empty());
    const std::pair<std::vector<std::string>, const char*> refused[] = {
        {{"--gpu", "7"}, "--gpu 7 names no Vulkan device (there are: 0 llvmpipe"},
        {{"--opencl-device", "no such device"}, "--opencl-device no such device names no OpenCL device"},
        {{"--storage-dir", (storage.path() / "missing").string()}, "--storage-dir: "},
        {{"--storage-dir", "/proc/version"}, "/proc/version is not a folder"},
    };
    for (const auto& [arguments, message] : refused) {
        std::vector<std::string> command{kQuarbel, "run", "cpuInteger", "--quick", "--no-history"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const auto result = runProcess(command);
        EXPECT_EQ(result.exitCode, 2) << message;
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(result.out.find("Running"), std::string::npos) << "nothing runs";
    }
}

TEST(QuarbelCommand, InfoNamesTheVulkanDeviceTheGpuWorkloadsUse) {
    const auto rowValue = [](const ProcessResult& result, const std::string& label) {
        const auto report = nlohmann::json::parse(result.out);
        for (const auto& row : report["system"])
            if (row["label"] == label) return row["value"].get<std::string>();
        return std::string("<missing>");
    };
    const auto withDevices = runProcess({kQuarbel, "info", "--json"});
    ASSERT_EQ(withDevices.exitCode, 0) << withDevices.err;
    EXPECT_EQ(rowValue(withDevices, "GPU (Vulkan)"),
              quarbel::gpu::defaultDeviceName().value_or("Unavailable"));

    const auto withoutDevices =
        runProcess({kQuarbel, "info", "--json"}, {"VK_ICD_FILENAMES=/nonexistent/quarbel-no-vulkan.json",
                                                  "VK_DRIVER_FILES=/nonexistent/quarbel-no-vulkan.json"});
    ASSERT_EQ(withoutDevices.exitCode, 0) << withoutDevices.err;
    EXPECT_EQ(rowValue(withoutDevices, "GPU (Vulkan)"), "Unavailable");
}
