// SPDX-License-Identifier: Apache-2.0
// Exports, shared pages and many-run comparisons through the real quarbel, from a real quick run.
#include "process.h"
#include "sensors/fake_tree.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>

using namespace quarbel;
using quarbel::test::mentions;
using quarbel::testing::FakeTree;
namespace fs = std::filesystem;

namespace {

std::vector<std::string> lines(const std::string& text, const char* separator = "\n") {
    std::vector<std::string> out;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(separator, start)) != std::string::npos;
         start = end + std::strlen(separator))
        out.push_back(text.substr(start, end - start));
    return out;
}

// The fields of one CSV record (quoted fields may hold commas and doubled quotes).
std::vector<std::string> csvFields(const std::string& record) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < record.size(); ++i) {
        if (quoted && record[i] == '"' && i + 1 < record.size() && record[i + 1] == '"')
            fields.back() += record[++i];
        else if (record[i] == '"')
            quoted = !quoted;
        else if (record[i] == ',' && !quoted)
            fields.emplace_back();
        else
            fields.back() += record[i];
    }
    return fields;
}

// One quick run of two benchmarks shared by the tests: its report and its metrics file.
struct QuickRun {
    FakeTree tree;
    std::vector<std::string> env{"XDG_DATA_HOME=" + tree.root(), "TMPDIR=" + tree.root()};
    std::string report = tree.path("run.json");
    std::string metrics = tree.path("run.prom");
    test::ProcessResult result;
    QuickRun() {
        result = test::runQuarbelOk({"run", "cpuInteger", "memoryStream", "--quick", "--no-history", "--json",
                                     report, "--metrics", metrics},
                                    env);
    }
};

QuickRun& quickRun() {
    static QuickRun run;
    return run;
}

} // namespace

