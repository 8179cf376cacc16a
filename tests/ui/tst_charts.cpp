// SPDX-License-Identifier: Apache-2.0
// The charts the window, the result cards and the HTML export share.
#include "text_recorder.h"
#include "ui/cards/html_export.h"
#include "ui/cards/line_chart.h"
#include "ui/cards/trace_chart.h"
#include "ui/views/trend_view.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

using namespace quarbel;
using namespace quarbel::cards;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

SensorTrace fullTrace() {
    SensorTrace t;
    t.seconds = {0.5f, 1, 1.5f, 2, 2.5f, 3, 3.5f, 4, 4.5f, 5};
    t.coreMHzMean = {4800, 4850, 4700, 4200, 3600, 3400, 3300, 3300, 3350, 800};
    t.coreMHzLow = {4500, 4600, 4400, 3900, 3100, 3000, 2900, 2900, 2950, 700};
    t.coreMHzHigh = {5100, 5100, 5000, 4600, 4000, 3800, 3700, 3700, 3700, 1200};
    t.cpuCelsius = {45, 60, 72, 80, 86, 88, 88, 87, 88, 70};
    t.cpuWatts = {12, 55, 60, 58, 52, 50, 48, 48, 49, 20};
    t.gpuWatts = {30, 120, 220, 210, 200, 190, 190, 185, 180, 40};
    t.gpuMHz = {600, 900, 900, 880, 850, 820, 800, 800, 790, 600};
    t.gpuThrottleReasons = {0, 0, 0, 4, 4, 4, 0, 0, 0, 0};
    t.otherCores = {0, 0.1f, 0.2f, 1.3f, 0.4f, 0, 0, 0, 0.2f, 0};
    t.packageLimitWatts = 65;
    return t;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++n;
    return n;
}

ReportEntry entry(BenchmarkID id, double score, SensorTrace trace = {}, std::string summary = {}) {
    ReportEntry e =
        makeReportEntry(id, {OutcomeStatus::ok, score, {"Rate", "1.0", "x/s"}, std::nullopt, 2, ""});
    e.statistics.uncertainty = RateUncertainty{20, 0.01, 19};
    e.statistics.trace = std::move(trace);
    e.statistics.traceSummary = std::move(summary);
    return e;
}

} // namespace

