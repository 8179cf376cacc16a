// SPDX-License-Identifier: Apache-2.0
#include "cli/card_command.h"

#include "results/json_report.h"
#include "session/card_writer.h"
#include "session/cards_directory.h"
#include "session/run_session.h"
#include "ui/cards/result_card_exporter.h"

namespace quarbel::cli {

int cardCommand(const std::string& reportPath, const std::string& outArgument, int& argc, char** argv) {
    auto parsed = readJsonReportFile(reportPath);
    if (const auto* problem = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
        return session::kExitBadInput;
    }
    const auto directory = session::prepareCardsDirectory("--out", outArgument);
    if (const auto* problem = std::get_if<std::string>(&directory)) {
        std::fprintf(stderr, "quarbel: %s\n", problem->c_str());
        return session::kExitBadInput;
    }
    const auto application = session::makeApplication(argc, argv, true);
    return session::writeCards(std::get<RunReport>(parsed), std::get<session::CardsDirectory>(directory).path,
                               stdout);
}

} // namespace quarbel::cli