TEST(Exports, TheMetricsFileCsvHtmlAndManyRunComparisonsCarryTheReportsValues) {
    QuickRun& run = quickRun();
    const nlohmann::json report = nlohmann::json::parse(test::readFile(run.report));
    // Samples by name{labels} (a missing one throws); promtool checks the text format itself in
    // metrics_scrape.sh.
    std::map<std::string, double> values;
    for (const auto& line : lines(test::readFile(run.metrics)))
        if (line.rfind("# ", 0) != 0)
            values[line.substr(0, line.rfind(' '))] = std::stod(line.substr(line.rfind(' ')));
    for (const auto& result : report["results"]) {
        const std::string id = result["id"];
        EXPECT_DOUBLE_EQ(values.at("quarbel_score{benchmark=\"" + id + "\"}"), result["score"].get<double>());
        EXPECT_NEAR(values.at("quarbel_score_ci95_percent{benchmark=\"" + id + "\"}"),
                    result["ci95Percent"].get<double>(), 1e-9);
    }
    // The memory stream's decimal GB/s becomes bytes per second.
    const double gigabytes = std::stod(report["results"][1]["primary"]["value"].get<std::string>());
    EXPECT_NEAR(values.at("quarbel_primary_bytes_per_second{benchmark=\"memoryStream\",label=\"Bandwidth\"}"),
                gigabytes * 1e9, 1);
    EXPECT_EQ(values.at("quarbel_run_complete"), 1);

    // CSV, HTML and many-run comparisons carry every run.
    EXPECT_EQ(test::count(run.result.out, "\n    Sensors: "), 2u) << "one line under each result's row";

    const auto csv = test::runQuarbelOk({"export", run.report, run.report, "--format", "csv"}, run.env);
    const auto records = lines(csv.out, "\r\n");
    ASSERT_EQ(records.size(), 5u) << "a header and two benchmarks of each run";
    const auto header = csvFields(records[0]);
    const auto sliceColumn = std::find(header.begin(), header.end(), "slice_rates") - header.begin();
    const std::string machineId = report["machine"]["machineId"];
    for (std::size_t i = 1; i < records.size(); ++i) {
        const auto fields = csvFields(records[i]);
        ASSERT_EQ(fields.size(), header.size()) << records[i];
        EXPECT_GE(test::count(fields[sliceColumn] + " ", " "), 5u) << "the slice rates, raw";
        // Named the same way whenever exported: the machine and the start, not a history number.
        EXPECT_EQ(fields[0], machineId + "-" + report["startedAt"].get<std::string>());
        EXPECT_EQ(fields[2], machineId);
    }

    // Text from an imported report that a spreadsheet would run is kept as text. The report
    // is from a machine with a package power sensor.
    auto hostile = report;
    hostile["machine"]["hostName"] = "=HYPERLINK(\"http://x\")";
    for (auto& row : hostile["system"])
        if (row["label"] == "CPU") row["value"] = "@SUM(A1)";
    hostile["results"][0].update(nlohmann::json::parse(R"({"traceSummary": "steady", "startCelsius": 41.5,
        "energy": {"measured": [{"domain": "cpuPackage", "source": "RAPL package-0", "joules": 31.2,
                                 "averageWatts": 20.8, "peakWatts": 57.7}], "missing": []}})"));
    run.tree.write("hostile.json", hostile.dump());
    const auto guarded =
        test::runQuarbelOk({"export", run.tree.path("hostile.json"), "--format", "csv"}, run.env);
    const auto guardedFields = csvFields(lines(guarded.out, "\r\n").at(1));
    EXPECT_EQ(guardedFields[1], "'=HYPERLINK(\"http://x\")");
    EXPECT_EQ(guardedFields[4], "'@SUM(A1)");
    // Energy and the sensors' summary come last, empty for a result without them.
    const double score = report["results"][0]["score"];
    const auto energyAt = header.size() - 7;
    EXPECT_EQ(std::vector(guardedFields.begin() + static_cast<long>(energyAt), guardedFields.end() - 3),
              (std::vector<std::string>{"cpuPackage", "31.200", "20.800", "57.700"}));
    EXPECT_NEAR(std::stod(guardedFields.at(energyAt + 4)), score / 20.8, 1e-6);
    EXPECT_EQ(guardedFields.at(energyAt + 5), "steady");
    EXPECT_EQ(guardedFields.at(energyAt + 6), "41.5");
    EXPECT_EQ(csvFields(lines(guarded.out, "\r\n").at(2)).at(energyAt), "");
    const auto metrics =
        test::runQuarbelOk({"export", run.tree.path("hostile.json"), "--format", "openmetrics"}, run.env);
    for (const std::string expected :
         {"\nquarbel_energy_joules{benchmark=\"cpuInteger\",domain=\"cpuPackage\"} 31.2\n",
          "\nquarbel_power_watts{benchmark=\"cpuInteger\",domain=\"cpuPackage\"} 20.8\n",
          "\nquarbel_points_per_joule{benchmark=\"cpuInteger\",domain=\"cpuPackage\"} "})
        EXPECT_TRUE(mentions(metrics.out, expected)) << expected << metrics.out;

    const std::string page = run.tree.path("out/page.html");
    std::filesystem::create_directories(run.tree.path("out"));
    const auto html = test::runQuarbelOk(
        {"export", run.report, run.report, run.report, "--format", "html", "--out", page}, run.env);
    const std::string text = test::readFile(page);
    EXPECT_FALSE(mentions(text, "<script"));
    EXPECT_FALSE(mentions(std::regex_replace(text, std::regex("http://www.w3.org/2000/svg"), ""), "http"))
        << "nothing is fetched";
    EXPECT_EQ(test::count(text, "<svg width=\"560\" height=\"180\""), 3u)
        << "the global score and one chart per benchmark";
    EXPECT_EQ(test::count(text, "<svg width=\"560\" height=\"150\""), 6u)
        << "the sensor trace under each of the three runs' two results";

    const auto compare = test::runQuarbelOk({"compare", run.report, run.report, run.report}, run.env);
    EXPECT_TRUE(mentions(compare.out, "Benchmark        A")) << compare.out;
    // Each later run against A, identical: ratio 1 (its verdict depends on how quiet the machine was).
    EXPECT_EQ(test::count(compare.out, "  1.000 "), 4u) << compare.out;
}

