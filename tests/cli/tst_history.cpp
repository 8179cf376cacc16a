// SPDX-License-Identifier: Apache-2.0
#include "process.h"
#include "report_fixture.h"
#include "results/history_index.h"
#include "results/json_report.h"
#include "results/learned_floors.h"
#include "results/report_file.h"
#include "results/run_comparison.h"
#include "results/run_history.h"
#include "sensors/fake_tree.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace quarbel;
using quarbel::test::mentions;
using quarbel::test::reportText;
using quarbel::test::savedResult;
using quarbel::test::savedRun;
using quarbel::testing::FakeTree;
namespace fs = std::filesystem;

namespace {

constexpr const char* kDay = "2026-11-23T10:00:00Z";

// The names in `dir`, sorted: a temporary file that stayed behind (".name") comes first.
std::vector<std::string> namesIn(const std::string& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// Everything a listing says, one line a run, for comparing two listings.
std::vector<std::string> summary(const HistoryListing& l) {
    std::vector<std::string> lines = l.warnings;
    for (const auto& run : l.runs) {
        std::string line =
            run.path + " " + run.startedAt + " " + run.title + " " + std::to_string(run.globalScore);
        for (const auto& result : run.results)
            line += " " + result.title + "=" + std::to_string(result.score) +
                    uncertaintyText(result.statistics.uncertainty) + (result.statistics.noisy ? "!" : "");
        lines.push_back(line);
    }
    return lines;
}

} // namespace

TEST(RunHistory, SavesAtomicallyListsNewestFirstAndSkipsWhatIsNotAReport) {
    FakeTree tree;
    const std::string dir = tree.path("data/quarbel/runs"); // missing parents are created
    const auto first = saveToHistory(dir, kDay, reportText(kDay));
    const auto again = saveToHistory(dir, kDay, reportText(kDay, {}, "1.0", true));
    const auto later = saveToHistory(dir, "2026-11-24T09:00:00Z",
                                     reportText("2026-11-24T09:00:00Z", {}, "1.0", false, true));
    ASSERT_TRUE(first.problem.empty()) << first.problem;
    EXPECT_EQ(fs::path(first.path).filename(), "2026-11-23-100000Z.json");
    EXPECT_EQ(fs::path(again.path).filename(), "2026-11-23-100000Z-2.json") << "nothing is overwritten";
    struct stat info {};
    ASSERT_EQ(::stat(tree.path("data").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    tree.write("data/quarbel/runs/broken.json", "{\"schema\": 1, \"results\": [");
    tree.write("data/quarbel/runs/other.json", "{\"name\": \"not ours\"}");
    tree.write("data/quarbel/runs/notes.txt", "ignored");
    const HistoryListing listing = listHistory(dir);
    ASSERT_EQ(listing.runs.size(), 3u);
    EXPECT_EQ(listing.runs[0].path, later.path);
    EXPECT_EQ(listing.runs[0].title, "Stopped run");
    EXPECT_EQ(listing.runs[1].machine, "Test CPU");
    ASSERT_EQ(listing.warnings.size(), 2u);
    EXPECT_TRUE(mentions(listing.warnings[0], "other.json: it is not a Quarbel report"));
    EXPECT_TRUE(mentions(listing.warnings[1], "broken.json: it is not valid JSON"));
    EXPECT_FALSE(namesIn(dir).front().starts_with(".")) << "a temporary file stayed behind";

    // The second listing comes from the index and says the same; a changed, removed or added
    // file is read again, and a damaged index is rebuilt.
    ASSERT_TRUE(fs::exists(dir + ".index"));
    EXPECT_EQ(summary(listHistory(dir)), summary(listing));
    tree.write("data/quarbel/runs/other.json",
               reportText("2026-11-25T08:00:00Z", {{"CPU Single-Core", 1000, std::nullopt, 0.01, true}}));
    fs::remove(first.path);
    const HistoryListing changed = listHistory(dir);
    ASSERT_EQ(changed.runs.size(), 3u);
    EXPECT_TRUE(changed.runs[0].results.at(0).statistics.noisy);
    EXPECT_EQ(summary(listHistory(dir)), summary(changed))
        << "the uncertainty and noisy flag survive the index";
    // Runs picked by number need only the order: the same runs without their results, and a
    // report the index does not know yet is found all the same.
    const HistoryListing ordered = listHistory(dir, HistoryDetail::order);
    EXPECT_EQ(ordered.warnings, changed.warnings);
    ASSERT_EQ(ordered.runs.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(ordered.runs[i].path == changed.runs[i].path && ordered.runs[i].results.empty()) << i;
    const auto newest = saveToHistory(dir, "2026-11-26T08:00:00Z", reportText("2026-11-26T08:00:00Z"));
    EXPECT_EQ(listHistory(dir, HistoryDetail::order).runs.at(0).path, newest.path);
    fs::remove(newest.path);
    tree.write("data/quarbel/runs.index", "quarbel-history-index 1\nnonsense\n");
    EXPECT_EQ(summary(listHistory(dir)), summary(changed));
    tree.write("blocker", "a file where the directory should be");
    EXPECT_FALSE(saveToHistory(tree.path("blocker/runs"), kDay, "{}").problem.empty());
}

TEST(RunHistory, RunsSavedInTheSameSecondAtOnceEachKeepTheirOwnReport) {
    FakeTree tree;
    const std::string dir = tree.path("runs");
    constexpr int kWriters = 8, kEach = 6;
    std::set<std::string> written, kept; // each writer's reports, versions w * kEach + i
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w)
        writers.emplace_back([&dir, w] {
            for (int i = 0; i < kEach; ++i)
                saveToHistory(dir, kDay, reportText(kDay, {}, std::to_string(w * kEach + i)));
        });
    for (std::thread& writer : writers)
        writer.join();
    for (int n = 0; n < kWriters * kEach; ++n)
        written.insert(reportText(kDay, {}, std::to_string(n)));
    for (const std::string& name : namesIn(dir))
        kept.insert(test::readFile(dir + "/" + name));
    EXPECT_EQ(kept, written) << "a report lost, or a leftover";
    EXPECT_EQ(namesIn(dir).size(), written.size()) << "a name given twice";
}

namespace {

// Reports that are damaged, edited or from elsewhere: each reader must skip them with a line
// and go on, never abort.
std::vector<std::pair<std::string, std::string>> brokenReports() {
    const std::string good = reportText("2026-11-01T10:00:00Z", {{"CPU Single-Core", 100}});
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        return text.replace(text.find(from), from.size(), to);
    };
    const auto patched = [&](const char* patch) {
        auto document = nlohmann::json::parse(good);
        document.merge_patch(nlohmann::json::parse(patch));
        return document.dump();
    };
    // clang-format off
    return {
        {"overflowing-score", replaced("\"score\":100.0", "\"score\":1e309")},
        {"overflowing-negative", replaced("\"globalScore\":1234.5", "\"globalScore\":-1e309")},
        {"overflowing-integer", replaced("\"schema\":1", "\"schema\":123456789012345678901234567890")},
        {"negative-score", replaced("\"score\":100.0", "\"score\":-5")},
        {"results-not-a-list", patched(R"({"results": "x"})")},
        {"result-of-wrong-types", patched(R"({"results": [{"title": 5, "score": "x", "uncertainty": "x", "noiseFloor": 3}]})")},
        {"fields-of-wrong-types", patched(R"({"app": 1, "summary": 3, "system": "x", "startedAt": 7, "manifest": {"kernel": 5}})")},
        {"missing-results", patched(R"({"results": null})")},
        {"deep-nesting", good.substr(0, good.size() - 1) + ",\"deep\":" + std::string(100000, '[') + std::string(100000, ']') + "}"},
        {"unclosed-nesting", std::string(100000, '[')},
        {"huge-string", replaced("Test CPU", std::string(10'000'000, 'A'))},
        {"invalid-utf8", replaced("Test CPU", "Test \xff\xfe CPU")},
        {"truncated", good.substr(0, good.size() / 2)},
        {"larger-than-50-MB", good + std::string(50'000'001 - good.size(), ' ')},
    };
    // clang-format on
}

} // namespace

TEST(RunHistory, EveryReaderSkipsABrokenReportWithOneLineAndGoesOn) {
    FakeTree tree;
    const std::string dir = tree.path("data/quarbel/runs");
    saveToHistory(dir, "2026-11-21T10:00:00Z", reportText("2026-11-21T10:00:00Z", {{"A", 100}}));
    saveToHistory(dir, "2026-11-22T10:00:00Z", reportText("2026-11-22T10:00:00Z", {{"A", 110}}));
    const auto corpus = brokenReports();
    for (const auto& [name, text] : corpus) {
        tree.write("data/quarbel/runs/" + name + ".json", text);
        std::string problem;
        EXPECT_NO_THROW(savedRunFromText(text, name, &problem)) << name;
        EXPECT_NO_THROW(parseJsonReport(text)) << name;
    }
    const HistoryListing listing = listHistory(dir);
    EXPECT_EQ(listing.runs.size() + listing.warnings.size(), corpus.size() + 2);
    EXPECT_EQ(listing.runs.at(0).startedAt, "2026-11-22T10:00:00Z");

    // These small reports are too thin to export, which export says; it must not abort.
    const std::string broken = "skipped " + dir + "/overflowing-score.json: it does not read as a report";
    test::expectAnswers({{"history", 0, broken},
                         {"compare 2 1", 0, broken},
                         {"export 1 2 --format csv", 2, broken},
                         {"import @/overflowing-score.json", 2, ""},
                         {"card @/overflowing-score.json", 2, ""},
                         {"export @/overflowing-score.json", 2, ""},
                         {"compare @/overflowing-score.json 1", 2, ""}},
                        {"XDG_DATA_HOME=" + tree.path("data")}, dir);
}

// The command line refuses such files with the rest of the bad input (tst_cli).
TEST(RunHistory, AnIndexThatIsNotARegularFileIsNeverOpenedForReading) {
    FakeTree tree;
    const std::string dir = tree.path("data/quarbel/runs");
    saveToHistory(dir, "2026-11-21T10:00:00Z", reportText("2026-11-21T10:00:00Z", {{"A", 100}}));
    const std::string index = historyIndexPath(dir);
    // A folder, and a named pipe (which would wait for a writer for good).
    for (const bool pipe : {false, true}) {
        fs::remove_all(index);
        ASSERT_EQ(pipe ? ::mkfifo(index.c_str(), 0600) : ::mkdir(index.c_str(), 0700), 0);
        const HistoryListing listing = listHistory(dir);
        EXPECT_EQ(listing.runs.size(), 1u);
        EXPECT_EQ(listing.warnings,
                  std::vector<std::string>{index + (pipe ? " is a named pipe" : " is a directory") +
                                           ", not a file: the runs were read from their reports" +
                                           (pipe ? " and the index made again" : "")});
    }
}

TEST(RunHistory, ABatchIsSavedWholeOrNotAtAll) {
    FakeTree tree;
    const std::string dir = tree.path("runs");
    const std::string text = reportText(kDay);
    const HistoryBatchSave saved = saveAllToHistory(dir, {{kDay, text}, {kDay, text + " "}});
    ASSERT_TRUE(saved.problem.empty()) << saved.problem;
    ASSERT_EQ(saved.paths.size(), 2u);
    EXPECT_EQ(test::readFile(saved.paths[1]), text + " ");
    // The second report finds every one of its names taken: the first goes again.
    const NewReportBatch refused =
        writeNewReportFiles(dir, {{{"fresh", 1}, text}, {{"2026-11-23-100000Z", 1}, text}}, 0644);
    EXPECT_EQ(refused.problem, "every name for a report in " + dir + " is taken");
    EXPECT_EQ(namesIn(dir),
              (std::vector<std::string>{"2026-11-23-100000Z-2.json", "2026-11-23-100000Z.json"}));
}

TEST(RunHistory, ComparesByTitleAndWarnsWhenRunsAreNotLikeForLike) {
    FakeTree tree;
    tree.write("a.json",
               reportText(kDay, {{"CPU Single-Core", 1000}, {"SSD Random", 500}, {"Only In A", 10}}));
    tree.write("b.json",
               reportText("2026-11-24T10:00:00Z",
                          {{"SSD Random", 400, 120.0}, {"CPU Single-Core", 1100}, {"Only In B", 10}}, "1.1",
                          true));
    HistoryListing history;
    const auto a = std::get<SavedRun>(resolveSavedRun(tree.path("a.json"), history));
    history.runs = {a};
    EXPECT_TRUE(mentions(std::get<std::string>(resolveSavedRun("2", history)),
                         "no run 2 in the history (it holds 1"));
    EXPECT_TRUE(mentions(std::get<std::string>(resolveSavedRun(tree.path("missing.json"), history)),
                         "cannot be read"));

    const auto b = std::get<SavedRun>(resolveSavedRun(tree.path("b.json"), history));
    const RunComparison comparison = compareRuns(a, b);
    ASSERT_EQ(comparison.rows.size(), 2u);
    EXPECT_EQ(comparison.rows[0].compared.verdict, Verdict::faster);
    EXPECT_EQ(comparison.rows[1].compared.verdict, Verdict::withinNoise)
        << "B's Accuracy Mode spread of 120 %";
    ASSERT_EQ(comparison.warnings.size(), 3u);
    EXPECT_TRUE(mentions(comparison.warnings[0], "different Quarbel versions (1.0 and 1.1)"));
    EXPECT_TRUE(mentions(comparison.warnings[1], "quick"));
    // Reports without slice rates are judged the old way, and the user is told.
    EXPECT_TRUE(mentions(comparison.warnings[2], "No slice rates for CPU Single-Core, SSD Random"));
    EXPECT_TRUE(mentions(comparisonText(a, b, comparison), "CPU Single-Core  1000.0  1100.0  1.100"));
    EXPECT_EQ(nlohmann::json::parse(comparisonJson(a, b, comparison))["results"][1]["noiseBandFrom"],
              "accuracy spread");
    EXPECT_DOUBLE_EQ(comparison.rows[0].compared.bandPercent,
                     defaultNoiseBandPercent(BenchmarkCategory::cpu, RunLength::quick));
    EXPECT_DOUBLE_EQ(compareRuns(a, a).rows[0].compared.bandPercent,
                     defaultNoiseBandPercent(BenchmarkCategory::cpu, RunLength::full));

    // Set-ups that differ are named with what they can move.
    SavedRun smtOn = a, smtOff = b;
    smtOn.manifest = {{"smt", "SMT", "on", "CPU"}};
    smtOff.manifest = {{"smt", "SMT", "off", "CPU"}};
    EXPECT_TRUE(mentions(comparisonText(smtOn, smtOff, compareRuns(smtOn, smtOff)),
                         "The set-ups differ in 1 field:\n  SMT (can move CPU scores): A on; B off\n"));
}

TEST(RunHistory, TheCommandLineKeepsRunsUnlessToldNotTo) {
    FakeTree tree;
    std::vector<std::string> env = test::kNoVulkan;
    env.push_back("XDG_DATA_HOME=" + tree.root());
    const auto run = test::runQuarbelOk({"run", "metalVisual", "--quick"}, env);
    EXPECT_TRUE(mentions(run.err, "kept in the history as " + tree.root() + "/quarbel/runs/"));
    // Metrics on standard output leave the people's text on standard error.
    const auto unkept =
        test::runQuarbelOk({"run", "metalVisual", "--quick", "--no-history", "--metrics", "-"}, env);
    EXPECT_EQ(unkept.out.rfind("# HELP quarbel_", 0), 0u) << unkept.out;
    EXPECT_TRUE(mentions(unkept.err, "GPU Visual Tour")) << unkept.err;

    const auto history = test::runQuarbel({"history"}, env);
    EXPECT_TRUE(mentions(history.out, "\n1  ")) << history.out;
    EXPECT_FALSE(mentions(history.out, "\n2  ")) << "--no-history kept nothing:\n" << history.out;
    const auto compare = test::runQuarbelOk({"compare", "1", "1"}, env);
    for (const char* expected : {"GPU Visual Tour", "skipped in both runs", "Both are the same run"})
        EXPECT_TRUE(mentions(compare.out, expected)) << compare.out;
    EXPECT_EQ(test::runQuarbel({"compare", "1", "7"}, env).exitCode, 2);
}

TEST(RunHistory, CompareJudgesByStatisticsAndFailsOnSlowerForCI) {
    FakeTree tree;
    // CPU Single-Core 20 % slower with a 1 % standard error on each side: significant. Memory
    // Stream 0.5 % slower: within noise. RAW CPU Decode 30 % slower but noisy: inconclusive.
    // C is A measured on a noisy machine: nothing slower, only not judged.
    const auto withError = [](const char* title, double score, bool noisy = false) {
        return test::Result{title, score, std::nullopt, 0.01, noisy};
    };
    // clang-format off
    tree.write("a.json", reportText(kDay, {withError("CPU Single-Core", 1000), withError("Memory Stream", 1000), withError("RAW CPU Decode", 1000)}));
    tree.write("b.json", reportText("2026-11-24T10:00:00Z", {withError("CPU Single-Core", 800), withError("Memory Stream", 995), withError("RAW CPU Decode", 700, true)}));
    // clang-format on
    tree.write("c.json", reportText("2026-11-25T10:00:00Z", {withError("CPU Single-Core", 1000, true)}));
    const std::vector<std::string> env{"XDG_DATA_HOME=" + tree.root()};
    const auto plain = test::runQuarbelOk({"compare", tree.path("a.json"), tree.path("b.json")}, env);
    for (const char* expected : {"CPU Single-Core  1000.0 \u00b1 2.1 %", "slower", "within noise", "-20.0 %",
                                 "Could not judge: RAW CPU Decode (noisy machine in B)"})
        EXPECT_TRUE(mentions(plain.out, expected)) << expected << "\n" << plain.out;

    // clang-format off
    test::expectAnswers({
        {"compare @/a.json @/b.json --fail-on-slower", 3, "slower than allowed (1.0 %): CPU Single-Core"},
        {"compare @/a.json @/b.json --fail-on-slower 19", 3, "CPU Single-Core"},
        {"compare @/a.json @/b.json --fail-on-slower 0", 3, "slower than allowed (0.0 %): CPU Single-Core"},
        {"compare @/a.json @/b.json --fail-on-slower 25", 4, "could not judge: RAW CPU Decode (noisy machine in B)"},
        {"compare @/a.json @/c.json --fail-on-slower", 4, "could not judge: CPU Single-Core"},
        // A later run that could not be judged leaves the earlier slower one failing.
        {"compare @/a.json @/b.json @/c.json --fail-on-slower", 3, "@/b.json: slower than allowed"},
        {"compare @/a.json @/b.json --junit @/j.xml", 2, "--junit needs --fail-on-slower"},
        {"compare @/a.json @/b.json --fail-on-slower -1", 2, "--fail-on-slower takes a percentage of zero or more"},
        {"compare @/a.json @/b.json --fail-on-slower fast", 2, "--fail-on-slower takes a percentage such as 5"},
        // The same verdicts for a CI system: one failure, one error, the rest passed.
        {"compare @/a.json @/b.json --fail-on-slower --junit @/j.xml", 3, ""},
    }, env, tree.root());
    // clang-format on
    const std::string xml = tree.read("j.xml");
    for (const char* expected : {"tests=\"3\" failures=\"1\" errors=\"1\" skipped=\"0\"",
                                 "name=\"CPU Single-Core\">\n      <failure type=\"slower\"",
                                 "<error type=\"could not judge\" message=\"noisy machine in B"})
        EXPECT_TRUE(mentions(xml, expected)) << expected << "\n" << xml;
}

TEST(RunHistory, AResultThatFailedHoldsNoValidScoreOrIsScoredDifferentlyIsNamedAndNotJudged) {
    const struct {
        std::string status;
        double score;
        const char* versions[2];
        const char* why; // the start of why it is not judged; empty: judged
    } cases[] = {
        {"failed", 0, {"", ""}, "failed in B"},
        {"ok", 0, {"", ""}, "no valid score in B (a report that says ok with a score of 0)"},
        {"ok", -5, {"", ""}, "no valid score in B (a report that says ok with a score of -5)"},
        {"ok", std::numeric_limits<double>::quiet_NaN(), {"", ""}, "no valid score in B"},
        {"ok", 200, {"0.0.9", "0.1.0"}, "Quarbel 0.0.9 and 0.1.0 score it differently"},
        {"ok", 200, {"0.1.0", "0.2.0"}, ""},
    };
    for (const auto& c : cases) {
        const RunComparison comparison =
            compareRuns(savedRun({savedResult(100)}, "a", c.versions[0]),
                        savedRun({savedResult(c.score, c.status)}, "b", c.versions[1]));
        ASSERT_EQ(comparison.rows.size(), 1u);
        EXPECT_EQ(comparison.rows[0].notJudged.rfind(c.why, 0), 0u) << comparison.rows[0].notJudged;
        EXPECT_EQ(comparison.rows[0].compared.verdict, *c.why ? Verdict::inconclusive : Verdict::faster)
            << c.why;
        if (c.versions[0] == std::string("0.0.9")) {
            EXPECT_TRUE(
                mentions(comparison.warnings.at(0), "only the benchmarks that both versions score alike"));
        }
    }
}

TEST(RunHistory, EfficiencyIsJudgedFromEachRunsOwnPowerSamples) {
    // CPU Single-Core at `score` ± 1 % over CPU package power sampled 1 % either side of `watts`.
    const auto runWith = [](const std::string& path, double score, double watts, int samples = 6,
                            const std::string& missing = "") {
        SavedResult result = savedResult(score);
        result.statistics.uncertainty = RateUncertainty{20, 0.01, 19};
        for (int i = 0; watts > 0 && i < samples; ++i) {
            result.statistics.trace.seconds.push_back(0.5f * static_cast<float>(i));
            result.statistics.trace.cpuWatts.push_back(static_cast<float>(watts * (i % 2 ? 1.01 : 0.99)));
        }
        if (watts > 0)
            result.statistics.energy.measured.push_back(
                {PowerDomain::cpuPackage, "RAPL package-0", watts * 3, watts, watts * 1.01});
        if (!missing.empty()) result.statistics.energy.missing.push_back({PowerDomain::cpuPackage, missing});
        return savedRun({result}, path);
    };
    const SavedRun a = runWith("a", 1000, 20), b = runWith("b", 1000, 16);
    const struct {
        const char* name;
        SavedRun after;
        std::optional<Verdict> verdict; // none: not judged
        std::string notJudged;
    } cases[] = {
        // clang-format off
        {"the run against itself", a, Verdict::withinNoise, ""},
        {"faster at the same points per joule", runWith("b", 1200, 24), Verdict::withinNoise, ""},
        {"the same score on a fifth less power", b, Verdict::faster, ""},
        {"the same score on a fifth more power", runWith("b", 1000, 24), Verdict::slower, ""},
        {"no sensor in B", runWith("b", 1000, 0), std::nullopt, "no power sensor in run B"},
        {"B says why", runWith("b", 1000, 0, 0, "a virtual machine exposes no power sensors"), std::nullopt, "energy not measured in run B: a virtual machine exposes no power sensors"},
        {"two power samples in B", runWith("b", 1000, 16, 2), std::nullopt, "not enough power samples in run B"},
        // clang-format on
    };
    for (const auto& c : cases) {
        const RunComparison comparison = compareRuns(a, c.after);
        ASSERT_TRUE(comparison.rows.at(0).efficiency) << c.name;
        const EfficiencyComparison& e = *comparison.rows[0].efficiency;
        EXPECT_EQ(e.notJudged, c.notJudged) << c.name;
        EXPECT_EQ(e.compared ? std::optional(e.compared->verdict) : std::nullopt, c.verdict) << c.name;
    }
    EXPECT_FALSE(compareRuns(runWith("a", 1000, 0), runWith("b", 1000, 0)).rows[0].efficiency)
        << "nothing to say where neither run measured energy";

    const RunComparison comparison = compareRuns(a, b);
    const std::string text = comparisonText(a, b, comparison);
    EXPECT_TRUE(
        mentions(text, "CPU Single-Core efficiency (CPU package): 50.0 \u2192 62.5 pts/J, +25.0 % (B / A "))
        << text;
    EXPECT_TRUE(mentions(text, "), more efficient\n")) << text;
    const auto document = nlohmann::json::parse(comparisonJson(a, b, comparison));
    EXPECT_EQ(document["results"][0]["efficiency"]["verdict"], "more efficient");
    EXPECT_EQ(document["results"][0]["efficiency"]["domain"], "cpuPackage");
}

TEST(LearnedFloors, ComeFromQuietCompletedRunsOfThisMachineVersionModeAndLength) {
    const auto run = [](const char* machine, const char* version, const char* mode, double score,
                        bool noisy = false, bool quick = false) {
        SavedRun r = savedRun({savedResult(score, score > 0 ? "ok" : "failed")}, "", version);
        r.results[0].statistics.noisy = noisy;
        r.mode = mode;
        r.quick = quick;
        r.machineId = machine;
        return r;
    };
    // Five like runs, newest first, between runs of another machine, version or mode, noisy or failed ones.
    HistoryListing history;
    const std::vector<double> like = {1000, 1010, 990, 1020, 980};
    for (double score : like)
        for (const SavedRun& r :
             {run("m1", "1.0", "standard", score), run("m2", "1.0", "standard", 10 * score),
              run("m1", "0.9", "standard", 2 * score), run("m1", "1.0", "accuracy", 3 * score),
              run("m1", "1.0", "standard", 5 * score, true), run("m1", "1.0", "standard", 0)})
            history.runs.push_back(r);
    history.runs.push_back(run("m1", "1.0", "standard", 500, false, true)); // one quick run: too few
    const NoiseFloors floors = learnNoiseFloors(history, "m1", "1.0");
    const NoiseFloor full = floors.floorFor(BenchmarkID::cpuInteger, RunLength::full);
    EXPECT_EQ(full.runs, 5);
    EXPECT_DOUBLE_EQ(full.percent, *learnedFloorPercent(like));
    EXPECT_EQ(floors.floorFor(BenchmarkID::cpuInteger, RunLength::quick).runs, 0) << "built in";
    EXPECT_EQ(floors.floorFor(BenchmarkID::memoryStream, RunLength::full).runs, 0);
    EXPECT_EQ(learnNoiseFloors(history, "", "1.0").floorFor(BenchmarkID::cpuInteger, RunLength::full).runs, 0)
        << "a machine without an identifier cannot tell its runs apart";
    EXPECT_EQ(noiseFloorText({1.234, 7}),
              "Run-to-run floor 1.2 %, learned from 7 earlier quiet runs on this machine");
    EXPECT_EQ(noiseFloorText({2.0, 0}),
              "Run-to-run floor 2.0 %, built in (fewer than 5 earlier quiet runs on this machine)");
}
