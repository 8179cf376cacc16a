// SPDX-License-Identifier: Apache-2.0
// The directory that `quarbel run --cards` and `quarbel card --out` write result cards
// into, checked before anything runs so that cards that cannot be written are refused at
// once rather than lost after the run.
#pragma once

#include <string>
#include <variant>

namespace quarbel::session {

struct CardsDirectory {
    std::string path; // absolute
};

// Creates `argument` with its missing parents when it does not exist, and proves it
// writable by creating and removing a file in it. `option` names the argument in the
// one-line error ("--cards", "--out"). A relative path is made absolute against today's
// working directory.
std::variant<CardsDirectory, std::string> prepareCardsDirectory(const std::string& option,
                                                                const std::string& argument);

} // namespace quarbel::session
