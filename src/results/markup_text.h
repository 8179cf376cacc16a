// SPDX-License-Identifier: Apache-2.0
// Text made safe inside HTML and XML: element content and double-quoted attribute values.
#pragma once

#include <string>

namespace quarbel {

// `&`, `<`, `>` and `"` as entities; everything else as it is.
std::string escapedMarkup(const std::string& text);

} // namespace quarbel
