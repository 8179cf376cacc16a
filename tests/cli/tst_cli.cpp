// SPDX-License-Identifier: Apache-2.0
// The quarbel binary as a user meets it: arguments, exit codes, output and the report.
#include "process.h"
#include "report_fixture.h"
#include "support/temp_dir.h"
#include "workloads/gpu/gpu_device_name.h"

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

using namespace quarbel::test;
namespace fs = std::filesystem;

TEST(QuarbelCommand, BadInputIsRefusedWithOneLineAndExitCode2BeforeAnythingRuns) {
    TempDir dir;
    const std::string d = dir.path().string();
    fs::create_directory(d + "/sub");
    std::ofstream(d + "/file") << "x";
    std::ofstream(d + "/bad.json") << "{\"schema\": 1, \"results\": [";
    std::ofstream(d + "/future.json") << "{\"schema\": 2}";
    std::ofstream(d + "/a.json") << reportText("2026-11-23T10:00:00Z", {{"CPU Single-Core", 10}}, "1.0",
                                               true);
    ASSERT_EQ(mkfifo((d + "/fifo").c_str(), 0600), 0);
    // clang-format off
    expectAnswers({
        {"run cpuTurbo", 2, "unknown benchmark 'cpuTurbo'; valid identifiers: cpuInteger, cpuFloating,"},
        {"run ssdRandom cpuInteger ssdRandom", 2, "benchmark 'ssdRandom' is named more than once"},
        {"run --all cpuInteger", 2, "--all runs every benchmark"},
        {"run", 2, "name the benchmarks to run, or pass --all"},
        {"run --all --bogus", 2, "--bogus"},
        {"run cpuInteger --max-passes 3", 2, "--max-passes only counts the passes of --until-stable"},
        {"run --all --json @/missing/r.json", 2, "does not exist"},
        {"run --all --json @/sub", 2, "is a directory"},
        {"run cpuInteger --json /dev/null", 2, "--json /dev/null is a character device, not a regular file"},
        {"run cpuInteger --json @/fifo", 2, "@/fifo is a named pipe, not a regular file"},
        {"run cpuInteger --json @/" + std::string(256, 'r'), 2, "File name too long"},
        {"run cpuInteger --json /proc/r.json", 2, "cannot create a file in /proc"},
        {"run cpuInteger --metrics @/missing/m.prom", 2, "quarbel: --metrics @/missing/m.prom: directory"},
        {"run cpuInteger --json - --metrics -", 2, "cannot both write to standard output"},
        {"run cpuInteger --cards @/file", 2, "exists and is not a directory"},
        {"run cpuInteger --cards @/file/sub", 2, "cannot create the directory"},
        {"run cpuInteger --gpu 7", 2, "--gpu 7 names no Vulkan device (there are: 0 llvmpipe"},
        {"run cpuInteger --opencl-device nothing", 2, "--opencl-device nothing names no OpenCL device"},
        {"run cpuInteger --storage-dir @/missing", 2, "--storage-dir: "},
        {"run cpuInteger --storage-dir /proc/version", 2, "/proc/version is not a folder"},
        {"run cpuInteger --fail-on-slower", 2, "--fail-on-slower needs --baseline REPORT"},
        {"run cpuInteger --baseline @/missing.json", 2, "--baseline: "},
        {"run cpuInteger --baseline 7", 2, "no run 7 in the history"},
        {"run cpuInteger --baseline @/a.json --confirm 2", 2, "--confirm needs --fail-on-slower"},
        {"run cpuInteger --baseline @/a.json --fail-on-slower --confirm x", 2, "--confirm takes a number"},
        {"export 1 --format csv --out @/sub", 2, "quarbel: --out @/sub is a directory"},
        {"export @/a.json --format xml", 2, "--format must be csv, md, html, json or openmetrics"},
        {"export @/a.json @/a.json --format openmetrics", 2, "exports one run"},
        {"export @/bad.json --format csv", 2, "is not a Quarbel JSON report"},
        {"export @/future.json --format csv", 2, "schema 2 is not known"},
        {"export @/a.json --format csv --out @/missing/x.csv", 2, "does not exist"},
        {"export @/a.json --format csv --out /proc/quarbel.csv", 2, "cannot create a file in /proc"},
        {"export 99 --format csv", 2, "no run 99 in the history"},
        {"import @/fifo", 2, "@/fifo is a named pipe, not a file"},
        {"import /dev/zero", 2, "/dev/zero is a character device, not a file"},
        {"compare /dev/zero 1", 2, "/dev/zero is a character device, not a file"},
        {"compare @/a.json", 2, "compare needs two runs or more"},
        {"compare @/a.json --reference missing", 2, "no reference named 'missing'; there are "},
        {"card @/fifo", 2, "@/fifo is a named pipe, not a JSON report"},
        {"card @/missing.json", 2, "cannot read"},
    }, {"XDG_DATA_HOME=" + d + "/data"}, d);
    // clang-format on
    EXPECT_FALSE(fs::exists(d + "/missing")) << "nothing is created for a refused command";
    EXPECT_TRUE(fs::is_fifo(d + "/fifo"));
}

