// SPDX-License-Identifier: Apache-2.0
// A run shared as one HTML page carries its JSON report, byte for byte, base64-encoded in a
// hidden element with the report's SHA-256, so that the page can be imported again unchanged
// and a page whose report was edited is recognised.
#pragma once

#include <string>
#include <string_view>

namespace quarbel {

// `page` (a whole HTML document) with `reportText` embedded just before its </body>.
std::string embedReport(std::string page, std::string_view reportText);

// Whether `text` is a page made by embedReport (rather than a JSON report).
bool isSharedPage(std::string_view text);

struct SharedReport {
    std::string report;  // the report's bytes, as they were shared
    std::string problem; // set instead: "holds no Quarbel report", "was altered after it was shared: …"
};
SharedReport embeddedReport(std::string_view page);

// The SHA-256 of `bytes`, as 64 lowercase hexadecimal digits.
std::string sha256Hex(std::string_view bytes);

} // namespace quarbel