TEST(TraceChart, NamesEachLineWithItsRangeAndLaysItOutLegibly) {
    const ChartPalette palette = cardChartPalette();
    SensorTrace single, gaps, throttled;
    single.seconds = {0.5f};
    single.coreMHzMean = {3400};
    single.cpuCelsius = {kNaN}; // present but never read: nothing to name
    gaps.seconds = {0, 1, 2, 3, 4, 5};
    gaps.cpuCelsius = {40, kNaN, 55, 60, kNaN, 70};
    gaps.cpuWatts = {kNaN, 8.5f, 9, kNaN, 9.5f, 9.9f};
    throttled.seconds = {0, 1, 2, 3, 4};
    throttled.gpuWatts = {100, 250, 240, 230, 120};
    throttled.gpuThrottleReasons = {0, 0, 4, 4, 0};
    const struct {
        const char* name;
        SensorTrace trace;
        std::vector<QString> legend;
    } cases[] = {
        {"empty", {}, {}},
        {"single sample", single, {"CPU clock 3.40 GHz"}},
        {"NaN gaps", gaps, {"CPU 40–70 °C", "CPU 8.5–9.9 W"}},
        {"every column",
         fullTrace(),
         {"CPU clock 0.80–4.85 GHz", "CPU 45–88 °C", "CPU 12–60 W, limit 65 W", "GPU 30–220 W",
          "GPU clock 600–900 MHz", "Other processes 0.0–1.3 cores", "GPU throttled"}},
        {"throttled span", throttled, {"GPU 100–250 W", "GPU throttled"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(traceLegend(c.trace), c.legend);

        const QSize size(520, 150);
        const auto paint = [&](QPainter& p) {
            paintTraceChart(p, QRectF(QPointF(0, 0), size), c.trace, palette);
        };
        const QStringList texts = test::recordTexts(size, paint, true);
        for (const QString& text : c.legend)
            EXPECT_TRUE(texts.contains(text)) << text.toStdString() << " drawn whole";
        EXPECT_EQ(texts == QStringList{"No sensor readings"}, c.legend.empty());

        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        QPainter painter(&image);
        paint(painter);
        painter.end();
        EXPECT_EQ(image.pixelColor(260, 75).alpha(), 255);
    }
}

TEST(LineChart, RunLabelsStayApartAndInsideTheChart) {
    const struct Case {
        const char* name;
        std::size_t points;
        LineChart::Style style;
        QString label;
    } cases[] = {
        {"one bar", 1, LineChart::Style::bars, "quarbel-2026-11-23T14-15-02-a-very-long-report-name.json"},
        {"a few runs", 4, LineChart::Style::line, "run 12"},
        {"a band", 12, LineChart::Style::band, "12"},
        {"many long names", 40, LineChart::Style::line, "quarbel-2026-11-23T14-15-02.json"},
        {"many bars", 60, LineChart::Style::bars, "7"},
    };
    const QSize size(560, 180);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        LineChart chart{"Global score per run", Qt::cyan, {}, c.style};
        for (std::size_t i = 0; i < c.points; ++i)
            chart.points.push_back({c.label, 100.0 + double(i % 7), 3});
        const QStringList texts = test::recordTexts(
            size,
            [&](QPainter& p) { paintLineChart(p, QRectF(QPointF(0, 0), size), chart, cardChartPalette()); },
            true);
        EXPECT_GE(texts.size(), 4) << "the title, the range's two values and at least one label";
    }
}

TEST(HtmlExport, DrawsEveryChartAsInlineSvgWithItsTextEscaped) {
    RunReport first, second;
    first.appVersion = "0.1.0";
    first.globalScore = 120;
    first.results = {entry(BenchmarkID::cpuInteger, 100, fullTrace(), "thermal: 88 °C, clocks −30 % <&>"),
                     entry(BenchmarkID::memoryStream, 50)};
    second = first;
    second.startedAt = first.startedAt + std::chrono::hours(1);
    second.results[0].statistics.trace = {};
    const std::string html = exportHtml({{"b<&>.json", second}, {"runs/a.json", first}});

    EXPECT_EQ(html.find("<?xml"), std::string::npos);
    EXPECT_EQ(html.find("<script"), std::string::npos);
    // The global score, a chart per benchmark and the one trace, each made by the generator.
    EXPECT_EQ(count(html, "<svg "), 4u);
    EXPECT_EQ(count(html, "<svg width=\"560\" height=\"180\""), 3u);
    EXPECT_EQ(count(html, "<svg width=\"560\" height=\"150\""), 1u);
    EXPECT_EQ(count(html, "Generated with Qt"), 4u);
    EXPECT_NE(html.find("<title>Global score per run</title>"), std::string::npos);
    EXPECT_NE(html.find("<title>CPU Single-Core: sensors while it ran</title>"), std::string::npos) << html;
    // Run labels along the axis and the table: escaped, oldest run first.
    EXPECT_EQ(html.find("b<&>"), std::string::npos);
    EXPECT_NE(html.find(">b&lt;&amp;&gt;.json<"), std::string::npos);
    EXPECT_LT(html.find(">a</text>"), html.find(">b&lt;&amp;&gt;</text>"))
        << "the file name without .json, oldest first";
    EXPECT_NE(html.find("<span class=\"note\">thermal: 88 °C, clocks −30 % &lt;&amp;&gt;</span>"),
              std::string::npos);

    // One line per sensor in the trace, and one through each benchmark's scores.
    const std::size_t traceAt = html.find("<svg width=\"560\" height=\"150\"");
    const std::string trace = html.substr(traceAt, html.find("</svg>", traceAt) - traceAt);
    EXPECT_EQ(count(trace, "stroke-width=\"1.8\""), 6u) << trace;
    const std::size_t memoryAt = html.find("Memory Stream (points");
    const std::string memory = html.substr(memoryAt, html.find("</svg>", memoryAt) - memoryAt);
    EXPECT_EQ(count(memory, "stroke=\"#2ec4e8\" stroke-opacity=\"1\" stroke-width=\"2\""), 1u) << memory;
}

TEST(TrendView, PaintsEachSeriesChart) {
    ui::TrendView view;
    const QColor colour(240, 90, 200);
    std::vector<ui::TrendSeries> series;
    for (const char* title : {"CPU Integer", "Memory Stream", "SSD Sequential"})
        series.push_back({title, colour, {{100, 2}, {110, 0, true}, {105, 4, false, true}}});
    view.setSeries(series, "Full runs", "Nothing yet");
    view.resize(800, 560);

    test::TextRecorder recorder(view.size());
    view.render(&recorder);
    for (const ui::TrendSeries& s : series)
        EXPECT_TRUE(recorder.texts().contains(s.title)) << s.title.toStdString();
    const QImage image = view.grab().toImage();
    int coloured = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            coloured += image.pixelColor(x, y) == colour;
    EXPECT_GT(coloured, 3 * 30) << "three lines and their dots";
}
