// SPDX-License-Identifier: Apache-2.0
// Result cards from the command line: `quarbel run --cards DIR` and `quarbel card
// REPORT.json --out DIR`, with the report read back as it was written.
#include "process.h"
#include "results/json_report.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

using namespace quarbel;
using namespace quarbel::test;
namespace fs = std::filesystem;

namespace {

void writeText(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

// Width and height from a PNG's header.
std::pair<int, int> pngSize(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    unsigned char header[24] = {};
    in.read(reinterpret_cast<char*>(header), sizeof header);
    const auto big = [&](int at) {
        return header[at] << 24 | header[at + 1] << 16 | header[at + 2] << 8 | header[at + 3];
    };
    return {big(16), big(20)};
}

// The PNG files in `dir`, by name.
std::map<std::string, std::pair<int, int>> cardsIn(const fs::path& dir) {
    std::map<std::string, std::pair<int, int>> cards;
    if (!fs::is_directory(dir)) return cards;
    for (const auto& entry : fs::directory_iterator(dir))
        cards[entry.path().filename().string()] = pngSize(entry.path());
    return cards;
}

// A finished Accuracy Mode suite: every benchmark with a result, some skipped or failed.
RunReport suiteReport() {
    RunReport report;
    report.appName = "Quarbel";
    report.appVersion = "0.1.0";
    report.accuracyMode = true;
    report.startedAt = std::chrono::system_clock::from_time_t(1'780'000'000);
    report.finishedAt = report.startedAt + std::chrono::seconds(200);
    report.system = {{"CPU", "Fake CPU"}, {"Memory", "16.0 GB"}};
    for (BenchmarkID id : kAllBenchmarks) {
        BenchmarkOutcome outcome{OutcomeStatus::ok,
                                 1000 + 10 * double(indexOf(id)),
                                 {"Rate", "1.5", "GB/s"},
                                 MeasurementLine{"Ops", "42", ""},
                                 1.25,
                                 "Did it. Checksum 7."};
        if (id == BenchmarkID::metalCompute)
            outcome.gpu = GpuExecution{GpuMemoryPlacement::deviceStaged, 33'554'480, 256, 16, 0.973};
        if (id == BenchmarkID::rawMetalDecode)
            outcome.gpu = GpuExecution{GpuMemoryPlacement::deviceMapped, 66'355'200, 512, 64, std::nullopt};
        if (id == BenchmarkID::openCLCompute) outcome = skippedOutcome("No OpenCL device.");
        if (id == BenchmarkID::ssdRandom) outcome = failedOutcome("Disk full.");
        ReportEntry entry = makeReportEntry(id, outcome);
        entry.accuracyMode = true;
        entry.temperatureAtEnd = {55.0, id == BenchmarkID::metalCompute ? std::optional(61.0) : std::nullopt,
                                  report.finishedAt};
        report.results.push_back(entry);
    }
    report.summary = RunSummary{
        "Full Suite Accuracy Summary", 11, 1, 1, 13, 1050, 200, 70.0, std::nullopt, report.finishedAt};
    report.globalScore = 900;
    return report;
}

} // namespace

TEST(JsonReport, ReadsBackWhatItWroteIncludingTheCardFields) {
    const RunReport written = suiteReport();
    const auto parsed = parseJsonReport(jsonReportText(written));
    ASSERT_TRUE(std::holds_alternative<RunReport>(parsed)) << std::get<std::string>(parsed);
    const RunReport& read = std::get<RunReport>(parsed);
    ASSERT_EQ(read.results.size(), written.results.size());
    const auto fields = [](const ReportEntry& e) {
        return std::tie(e.id, e.outcome, e.temperatureAtEnd, e.accuracyMode, e.scoreText);
    };
    for (std::size_t i = 0; i < read.results.size(); ++i)
        EXPECT_TRUE(fields(read.results[i]) == fields(written.results[i])) << i;
    EXPECT_TRUE(std::tie(read.summary, read.system, read.globalScore, read.accuracyMode) ==
                std::tie(written.summary, written.system, written.globalScore, written.accuracyMode));
}

TEST(CardCommand, RendersTheGlobalCardAndOneCardPerBenchmarkOfAFullOrOlderReport) {
    TempDir dir;
    writeText(dir.path() / "suite.json", jsonReportText(suiteReport()));
    const fs::path out = dir.path() / "new" / "cards";
    const auto result = runQuarbelOk({"card", (dir.path() / "suite.json").string(), "--out", out.string()});
    const auto cards = cardsIn(out);
    ASSERT_EQ(cards.size(), 14u);
    std::string names;
    for (const auto& [name, size] : cards) {
        const bool global = name.starts_with("Quarbel-Global-Result-");
        EXPECT_TRUE(name.starts_with("Quarbel-") && name.ends_with(".png")) << name;
        EXPECT_EQ(size, global ? std::pair(1500, 1220) : std::pair(1400, 900)) << name;
        names += name + "\n";
    }
    for (const char* prefix :
         {"Quarbel-Global-Result-", "Quarbel-CPU-Single-Core-Result-", "Quarbel-SSD-Real-Speed-Result-"})
        EXPECT_EQ(count(names, prefix), 1u) << prefix;
    EXPECT_EQ(count(result.out, "\n"), 14u) << result.out;

    auto document = nlohmann::json::parse(jsonReportText(suiteReport()));
    for (auto& entry : document["results"]) {
        entry.erase("accuracyMode");
        entry.erase("temperatureAtEnd");
    }
    document["summary"] = nullptr;
    writeText(dir.path() / "old.json", document.dump());
    const auto old = runQuarbelOk({"card", (dir.path() / "old.json").string(), "--out", dir.path() / "out"});
    EXPECT_EQ(cardsIn(dir.path() / "out").size(), 13u);
    EXPECT_TRUE(mentions(old.out, "No global result card")) << old.out;
}

TEST(CardCommand, RefusesWhatIsNotAReportWithExitCode2AndWritesNothing) {
    TempDir dir;
    auto wrongId = nlohmann::json::parse(jsonReportText(suiteReport()));
    wrongId["results"][2]["id"] = "cpuTurbo";
    auto wrongType = nlohmann::json::parse(jsonReportText(suiteReport()));
    wrongType["summary"]["completed"] = "eleven";
    auto busyGpu =
        nlohmann::json::parse(jsonReportText(suiteReport())); // a GPU member that does not hold together
    busyGpu["results"][indexOf(BenchmarkID::metalCompute)]["gpu"]["busyFraction"] = 1.5;
    const std::pair<std::string, std::string> cases[] = {
        {"{\"schema\": 1, \"results\": [", "not valid JSON"},
        {"{}", "schema is missing"},
        {"[1, 2]", "not a JSON object"},
        {wrongId.dump(), "results[2].id 'cpuTurbo' is not a benchmark"},
        {wrongType.dump(), "summary.completed is not a whole number"},
        {busyGpu.dump(), "results[" + std::to_string(indexOf(BenchmarkID::metalCompute)) +
                             "].gpu.busyFraction is not a number between 0 and 1"},
    };
    for (const auto& [text, message] : cases) {
        writeText(dir.path() / "bad.json", text);
        expectAnswers({{"card @/bad.json --out @/out", 2, "is not a Quarbel JSON report: " + message}}, {},
                      dir.path());
    }
    EXPECT_FALSE(fs::exists(dir.path() / "out"));
}

TEST(RunCards, AQuickRunWritesItsCards) {
    TempDir dir;
    const fs::path out = dir.path() / "cards";
    const auto result = runQuarbelOk({"run", "cpuInteger", "--quick", "--cards", out.string()});
    const auto cards = cardsIn(out);
    ASSERT_EQ(cards.size(), 2u);
    EXPECT_EQ(cards.begin()->second, std::make_pair(1400, 900)) << cards.begin()->first;
    EXPECT_EQ(cards.rbegin()->second, std::make_pair(1500, 1220)) << cards.rbegin()->first;
    EXPECT_TRUE(mentions(result.out, "Result card: " + out.string() + "/Quarbel-CPU-Single-Core-Result-"))
        << result.out;
}

TEST(RunCards, TheCommandLineDoesNotLinkQtWidgets) {
    const std::string libraries = runProcess({"/usr/bin/env", "ldd", kQuarbel}).out;
    EXPECT_TRUE(mentions(libraries, "libQt6Gui")) << libraries;
    EXPECT_FALSE(mentions(libraries, "libQt6Widgets")) << libraries;
}
