// SPDX-License-Identifier: Apache-2.0
// Which Quarbel versions score a benchmark the same way. A benchmark whose work or scoring
// changes records the version the change shipped in; runs from versions on the same side of
// that change compare on it, runs from either side of it do not.
#pragma once

#include "model/catalogue.h"

#include <optional>
#include <string_view>

namespace quarbel {

// The first version that scores `id` as the current one does, e.g. "0.1.0".
std::string_view scoredAlikeSince(BenchmarkID id);

// Whether reports of versions `a` and `b` ("0.1.0") score `id` alike; nullopt when either is
// not a version (a report that does not say), so that the caller can only warn.
std::optional<bool> scoredAlike(BenchmarkID id, std::string_view a, std::string_view b);

} // namespace quarbel
