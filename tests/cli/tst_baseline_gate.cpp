// SPDX-License-Identifier: Apache-2.0
// `quarbel run --baseline`: the gate CI jobs rely on, against real quick runs (its bad
// arguments are refused in tst_cli). Serial: a run made noisy by tests running beside it
// could not be judged.
#include "process.h"
#include "report_fixture.h"
#include "sensors/fake_tree.h"

#include <gtest/gtest.h>

using namespace quarbel;
using quarbel::test::mentions;
using quarbel::test::reportText;
using quarbel::testing::FakeTree;

TEST(RunAgainstBaseline, TheGateRerunsOnlyWhatItFlaggedAndExitsByWhatRemains) {
    FakeTree tree;
    const std::vector<std::string> env{"XDG_DATA_HOME=" + tree.root()};
    // Baselines a real quick CPU Single-Core run cannot match, cannot fail to beat, or cannot
    // be judged against (measured on a noisy machine). Memory Stream ran in neither.
    const auto baseline = [&](const char* name, double score, bool noisy,
                              std::vector<test::Result> more = {}) {
        more.insert(more.begin(), {"CPU Single-Core", score, std::nullopt, 0.01, noisy});
        tree.write(name, reportText("2026-11-23T10:00:00Z", more, "0.1.0", true));
    };
    baseline("fast.json", 1e12, false, {{"Memory Stream", 0}});
    baseline("slow.json", 1, false);
    baseline("noisy.json", 1000, true);
    const struct {
        const char* baseline;
        std::vector<std::string> arguments;
        int exitCode;
        std::size_t runs; // the first run and the confirming reruns
        const char* message;
    } cases[] = {
        // clang-format off
        {"fast.json", {"--fail-on-slower", "5", "--confirm", "1", "--junit", tree.path("j.xml")}, 3, 2, "slower than allowed (5.0 %): CPU Single-Core"},
        {"slow.json", {"--fail-on-slower", "--confirm", "2"}, 0, 1, ""},
        {"noisy.json", {"--fail-on-slower", "--confirm", "1"}, 4, 2, "could not judge: CPU Single-Core (noisy machine in A"},
        {"slow.json", {}, 0, 1, ""}, // compared and printed, no gate
        // clang-format on
    };
    for (const auto& c : cases) {
        std::vector<std::string> command{"run",          "cpuInteger", "--quick",
                                         "--no-history", "--baseline", tree.path(c.baseline)};
        command.insert(command.end(), c.arguments.begin(), c.arguments.end());
        const auto result = test::runQuarbel(command, env);
        // The run's own result is real: on a machine busy with other work it is rightly not
        // judged, and these verdicts cannot be checked.
        if (result.err.find("noisy machine in B") != std::string::npos)
            GTEST_SKIP() << "the machine is too busy to judge this run:\n" << result.err;
        SCOPED_TRACE(c.baseline + std::string(" ") + (c.arguments.empty() ? "" : c.arguments.front()));
        EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
        EXPECT_TRUE(mentions(result.err, c.message)) << result.err;
        EXPECT_TRUE(mentions(result.out, "Against the baseline " + tree.path(c.baseline))) << result.out;
        EXPECT_EQ(test::count(result.out, "Running"), c.runs) << result.out;
        EXPECT_FALSE(mentions(result.out, "Memory Stream (")) << "ran in neither run: not flagged";
    }
    const std::string xml = tree.read("j.xml");
    EXPECT_TRUE(mentions(xml, "tests=\"1\" failures=\"1\" errors=\"0\" skipped=\"0\"")) << xml;
    EXPECT_TRUE(mentions(xml, "after 2 comparisons")) << xml;
}
