#include "cli/card_command.h"

#include "results/json_report.h"
#include "session/card_writer.h"
#include "session/cards_directory.h"
#include "session/run_session.h"
#include "ui/cards/result_card_exporter.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace quarbel::cli {

int cardCommand(const std::string& reportPath, const std::string& outArgument, int& argc, char** argv) {
    if (std::error_code ignored; std::filesystem::is_directory(reportPath, ignored)) {
        std::fprintf(stderr, "quarbel: %s is a directory, not a JSON report\n", reportPath.c_str());
        return session::kExitBadInput;
    }
    std::ifstream in(reportPath, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "quarbel: cannot read %s: %s\n", reportPath.c_str(), std::strerror(errno));
        return session::kExitBadInput;
    }
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) {
        std::fprintf(stderr, "quarbel: cannot read %s\n", reportPath.c_str());
        return session::kExitBadInput;
    }
    auto parsed = parseJsonReport(text.str());
    if (const auto* problem = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "quarbel: %s is not a Quarbel JSON report: %s\n", reportPath.c_str(),
                     problem->c_str());
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