TEST(QuarbelCommand, VersionListAndEachCommandsHelpWithTheExitCodesItReturns) {
    const auto version = runQuarbelOk({"--version"});
    EXPECT_EQ(version.out.rfind("quarbel ", 0), 0u) << version.out;
    const auto usage = runQuarbelOk({"--help"});
    EXPECT_TRUE(mentions(usage.out, "Vulkan"));
    EXPECT_TRUE(mentions(usage.out, "OpenCL"));

    const auto list = runQuarbelOk({"list"});
    std::size_t position = 0;
    for (const std::string id :
         {"cpuInteger", "cpuFloating", "cpuCrypto", "memoryStream", "cineTile", "metalVisual", "metalCompute",
          "openCLCompute", "rawCPUDecode", "rawMetalDecode", "ssdSequential", "ssdRealSpeed", "ssdRandom"}) {
        const auto found = list.out.find("\n" + id + " ", position);
        ASSERT_NE(found, std::string::npos) << id << " missing or out of order";
        position = found + 1;
    }
    EXPECT_TRUE(mentions(list.out, "memoryStream     Memory Stream      System   12 s")) << list.out;

    // Each command's help ends with the exit codes that command returns.
    const std::pair<std::string, std::vector<int>> cases[] = {
        {"list", {0, 1, 2}},    {"info", {0, 1, 2}},    {"run", {0, 1, 2, 3, 4, 130}},
        {"card", {0, 1, 2}},    {"history", {0, 1, 2}}, {"compare", {0, 1, 2, 3, 4}},
        {"devices", {0, 1, 2}},
    };
    const std::regex codeLine("\n  ([0-9]+) +[a-z]");
    for (const auto& [command, codes] : cases) {
        const auto help = runQuarbelOk({command, "--help"});
        const auto footer = help.out.find("Exit status:\n");
        ASSERT_NE(footer, std::string::npos) << help.out;
        std::vector<int> listed;
        const std::string text = help.out.substr(footer);
        for (auto it = std::sregex_iterator(text.begin(), text.end(), codeLine); it != std::sregex_iterator();
             ++it)
            listed.push_back(std::stoi((*it)[1].str()));
        EXPECT_EQ(listed, codes) << command << "\n" << text;
        // The 2 of every footer is the one a bad argument really gets.
        EXPECT_EQ(runQuarbel({command, "--bogus"}).exitCode, 2) << command;
    }
}

