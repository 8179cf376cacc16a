// SPDX-License-Identifier: Apache-2.0
#include "results/ci_gate.h"

#include "model/catalogue.h"
#include "model/number_format.h"
#include "results/markup_text.h"

#include <algorithm>

namespace quarbel {
namespace {

bool slowerThanAllowed(const ComparisonRow& row, double allowed) {
    if (row.compared.verdict != Verdict::slower || !row.notJudged.empty()) return false;
    return !row.compared.ratio || (1.0 - *row.compared.ratio) * 100.0 > allowed;
}

std::string changeText(const ComparisonRow& row) {
    const ComparedScore& c = row.compared;
    if (!c.ratio) return "no score in B";
    std::string text = signedFormat((*c.ratio - 1.0) * 100.0, 1) + " %" + " (B / A " + format(*c.ratio, 3);
    if (c.ratioLow && c.ratioHigh)
        text += ", 95 % interval " + format(*c.ratioLow, 3) + " to " + format(*c.ratioHigh, 3);
    return text + ")";
}

} // namespace

void CiGate::add(const RunComparison& comparison) {
    for (const auto& row : comparison.rows) {
        if (!last_.count(row.title)) order_.push_back(row.title);
        last_.insert_or_assign(row.title, row);
        ++attempts_[row.title];
    }
}

std::vector<std::string> CiGate::slower() const {
    std::vector<std::string> titles;
    for (const auto& title : order_)
        if (slowerThanAllowed(last_.at(title), allowed_)) titles.push_back(title);
    return titles;
}

std::vector<UnjudgedBenchmark> CiGate::unjudged() const {
    std::vector<UnjudgedBenchmark> benchmarks;
    for (const auto& title : order_) {
        const ComparisonRow& row = last_.at(title);
        if (!row.notJudged.empty() && !row.ranInNeither) benchmarks.push_back({title, row.notJudged});
    }
    return benchmarks;
}

std::vector<std::string> CiGate::toConfirm() const {
    std::vector<std::string> titles;
    for (const auto& title : order_) {
        const ComparisonRow& row = last_.at(title);
        if (slowerThanAllowed(row, allowed_) || (!row.notJudged.empty() && !row.ranInNeither))
            titles.push_back(title);
    }
    return titles;
}

int CiGate::exitCode() const {
    if (!slower().empty()) return kExitSlower;
    if (!unjudged().empty()) return kExitNotJudged;
    return 0;
}

std::string CiGate::junitXml(const std::string& suiteName) const {
    int failures = 0, errors = 0, skipped = 0;
    std::string cases;
    for (const auto& title : order_) {
        const ComparisonRow& row = last_.at(title);
        const auto id = std::find_if(kAllBenchmarks.begin(), kAllBenchmarks.end(),
                                     [&](BenchmarkID b) { return quarbel::title(b) == title; });
        const std::string classname =
            id != kAllBenchmarks.end() ? "quarbel." + std::string(rawValue(*id)) : "quarbel";
        cases += "    <testcase classname=\"" + escapedMarkup(classname) + "\" name=\"" +
                 escapedMarkup(title) + "\">\n";
        const std::string attempts = " after " + std::to_string(attempts_.at(title)) +
                                     (attempts_.at(title) == 1 ? " comparison" : " comparisons");
        if (row.ranInNeither) {
            ++skipped;
            cases += "      <skipped message=\"" + escapedMarkup(row.notJudged) + "\"/>\n";
        } else if (!row.notJudged.empty()) {
            ++errors;
            cases += "      <error type=\"could not judge\" message=\"" +
                     escapedMarkup(row.notJudged + attempts) + "\"/>\n";
        } else if (slowerThanAllowed(row, allowed_)) {
            ++failures;
            cases += "      <failure type=\"slower\" message=\"" +
                     escapedMarkup("slower than allowed (" + format(allowed_, 1) + " %): " + changeText(row) +
                                   attempts) +
                     "\"/>\n";
        }
        cases += "      <system-out>" +
                 escapedMarkup(std::string(verdictText(row.compared.verdict)) + ": " + changeText(row)) +
                 "</system-out>\n    </testcase>\n";
    }
    return "  <testsuite name=\"" + escapedMarkup(suiteName) + "\" tests=\"" + std::to_string(order_.size()) +
           "\" failures=\"" + std::to_string(failures) + "\" errors=\"" + std::to_string(errors) +
           "\" skipped=\"" + std::to_string(skipped) + "\">\n" + cases + "  </testsuite>\n";
}

} // namespace quarbel
