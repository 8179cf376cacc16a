// SPDX-License-Identifier: Apache-2.0
// A run driven in-process, with fake workloads, through a real SIGINT.
#include "fake_workloads.h"
#include "results/json_report.h"
#include "results/report_file.h"
#include "results/run_report.h"
#include "session/progress_line.h"
#include "session/run_arguments.h"
#include "session/run_session.h"
#include "session/stop_signals.h"
#include "support/event_loop.h"
#include "support/unsynced_pages.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace quarbel;
using namespace quarbel::test;

namespace {

std::string readAll(std::FILE* file) {
    std::rewind(file);
    std::string text;
    char buffer[4096];
    std::size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, n);
    return text;
}

} // namespace

// The finished result carries its mode and the temperatures at its end.
TEST(RunSession, InterruptStopsTheRunWithoutSummaryAndExit130) {
    FakeWorkloads fakes;
    fakes.set(BenchmarkID::cpuFloating, FakeBehaviour::untilCancelled);
    BenchmarkStore store(fakes.services([] { return QLTemperatureReading{51.0, 0, 1, 0}; }));
    ASSERT_TRUE(processEventsUntil([&] { return store.temperatureSnapshot().cpuCelsius.has_value(); }));
    std::FILE* out = std::tmpfile();
    const auto report =
        std::filesystem::temp_directory_path() / ("quarbel-session-" + std::to_string(getpid()) + ".json");
    session::RunOptions options;
    options.ids = {BenchmarkID::cpuInteger, BenchmarkID::cpuFloating, BenchmarkID::cpuCrypto};
    options.accuracy = options.quick = true;
    options.report = std::get<ReportTarget>(resolveReportTarget("--json", report.string()));
    session::RunSession session(store, options, out, false, [] {
        return std::vector<std::pair<std::string, std::string>>{{"CPU", "Fake"}};
    });
    session::StopSignals stopSignals;
    QObject::connect(&stopSignals, &session::StopSignals::stopRequested, &session,
                     [&](int, int) { session.requestStop(); });
    int exitCode = -1;
    int finishes = 0;
    QObject::connect(&session, &session::RunSession::finished, [&](int code) {
        exitCode = code;
        ++finishes;
    });

    session.start();
    EXPECT_EQ(store.budgetScale(), 0.1) << "--quick divides every budget by ten";
    ASSERT_TRUE(processEventsUntil(
        [&] { return fakes.running() == 1 && store.runningID() == BenchmarkID::cpuFloating; }));
    std::raise(SIGINT);
    ASSERT_TRUE(processEventsUntil([&] { return exitCode != -1; }));

    EXPECT_EQ(exitCode, 130);
    EXPECT_EQ(fakes.cancelledSeen(), 1);
    EXPECT_EQ(fakes.calls(BenchmarkID::cpuCrypto), 0);
    const std::string text = readAll(out);
    for (const char* expected :
         {"] Run stopped\n", "] Ready\n", "Run stopped: no summary.", "CPU Single-Core (quick)"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;

    std::ifstream in(report);
    const auto json = nlohmann::json::parse(in);
    EXPECT_TRUE(json["summary"].is_null());
    EXPECT_EQ(json["results"].size(), 1u) << "only the benchmark that finished has a result";
    EXPECT_EQ(json["system"][0]["value"], "Fake");
    const auto& result = json["results"][0];
    EXPECT_EQ(result["accuracyMode"], true);
    EXPECT_EQ(result["temperatureAtEnd"]["cpu"], 51.0);
    EXPECT_TRUE(result["temperatureAtEnd"]["gpu"].is_null());
    EXPECT_TRUE(result["temperatureAtEnd"]["readAt"].is_string());

    // A later run of the same store (the window's) is not the session's: its output, report and
    // exit code stay as they were.
    store.run({BenchmarkID::cpuInteger}, false);
    ASSERT_TRUE(processEventsUntil([&] { return !store.busy(); }));
    EXPECT_EQ(finishes, 1);
    EXPECT_EQ(readAll(out), text);
    std::ifstream again(report);
    EXPECT_EQ(nlohmann::json::parse(again), json);
    std::fclose(out);
    std::filesystem::remove(report);
}

TEST(ProgressLine, ShowsElapsedTargetBarAndRate) {
    session::ProgressState state{"CPU Single-Core", 6.0, 15, 0.4, 1234, 2.0, "batches"};
    EXPECT_EQ(session::progressLine(state, 10), "CPU Single-Core  6.0/15 s [####......]  617 batches/s");
    state.unit = {"bytes", "MB/s", 1.0 / 1048576};
    state.unitsDone = 3 * 1048576;
    EXPECT_EQ(session::rateText(state), "1.5 MB/s");
    state.unit = {"passes", "GB/s", 0.192};
    state.unitsDone = 100;
    EXPECT_EQ(session::rateText(state), "9.6 GB/s");
    state.unit = "";
    EXPECT_EQ(session::rateText(state), "");
    state.fraction = 7; // the bar never overflows
    EXPECT_EQ(session::progressLine(state, 4), "CPU Single-Core  6.0/15 s [####]");
}

TEST(ReportFile, AFinalWriteThatFailsAfterTheRunKeepsOrReturnsTheReport) {
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / ("quarbel-report-" + std::to_string(getpid()));
    // The target becomes a folder after the start-up check: the rename fails, and a copy is kept
    // beside it (a folder that goes altogether: tst_faults).
    fs::create_directories(dir);
    const auto target = resolveReportTarget("--json", (dir / "r.json").string());
    ASSERT_TRUE(std::holds_alternative<ReportTarget>(target));
    fs::create_directory(dir / "r.json");
    const ReportWrite written = writeReportFile(std::get<ReportTarget>(target), "{}\n");
    EXPECT_NE(written.problem, "");
    std::ifstream kept(written.keptAt);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "{}\n") << written.keptAt;
    // A report written without trouble is on the disk, not only in the page cache, when its
    // write returns: a crash or a power cut right after the run keeps it.
    if (pageCacheShowsUnsyncedPages((dir / "probe").string())) {
        fs::remove_all(dir / "r.json");
        EXPECT_EQ(writeReportFile(std::get<ReportTarget>(target), std::string(65'536, ' ')).problem, "");
        EXPECT_EQ(unsyncedPages((dir / "r.json").string()), 0u);
        const NewReportFile added =
            writeNewReportFile(dir.string(), {"new", 1}, 0644, std::string(65'536, ' '));
        EXPECT_EQ(unsyncedPages(added.path), 0u) << added.problem;
    }
    fs::remove_all(dir);
}

TEST(RunSession, TheLineUnderEachResultSaysWhatTheSensorsSawAndTheEnergy) {
    const EnergyMeasurement package{PowerDomain::cpuPackage, "RAPL package-0", 31.2, 20.8, 57.7};
    const EnergyMeasurement gpu{PowerDomain::gpu, "NVML", 900, 150, 180};
    const EnergyAbsence vm{PowerDomain::cpuPackage, "a virtual machine exposes no power sensors"};
    const EnergyAbsence noGpu{PowerDomain::gpu, "no sensor"};
    const struct {
        BenchmarkID id;
        OutcomeStatus status;
        std::string summary;
        ResultEnergy energy;
        std::string line;
    } cases[] = {
        // clang-format off
        {BenchmarkID::cpuInteger, OutcomeStatus::ok, "steady", {{package}, {}}, "Sensors: steady \u00b7 CPU package 31.2 J, 20.8 W average, 57.7 pts/J"},
        // A GPU benchmark is judged by the GPU's energy, any other by the package's.
        {BenchmarkID::metalCompute, OutcomeStatus::ok, "steady", {{package, gpu}, {}}, "Sensors: steady \u00b7 GPU 900.0 J, 150.0 W average, 8.00 pts/J"},
        {BenchmarkID::cpuInteger, OutcomeStatus::ok, "another process took 1.4 cores", {{}, {noGpu, vm}}, "Sensors: another process took 1.4 cores \u00b7 energy not measured: a virtual machine exposes no power sensors"},
        {BenchmarkID::metalCompute, OutcomeStatus::ok, "", {{}, {vm, noGpu}}, "Sensors: energy not measured: no sensor"},
        {BenchmarkID::cpuInteger, OutcomeStatus::failed, "steady", {{package}, {}}, "Sensors: steady \u00b7 CPU package 31.2 J, 20.8 W average"},
        {BenchmarkID::cpuInteger, OutcomeStatus::skipped, "", {}, ""},
        // clang-format on
    };
    for (const auto& c : cases) {
        BenchmarkOutcome outcome;
        outcome.status = c.status;
        outcome.score = c.status == OutcomeStatus::ok ? 1200 : 0;
        ReportEntry entry = makeReportEntry(c.id, outcome);
        entry.statistics.traceSummary = c.summary;
        entry.statistics.energy = c.energy;
        EXPECT_EQ(sensorsText(entry), c.line);
    }
}

TEST(RunArguments, PercentagesAndPassCountsTakeTheirWholeRange) {
    // Whether `parsed` is accepted (for no `error`) or refused with a message that starts with it.
    const auto answers = [](const auto& parsed, const std::string& error) {
        const auto* refused = std::get_if<session::ArgumentError>(&parsed);
        return error.empty() ? refused == nullptr : refused && refused->message.starts_with(error);
    };
    const std::pair<std::string, std::string> percents[] = {
        {"0", ""}, // a gate that allows no slowdown at all
        {"2.5", ""},
        {"-1", "--fail-on-slower takes a percentage of zero or more, not -1"},
        {"fast", "--fail-on-slower takes a percentage such as 5 or 2.5, not 'fast'"},
        {"inf", "--fail-on-slower takes a percentage such as 5"},
    };
    for (const auto& [text, error] : percents)
        EXPECT_TRUE(answers(session::percentArgument("--fail-on-slower", text, false), error)) << text;
    EXPECT_TRUE(answers(session::percentArgument("--until-stable", "0", true),
                        "--until-stable takes a percentage above zero, not 0"));

    const struct {
        session::UntilStableArguments given;
        std::string error;
        int maxPasses;
    } stable[] = {
        // clang-format off
        {{true, "", "1", false}, "", 1},
        {{true, "", "100", false}, "", 100},
        {{true, "1.5", "999", false}, "", 999},
        {{true, "", "1000", false}, "--max-passes takes a whole number of passes from 1 to 999, not '1000'", 0},
        {{true, "", "0", false}, "--max-passes takes a whole number of passes from 1 to 999, not '0'", 0},
        {{true, "none", std::nullopt, false}, "--until-stable takes a percentage such as 5", 0},
        {{true, "", std::nullopt, true}, "--accuracy runs three passes, --until-stable as many as needed", 0},
        {{false, "", "3", false}, "--max-passes only counts the passes of --until-stable", 0},
        // clang-format on
    };
    for (const auto& c : stable) {
        const auto parsed = session::untilStableTarget(c.given);
        EXPECT_TRUE(answers(parsed, c.error)) << c.given.maxPasses.value_or("-");
        if (const auto* target = std::get_if<std::optional<StabilityTarget>>(&parsed);
            target && c.maxPasses) {
            EXPECT_EQ((*target)->maxPasses, c.maxPasses);
        }
    }
}
