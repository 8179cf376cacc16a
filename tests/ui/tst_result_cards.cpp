// SPDX-License-Identifier: Apache-2.0
// The result cards as a person reads them, the names they are saved under and their writing.
#include "text_recorder.h"
#include "ui/cards/result_card.h"
#include "ui/cards/result_card_exporter.h"
#include "ui/cards/result_card_palette.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace quarbel;
using namespace quarbel::cards;
namespace Exporter = quarbel::cards::ResultCardExporter;
namespace Palette = quarbel::cards::ResultCardPalette;

namespace {

const HardwareRows kHardware = {
    {"Architecture", "x86-64 (x86_64)"}, {"CPU", "Fake CPU 9000"},
    {"Cores", "8 logical cores"},        {"Memory", "16.0 GB"},
    {"GPU (Vulkan)", "Unavailable"},     {"Operating system", "Debian 12, kernel 6.1"}};

BenchmarkCardContent benchmarkContent(bool accuracyMode) {
    const BenchmarkOutcome outcome{OutcomeStatus::ok, 1234.56, {"Read", "2.50", " GB/s\n"},
                                   std::nullopt,      15.018,  "Wrote and read 1 GB."};
    return {BenchmarkID::ssdSequential,
            outcome,
            {52.0, std::nullopt, std::nullopt},
            accuracyMode,
            false,
            std::chrono::system_clock::now(),
            kHardware,
            "0.1.0",
            accuracyMode ? std::optional(62.5) : std::nullopt,
            RateUncertainty{20, 0.01, 19},
            accuracyMode};
}

// One benchmark done, one skipped, one failed, ten never run.
SummaryCardContent summaryContent() {
    SummaryCardContent content;
    content.summary = {"Selected Test Summary", 1, 1, 1, 3, 500, 150, 61.0, std::nullopt, {}};
    const BenchmarkOutcome done{
        OutcomeStatus::ok, 500, {"Rate", "3.1", "Mops/s"}, MeasurementLine{"Threads", "1", ""}, 1.5, "ok"};
    content.rows[BenchmarkID::cpuInteger] = {TestRunState::done, done};
    content.rows[BenchmarkID::metalCompute] = {TestRunState::skipped, skippedOutcome("No Vulkan device.")};
    content.rows[BenchmarkID::ssdRandom] = {TestRunState::failed, failedOutcome("Disk full.")};
    content.globalScore = 38.46;
    content.hardware = kHardware;
    content.appVersion = "0.1.0";
    content.badges = {"on battery", "throttling seen"};
    content.uncertainties[BenchmarkID::cpuInteger] = {20, 0.01, 19};
    content.noisy.insert(BenchmarkID::cpuInteger);
    return content;
}

// Every value as long as a real run could make it: nine-digit scores, long labels and units.
BenchmarkOutcome longOutcome() {
    return {OutcomeStatus::ok,
            123456789.0,
            {"Sequential Throughput", "123456789.12", "GB/s"},
            MeasurementLine{"Min/Max", "123456.7 / 234567.8", "FPS"},
            123456.78,
            "A detail long enough to need its three lines and more. " + std::string(300, 'x')};
}

// What a card says, each text legible: inside the card, clear of the others and of shapes it is not in.
QStringList benchmarkTexts(const BenchmarkCardContent& c) {
    return test::recordTexts(
        kBenchmarkCardSize, [&](QPainter& p) { paintBenchmarkCard(p, c); }, true);
}
QStringList summaryTexts(const SummaryCardContent& c) {
    return test::recordTexts(
        kSummaryCardSize, [&](QPainter& p) { paintSummaryCard(p, c); }, true);
}

const EnergyAbsence kNoPackage{PowerDomain::cpuPackage, "a virtual machine exposes no power sensors"};
const EnergyAbsence kNoGpu{PowerDomain::gpu, "a virtual machine exposes no power sensors"};
const EnergyAbsence kNoBattery{PowerDomain::battery, "no battery"};
const EnergyMeasurement kPackage{PowerDomain::cpuPackage, "RAPL package-0", 31.2, 20.8, 28.4};
const EnergyMeasurement kGpu{PowerDomain::gpu, "NVML", 400, 160, 181};

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(ResultCards, HaveExactlyTheirSizesAtScaleOneInThePaletteColours) {
    const QImage single = renderBenchmarkCard(benchmarkContent(false));
    const QImage global = renderSummaryCard(summaryContent());
    ASSERT_EQ(single.size(), QSize(1400, 900));
    ASSERT_EQ(global.size(), QSize(1500, 1220));
    EXPECT_EQ(single.devicePixelRatio(), 1.0);
    // Corners are background; the probes inside panels are in gaps between their contents.
    const std::tuple<const QImage&, QPoint, QColor> probes[] = {
        {single, {3, 3}, Palette::background()}, {single, {1396, 896}, Palette::background()},
        {single, {784, 480}, Palette::panel()},  {global, {3, 1216}, Palette::background()},
        {global, {1434, 600}, Palette::panel()}, {global, {1434, 220}, Palette::panel()},
    };
    for (const auto& [image, point, colour] : probes)
        EXPECT_EQ(QColor(image.pixel(point)).name().toStdString(), colour.name().toStdString())
            << point.x() << "," << point.y();
}

TEST(ResultCards, GlobalCardHasTheTableInOrderAndTheSkippedAndFailedSection) {
    const QStringList texts = summaryTexts(summaryContent());
    const qsizetype header = texts.indexOf(QStringLiteral("Benchmark")); // the table's captions
    ASSERT_GE(header, 0);
    for (BenchmarkID id : kAllBenchmarks)
        EXPECT_TRUE(texts.contains(QString::fromUtf8(title(id).data(), qsizetype(title(id).size()))))
            << rawValue(id);
    EXPECT_EQ(texts.count(QStringLiteral("Not Run")), 10);
    EXPECT_EQ(texts.count(QStringLiteral("Completed")), 2) << "the metric label and the done row";
    for (const char* expected :
         {"Selected Test Summary", "500.00", "1 / 3", "2.5m", "61 \u00B0C", "Unavailable", "1.50s",
          "3.1 Mops/s", "on battery", "throttling seen", "\u00b1 2.1 %, noisy"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(expected))) << expected;
    // Each measurement in the table is named: its label comes just before its value.
    const qsizetype firstRow = header + 6;
    for (const auto& [label, value] :
         {std::pair{"Rate", "3.1 Mops/s"}, {"Threads", "1"}, {"Status", "Skipped"}}) {
        const qsizetype at = texts.indexOf(QString::fromUtf8(label), firstRow);
        EXPECT_TRUE(at > 0 && texts.value(at + 1) == QString::fromUtf8(value))
            << label << ": " << texts.join('|').toStdString();
    }

    const qsizetype section = texts.indexOf(QStringLiteral("Skipped / Failed"));
    ASSERT_GT(section, header) << texts.join('|').toStdString();
    const QStringList listed = texts.mid(section);
    for (const char* expected :
         {"Metal Compute", "No Vulkan device.", "Skipped", "SSD Random", "Disk full.", "Failed"})
        EXPECT_TRUE(listed.contains(QString::fromUtf8(expected))) << expected;
    EXPECT_FALSE(listed.contains(QStringLiteral("CPU Single-Core"))) << "a completed benchmark is not listed";
}

TEST(ResultCards, LongValuesStayInsideTheirPlaces) {
    BenchmarkCardContent single = benchmarkContent(true);
    single.outcome = longOutcome();
    single.temperature = {123.4, 123.4, std::nullopt};
    SummaryCardContent global = summaryContent();
    global.summary = {"Full Suite Accuracy Summary", 13, 0, 0, 13, 123456789.0, 86399, 123.4, 123.4, {}};
    global.globalScore = 123456789.0;
    for (BenchmarkID id : kAllBenchmarks) {
        global.rows[id] = {TestRunState::done, longOutcome()};
        global.uncertainties[id] = {2, 0.9, 1}; // "± 1143.6 %"
    }
    single.uncertainty = RateUncertainty{2, 0.9, 1};
    single.traceSummary =
        "power-limited from 123.4 s (package 28 W cap); thermal: 97 \u00b0C, clocks \u221218 %; " +
        std::string(200, 'x');
    single.startCelsius = 123.4;
    single.energy.measured = {{PowerDomain::cpuPackage, "RAPL package-0", 1e9, 123456.7, 234567.8}};
    summaryTexts(global);
    EXPECT_TRUE(benchmarkTexts(single).contains(QStringLiteral("123456789"))) << "the score is shown whole";
}

// The primary rate per watt is on the domain that judges the benchmark; a measured line has no
// reason after a colon.
TEST(ResultCardContent, EnergyTextsNameEachDomainAndTheEfficiency) {
    const MeasurementLine gflops{"Compute", "17.06", "GFLOPS"};
    const std::string package =
        "CPU package 31.2 J \u00b7 20.8 W average \u00b7 28.4 W peak \u00b7 57.7 pts/J";
    const struct Case {
        const char* name;
        BenchmarkID id;
        ResultEnergy energy;
        MeasurementLine primary;
        std::vector<std::string> lines;
        const char* efficiency;
    } cases[] = {
        {"package measured",
         BenchmarkID::cpuInteger,
         {{kPackage}, {kNoGpu}},
         gflops,
         {package + " \u00b7 0.82 GFLOPS/W", "GPU: a virtual machine exposes no power sensors"},
         "57.7 pts/J \u00b7 20.8 W average (CPU package)"},
        {"a GPU benchmark is judged by the GPU; a rate with a slash",
         BenchmarkID::metalCompute,
         {{kPackage, kGpu}, {}},
         {"Rate", "12.50", " GB/s\n"},
         {package,
          "GPU 400 J \u00b7 160 W average \u00b7 181 W peak \u00b7 7.50 pts/J \u00b7 0.08 GB/s per W"},
         "7.50 pts/J \u00b7 160 W average (GPU)"},
        {"no rate per watt for a size",
         BenchmarkID::memoryStream,
         {{kPackage}, {}},
         {"Working Set", "183", "MB"},
         {package},
         "57.7 pts/J \u00b7 20.8 W average (CPU package)"},
        {"nothing measured",
         BenchmarkID::metalCompute,
         {{}, {kNoPackage, {PowerDomain::gpu, "no permission to read the GPU's power"}, kNoBattery}},
         gflops,
         {"CPU package: a virtual machine exposes no power sensors",
          "GPU: no permission to read the GPU's power", "Machine (battery): no battery"},
         "Energy: not measured (no permission to read the GPU's power)"},
        {"a report from before energy was recorded", BenchmarkID::cpuInteger, {}, gflops, {}, ""},
    };
    for (const Case& c : cases) {
        const BenchmarkOutcome outcome{OutcomeStatus::ok, 1200, c.primary, std::nullopt, 1, ""};
        const bool gpu = judgedByGpu(c.id, outcome);
        std::vector<std::string> lines;
        for (const EnergyLine& line : energyLines(c.energy, 1200, c.primary, gpu)) {
            lines.push_back(line.text);
            EXPECT_EQ(line.measured, line.text.find(": ") == std::string::npos) << line.text;
        }
        EXPECT_EQ(lines, c.lines) << c.name;
        EXPECT_EQ(efficiencyText(c.energy, 1200, gpu), c.efficiency) << c.name;
    }

    const std::tuple<const char*, std::optional<double>, const char*> sensors[] = {
        {"steady", std::nullopt, "Sensors: steady"},
        {"", 45.2, "Started at 45 \u00b0C"},
        {"", std::nullopt, ""},
    };
    for (const auto& [summary, celsius, text] : sensors)
        EXPECT_EQ(sensorsText(summary, celsius), text) << summary;

    // A run adds up each domain over the results that measured it.
    const ResultEnergy run = runEnergy({{{kPackage}, {kNoGpu, kNoBattery}},
                                        {{{PowerDomain::cpuPackage, "RAPL package-0", 10, 5, 6}}, {kNoGpu}},
                                        {}});
    EXPECT_EQ(runEnergyText(run), "Energy over the run: CPU package 41.2 J");
    EXPECT_EQ(runEnergyText(runEnergy({{{}, {kNoBattery, kNoPackage, kNoGpu}}})),
              "Energy not measured: a virtual machine exposes no power sensors");
    EXPECT_EQ(runEnergyText(runEnergy({{}, {}})), "");
}

TEST(ResultCards, SayWhatWasMeasuredWhenAndOnWhichMachine) {
    BenchmarkCardContent skipped = benchmarkContent(false);
    skipped.outcome = skippedOutcome("No OpenCL device.");
    skipped.temperature = TemperatureSnapshot::unavailable;
    RunReport report;
    const BenchmarkOutcome outcome = *summaryContent().rows[BenchmarkID::cpuInteger].outcome; // 500 points
    report.results = {makeReportEntry(BenchmarkID::memoryStream, outcome),
                      makeReportEntry(BenchmarkID::cpuInteger, outcome),
                      makeReportEntry(BenchmarkID::cpuCrypto, skippedOutcome("none"))};
    report.results[0].statistics.energy = {{kPackage}, {kNoGpu, kNoBattery}};
    report.results[0].statistics.traceSummary = "steady";
    report.results[0].statistics.startCelsius = 45;
    report.results[1].statistics.energy = {{}, {kNoPackage, kNoGpu, kNoBattery}};
    EXPECT_FALSE(summaryCard(report, {}).has_value()) << "a stopped run has no global card";
    report.summary = summaryContent().summary;
    const auto summary = summaryCard(report, {});
    ASSERT_TRUE(summary.has_value());
    EXPECT_EQ(summary->rows[BenchmarkID::cpuCrypto].state, TestRunState::skipped);
    EXPECT_EQ(summary->rows[BenchmarkID::memoryStream].state, TestRunState::done);
    EXPECT_EQ(summary->rows[BenchmarkID::ssdRandom].state, TestRunState::idle);
    const auto fromReport = benchmarkCards(report, {});
    ASSERT_EQ(fromReport.size(), 3u);
    EXPECT_EQ(fromReport[1].id, BenchmarkID::cpuInteger);
    const struct {
        const char* name;
        QStringList texts;
        std::vector<const char*> shown; // whole texts
        std::vector<const char*> absent = {};
    } cases[] = {
        {"a result",
         benchmarkTexts(benchmarkContent(false)),
         {"SSD Sequential", "1234.6", "\u00b1 2.1 % (95 %)", "Read", "2.50 GB/s", "15.02s",
          "52 \u00B0C / Unavailable", "Fake CPU 9000", "Debian 12, kernel 6.1"},
         {"Accuracy Mode", "Noisy machine"}},
        {"an accuracy result",
         benchmarkTexts(benchmarkContent(true)),
         {"Accuracy Mode", "Stability 62.5 % (throttling)", "Noisy machine"}},
        {"a skipped benchmark",
         benchmarkTexts(skipped),
         {"Skipped", "No OpenCL device.", "0.00s"},
         {"Quarbel points"}},
        {"measured energy",
         benchmarkTexts(fromReport[0]),
         {"24.0 pts/J \u00b7 20.8 W average (CPU package)", "Sensors: steady \u00b7 started at 45 \u00b0C"}},
        {"no energy measured",
         benchmarkTexts(fromReport[1]),
         {"Energy: not measured (a virtual machine exposes no power sensors)"}},
        {"the run's energy", summaryTexts(*summary), {"Energy over the run: CPU package 31.2 J"}},
    };
    for (const auto& c : cases) {
        for (const char* text : c.shown)
            EXPECT_TRUE(c.texts.contains(QString::fromUtf8(text)))
                << c.name << ": " << text << " in " << c.texts.join('|').toStdString();
        for (const char* text : c.absent)
            EXPECT_FALSE(c.texts.contains(QString::fromUtf8(text))) << c.name << ": " << text;
    }
    const QRegularExpression generated(QStringLiteral("^Generated \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d$"));
    EXPECT_EQ(cases[0].texts.filter(generated).size(), 1);
    EXPECT_TRUE(cases[0].texts.filter(QStringLiteral("Stability")).isEmpty()) << "not without enough reports";
    EXPECT_EQ(cases[2].texts.count(QStringLiteral("Unavailable")), 3)
        << "secondary line, temperatures, GPU row";
}

TEST(ResultCards, DurationAndStatusTexts) {
    const std::pair<double, const char*> durations[] = {{0, "0.0s"},  {42.04, "42.0s"}, {59.9, "59.9s"},
                                                        {60, "1.0m"}, {150, "2.5m"},    {3600, "60.0m"}};
    for (const auto& [seconds, text] : durations)
        EXPECT_EQ(summaryDurationText(seconds), QString::fromUtf8(text)) << seconds;
    // The other states' texts are on the global card above.
    EXPECT_EQ(rowStatusText(TestRunState::running), QStringLiteral("Running"));
}

TEST(ResultCardFilename, CollapsesRunsOfOtherCharactersTrimsDashesAndStampsTheLocalMinute) {
    const QDateTime at(QDate(2026, 3, 3), QTime(14, 5, 7));
    const std::pair<const char*, const char*> cases[] = {
        {"Quarbel-CPU Single-Core-Result", "Quarbel-CPU-Single-Core-Result-2026-03-03-1405.png"},
        {"Quarbel-Global-Result", "Quarbel-Global-Result-2026-03-03-1405.png"},
        {"Quarbel-SSD Real/Speed: (beta)-Result", "Quarbel-SSD-Real-Speed-beta--Result-2026-03-03-1405.png"},
        {"  /Quarbel  Tour?! ", "Quarbel-Tour-2026-03-03-1405.png"},
        {"--a.b_c--", "a.b_c-2026-03-03-1405.png"},
        {"Gr\u00FC\u00DFe  RAW", "Gr-e-RAW-2026-03-03-1405.png"},
    };
    for (const auto& [prefix, expected] : cases)
        EXPECT_EQ(Exporter::filename(QString::fromUtf8(prefix), at), QString::fromUtf8(expected)) << prefix;

    const QString prefix = Exporter::benchmarkCardPrefix(BenchmarkID::cpuInteger);
    EXPECT_EQ(prefix, QStringLiteral("Quarbel-CPU Single-Core-Result"));
    for (const auto& [time, minute] : {std::pair{QTime(14, 5, 59), "1405"}, {QTime(14, 6, 0), "1406"}})
        EXPECT_EQ(Exporter::filename(prefix, QDateTime(QDate(2026, 3, 3), time)),
                  QStringLiteral("Quarbel-CPU-Single-Core-Result-2026-03-03-%1.png").arg(minute));
}

TEST(ResultCardWrite, WritesThePngWholeOrKeepsTheOldFileAndSaysWhy) {
    const QImage card = renderSummaryCard(summaryContent());
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("card.png"));
    ASSERT_EQ(Exporter::writePNG(card, path), std::nullopt);
    EXPECT_EQ(QImage(path).size(), QSize(1500, 1220));
    const QByteArray written = contentsOf(path);
    const QByteArray folder = dir.path().toLocal8Bit();
    const struct {
        const char* name;
        std::function<std::optional<QString>()> write;
        QString problem = {}; // empty: the system's reason
    } failures[] = {
        {"nothing rendered", [&] { return Exporter::writePNG(QImage(), path); }, Exporter::renderErrorText()},
        {"file size limit",
         [&] { // the write runs out of room
             std::signal(SIGXFSZ, SIG_IGN);
             rlimit saved{};
             getrlimit(RLIMIT_FSIZE, &saved);
             const rlimit lowered{4096, saved.rlim_max};
             setrlimit(RLIMIT_FSIZE, &lowered);
             auto result = Exporter::writePNG(card, path);
             setrlimit(RLIMIT_FSIZE, &saved);
             return result;
         }},
        {"read-only folder",
         [&] {
             chmod(folder.constData(), 0555);
             auto result = Exporter::writePNG(card, path);
             chmod(folder.constData(), 0755);
             return result;
         }},
        {"a device", [&] { return Exporter::writePNG(card, QStringLiteral("/dev/full")); },
         "not a regular file"},
    };
    for (const auto& c : failures) {
        if (std::string(c.name) == "read-only folder" && geteuid() == 0) continue; // root writes anyway
        const auto problem = c.write();
        ASSERT_TRUE(problem.has_value() && !problem->isEmpty()) << c.name;
        if (c.problem.isEmpty()) {
            EXPECT_NE(*problem, Exporter::renderErrorText()) << c.name;
        }
        EXPECT_TRUE(problem->contains(c.problem)) << c.name << ": " << problem->toStdString();
        EXPECT_EQ(contentsOf(path), written) << c.name;
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1) << c.name;
    }
    struct stat status {};
    ASSERT_EQ(stat("/dev/full", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode)) << "the device is still there";
}
