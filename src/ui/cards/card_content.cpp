#include "ui/cards/card_content.h"

namespace quarbel::cards {

std::vector<BenchmarkCardContent> benchmarkCards(const RunReport& report, SystemTimePoint generatedAt) {
    std::vector<BenchmarkCardContent> cards;
    for (const ReportEntry& entry : report.results)
        cards.push_back({entry.id, entry.outcome, entry.temperatureAtEnd, entry.accuracyMode, report.quick,
                         generatedAt, report.system, report.appVersion, entry.stabilityPercent,
                         entry.statistics.uncertainty, entry.statistics.noisy});
    return cards;
}

std::optional<SummaryCardContent> summaryCard(const RunReport& report, SystemTimePoint generatedAt) {
    if (!report.summary) return std::nullopt;
    SummaryCardContent card{*report.summary,
                            {},
                            report.globalScore,
                            report.quick,
                            generatedAt,
                            report.system,
                            report.appVersion,
                            report.badges,
                            {},
                            {}};
    for (const ReportEntry& entry : report.results) {
        card.rows[entry.id] = {rowStateFor(entry.outcome.status), entry.outcome};
        if (entry.statistics.uncertainty) card.uncertainties[entry.id] = *entry.statistics.uncertainty;
        if (entry.statistics.noisy) card.noisy.insert(entry.id);
    }
    return card;
}

} // namespace quarbel::cards