// A shared page reads without Quarbel; an edited page, a later schema, a cut or huge report adds nothing.
TEST(Exports, ImportAddsReportsAndSharedPagesOnceAndRefusesWhatIsNotAReportWhole) {
    QuickRun& run = quickRun();
    FakeTree home;
    const std::vector<std::string> env{"XDG_DATA_HOME=" + home.path("data"),
                                       "XDG_RUNTIME_DIR=" + home.root()};
    const std::string runs = home.path("data/quarbel/runs");
    const auto kept = [&] {
        std::vector<fs::path> files;
        for (const auto& entry : fs::directory_iterator(runs))
            files.push_back(entry.path());
        return files;
    };
    test::runQuarbelOk({"share", run.report, "--out", home.path("run.html")}, env);
    const std::string page = home.read("run.html");
    EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_TRUE(mentions(page, "CPU Single-Core")) << "the tables read without Quarbel";
    EXPECT_FALSE(mentions(page, "<script"));
    // Each page a copy of the first with one change: where it is decides whether the report
    // is still the one that was shared.
    const std::size_t inside = page.find("data-sha256=\"") + 100;
    const std::pair<std::string, test::Answer> pages[] = {
        {page.substr(0, inside) + (page[inside] == 'A' ? 'B' : 'A') + page.substr(inside + 1),
         {"import @/copy.html", 2, "was altered after it was shared"}},
        {"<!DOCTYPE html><html><body>hello</body></html>", {"import @/copy.html", 2, "is not"}},
    };
    for (const auto& [text, answer] : pages) {
        home.write("copy.html", text);
        test::expectAnswers({answer}, env, home.root());
    }
    home.write("copy.html", page);
    const auto first = test::runQuarbelOk({"import", home.path("copy.html"), run.report}, env);
    EXPECT_TRUE(mentions(first.out, "1 imported, 1 already in the history.")) << first.out;
    const auto again = test::runQuarbel({"import", run.report}, env);
    EXPECT_TRUE(mentions(again.out, "0 imported, 1 already in the history.")) << again.out;
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_EQ(test::readFile(kept().front()), test::readFile(run.report))
        << "the history holds the report as it was written";
    // The imported run names its machine, and it is the one the history lists.
    EXPECT_TRUE(mentions(test::runQuarbel({"history"}, env).out, "Selected Test Summary"));
    const nlohmann::json report = nlohmann::json::parse(test::readFile(run.report));
    EXPECT_EQ(report["machine"]["machineId"].get<std::string>().size(), 16u);
    EXPECT_FALSE(report["machine"]["kernel"].get<std::string>().empty());

    home.write("future.json", "{\"schema\": 2}");
    home.write("truncated.json", test::readFile(run.report).substr(0, 300));
    home.write("huge.json", std::string(51 * 1024 * 1024, ' '));
    for (const char* bad : {"truncated.json", "huge.json"}) {
        const auto result = test::runQuarbel({"import", run.tree.path("future.json"), home.path(bad)}, env);
        EXPECT_EQ(result.exitCode, 2) << bad;
        EXPECT_TRUE(mentions(result.err, "nothing was imported")) << result.err;
    }
    EXPECT_EQ(kept().size(), 1u) << "the history is untouched";
}

TEST(Reference, ShippedRunsAreListedComparedAndMarkedWhenFromAnotherVersion) {
    FakeTree tree;
    std::string report = test::readFile(QUARBEL_SOURCE_REFERENCE_DIR "/devvm-epyc2.json");
    tree.write("refs/this-version.json", report);
    const std::string versionField = "\"version\": \"" QUARBEL_VERSION "\"";
    ASSERT_TRUE(mentions(report, versionField));
    report.replace(report.find(versionField), versionField.size(), "\"version\": \"0.0.9\"");
    tree.write("refs/older.json", report);
    const std::vector<std::string> env{"QUARBEL_REFERENCE_DIR=" + tree.path("refs"),
                                       "XDG_DATA_HOME=" + tree.path("data")};

    const auto listed = test::runQuarbelOk({"reference"}, env);
    EXPECT_EQ(listed.out.find("older  "), 0u) << listed.out;
    EXPECT_TRUE(mentions(listed.out, "(from Quarbel 0.0.9: judged only where that version scores alike)"));
    EXPECT_TRUE(mentions(listed.out, "\nthis-version  "));
    EXPECT_EQ(listed.out.find("judged only", listed.out.find("this-version")), std::string::npos);

    const std::pair<std::string, const char*> comparisons[] = {
        {"this-version", "within noise"},
        {"older", "Quarbel " QUARBEL_VERSION " and 0.0.9 score it differently"},
    };
    for (const auto& [name, says] : comparisons) {
        const auto compared =
            test::runQuarbelOk({"compare", tree.path("refs/this-version.json"), "--reference", name}, env);
        EXPECT_TRUE(mentions(compared.out, says)) << name << ": " << compared.out;
    }
}
