// SPDX-License-Identifier: Apache-2.0
// A run among others: the shipped reference results, and a run handed over as one HTML page,
// readable without Quarbel, imported back byte for byte, refused when its report was edited.
#include "process.h"
#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace quarbel;
using quarbel::testing::FakeTree;

namespace {

const std::string kQuarbel = QUARBEL_BINARY;

} // namespace

TEST(Share, APageCarriesItsReportBackByteForByteAndAnEditedOneIsRefused) {
    FakeTree tree;
    const std::vector<std::string> env{"XDG_DATA_HOME=" + tree.path("data"),
                                       "XDG_RUNTIME_DIR=" + tree.root()};
    const auto run = test::runProcess(
        {kQuarbel, "run", "cpuInteger", "--quick", "--no-history", "--json", tree.path("run.json")}, env);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::string original = tree.read("run.json");

    const auto shared =
        test::runProcess({kQuarbel, "share", tree.path("run.json"), "--out", tree.path("run.html")}, env);
    ASSERT_EQ(shared.exitCode, 0) << shared.err;
    const std::string page = tree.read("run.html");
    EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_NE(page.find("CPU Single-Core"), std::string::npos) << "the tables read without Quarbel";
    EXPECT_EQ(page.find("<script"), std::string::npos);

    // Each page a copy of the first with one change: where it is decides whether the report
    // is still the one that was shared.
    const std::size_t inside = page.find("data-sha256=\"") + 100;
    const struct {
        const char* name;
        std::string text;
        int exitCode;
        const char* says;
    } pages[] = {
        {"the report edited",
         page.substr(0, inside) + (page[inside] == 'A' ? 'B' : 'A') + page.substr(inside + 1), 2,
         "was altered after it was shared"},
        {"no report", "<!DOCTYPE html><html><body>hello</body></html>", 2, "is not"},
        {"the page as shared", page, 0, "imported as"},
        {"the same page again", page, 0, "already in the history"},
    };
    for (const auto& p : pages) {
        tree.write("copy.html", p.text);
        const auto imported = test::runProcess({kQuarbel, "import", tree.path("copy.html")}, env);
        EXPECT_EQ(imported.exitCode, p.exitCode) << p.name << ": " << imported.err;
        EXPECT_NE((imported.out + imported.err).find(p.says), std::string::npos)
            << p.name << ": " << imported.out << imported.err;
    }
    std::vector<std::filesystem::path> kept;
    for (const auto& entry : std::filesystem::directory_iterator(tree.path("data/quarbel/runs")))
        kept.push_back(entry.path());
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(tree.read("data/quarbel/runs/" + kept.front().filename().string()), original)
        << "the history holds the report as it was written";
}

TEST(Reference, ShippedRunsAreListedComparedAndMarkedWhenFromAnotherVersion) {
    FakeTree tree;
    std::ifstream shipped(QUARBEL_SOURCE_REFERENCE_DIR "/devvm-epyc2.json");
    std::stringstream text;
    text << shipped.rdbuf();
    std::string report = text.str();
    ASSERT_FALSE(report.empty());
    tree.write("refs/this-version.json", report);
    const std::string versionField = "\"version\": \"" QUARBEL_VERSION "\"";
    ASSERT_NE(report.find(versionField), std::string::npos);
    report.replace(report.find(versionField), versionField.size(), "\"version\": \"0.0.9\"");
    tree.write("refs/older.json", report);
    const std::vector<std::string> env{"QUARBEL_REFERENCE_DIR=" + tree.path("refs"),
                                       "XDG_DATA_HOME=" + tree.path("data")};

    const auto listed = test::runProcess({kQuarbel, "reference"}, env);
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    EXPECT_EQ(listed.out.find("older  "), 0u) << listed.out;
    EXPECT_NE(listed.out.find("(from Quarbel 0.0.9: judged only where that version scores alike)"),
              std::string::npos);
    EXPECT_NE(listed.out.find("\nthis-version  "), std::string::npos);
    EXPECT_EQ(listed.out.find("judged only", listed.out.find("this-version")), std::string::npos);

    const struct {
        const char* reference;
        int exitCode;
        const char* says;
    } comparisons[] = {
        {"this-version", 0, "within noise"},
        {"older", 0, "Quarbel " QUARBEL_VERSION " and 0.0.9 score it differently"},
        {"missing", 2, "no reference named 'missing'; there are older, this-version"},
    };
    for (const auto& c : comparisons) {
        const auto compared = test::runProcess(
            {kQuarbel, "compare", tree.path("refs/this-version.json"), "--reference", c.reference}, env);
        EXPECT_EQ(compared.exitCode, c.exitCode) << c.reference << ": " << compared.err;
        EXPECT_NE((compared.out + compared.err).find(c.says), std::string::npos)
            << c.reference << ": " << compared.out << compared.err;
    }
}
