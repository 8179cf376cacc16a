// SPDX-License-Identifier: Apache-2.0
// What the report's readers share: the JSON types, and the error a reader throws from deep
// inside a member to give up on the whole value with one line that names the member.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quarbel::json_reading {

using json = nlohmann::json;
using ordered = nlohmann::ordered_json;

struct Malformed {
    std::string text;
};

} // namespace quarbel::json_reading