TEST(QuarbelCommand, ARunBesideAnotherWarnsThatBothAreSkewedAndAReportHasTheDocumentedShape) {
    const std::string warning = "Another Quarbel run is in progress (pid ";
    ChildProcess first({kQuarbel, "run", "cpuInteger"});
    ASSERT_TRUE(first.readUntil([&] { return first.out().find("] Running ") != std::string::npos; }, 30000));

    const auto second = runQuarbelOk({"run", "metalVisual", "--quick"}, kNoVulkan);
    EXPECT_TRUE(mentions(second.out, "] " + warning + std::to_string(first.pid()) +
                                         "): both runs' results will be skewed.\n"))
        << second.out;
    EXPECT_TRUE(mentions(second.out, "Summary:")) << "the run goes ahead";

    // Killed outright, the first run leaves nothing that makes a later run warn.
    first.signal(SIGKILL);
    EXPECT_FALSE(mentions(first.wait().out, warning)) << "the first run was alone";

    TempDir dir;
    const fs::path report = dir.path() / "result.json";
    // Without a Vulkan device the benchmark is skipped at once; the report's shape is the same.
    const auto result = runQuarbelOk({"run", "metalVisual", "--quick", "--json", report.string()}, kNoVulkan);
    EXPECT_FALSE(mentions(result.out, warning)) << result.out;
    EXPECT_TRUE(
        mentions(result.out, "Running GPU Visual Tour (Standard Mode, quick: a tenth of each time budget)"))
        << result.out;
    EXPECT_TRUE(mentions(result.out, "Global score: "));

    const auto json = nlohmann::json::parse(readFile(report));
    using Pointer = nlohmann::json::json_pointer;
    // clang-format off
    const std::pair<const char*, nlohmann::json> values[] = {
        {"/schema", 1}, {"/app/name", "Quarbel"}, {"/mode", "standard"}, {"/quick", true}, {"/results/0/id", "metalVisual"},
        {"/results/0/title", "GPU Visual Tour"}, {"/results/0/category", "GPU"}, {"/summary/title", "Selected Test Summary"},
        {"/summary/total", 1}};
    for (const auto& [pointer, value] : values)
        EXPECT_EQ(json.value(Pointer(pointer), nlohmann::json()), value) << pointer;
    for (const char* pointer : {"/app/version", "/startedAt", "/system", "/globalScore", "/results/0/status", "/results/0/score",
                                "/results/0/scoreText", "/results/0/primary/label", "/results/0/primary/value", "/results/0/primary/unit",
                                "/results/0/secondary", "/results/0/duration", "/results/0/detail", "/results/0/stabilityPercent",
                                "/results/0/spreadPercent", "/summary/completed", "/summary/skipped", "/summary/failed", "/summary/score",
                                "/summary/duration", "/summary/peakCPU", "/summary/peakGPU", "/summary/finishedAt"})
        EXPECT_TRUE(json.contains(Pointer(pointer))) << pointer;
    // clang-format on
    EXPECT_EQ(json["results"].size(), 1u);
    EXPECT_TRUE(json["startedAt"].get<std::string>().ends_with("Z") && json["globalScore"].is_number());
    EXPECT_EQ(json["log"].back(), json["log"].back().get<std::string>().substr(0, 11) + "Ready");
    for (const auto& file : fs::directory_iterator(dir.path()))
        EXPECT_EQ(file.path().filename(), "result.json") << "no temporary file may stay behind";
}

// The choices are refused with the rest of the bad input (above); here what is listed and used.
TEST(QuarbelCommand, DevicesAndInfoListWhatARunCanUseAndARunTakesTheChosenOnesIntoItsManifest) {
    const auto listed = runQuarbelOk({"devices", "--json"});
    const auto devices = nlohmann::json::parse(listed.out);
    ASSERT_EQ(devices["vulkan"].size(), 1u) << "lavapipe";
    const auto& lavapipe = devices["vulkan"][0];
    EXPECT_TRUE(lavapipe["type"] == "CPU" && lavapipe["unifiedMemory"] == true && lavapipe["chosen"] == true)
        << lavapipe;
    EXPECT_TRUE(devices.value(nlohmann::json::json_pointer("/opencl/0/chosen"), false)) << "PoCL";
    EXPECT_FALSE(devices["filesystems"].empty());
    EXPECT_TRUE(mentions(runQuarbel({"devices"}).out, "* 0  llvmpipe"));

    TempDir storage;
    const auto run =
        runQuarbelOk({"run", "cpuInteger", "--quick", "--no-history", "--json", "-", "--gpu", "llvmpipe",
                      "--opencl-device", "0", "--storage-dir", storage.path().string()});
    std::map<std::string, std::string> manifest;
    const auto report = nlohmann::json::parse(run.out);
    for (const auto& field : report["manifest"])
        manifest[field["key"].get<std::string>()] = field["value"].get<std::string>();
    EXPECT_EQ(manifest["storageDirectory"], storage.path().string());
    EXPECT_EQ(manifest["gpuDriver"].rfind("llvmpipe", 0), 0u) << manifest["gpuDriver"];
    EXPECT_FALSE(manifest["virtualization"].empty());

    // info names the Vulkan device the GPU workloads use.
    const auto vulkanRow = [](const std::vector<std::string>& env) {
        const auto info = nlohmann::json::parse(runQuarbelOk({"info", "--json"}, env).out);
        for (const auto& row : info["system"])
            if (row["label"] == "GPU (Vulkan)") return row["value"].get<std::string>();
        return std::string("<missing>");
    };
    EXPECT_EQ(vulkanRow({}), quarbel::gpu::defaultDeviceName().value_or("Unavailable"));
    EXPECT_EQ(vulkanRow(kNoVulkan), "Unavailable");
}
