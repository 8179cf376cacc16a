// Checks of the `quarbel run` arguments, made before anything runs.
#pragma once

#include "model/catalogue.h"

#include <string>
#include <variant>
#include <vector>

namespace quarbel::session {

struct ArgumentError {
    std::string message; // one line, for standard error
};

// The benchmarks to run: all thirteen for `all`, else the named identifiers in the
// order given. Unknown and repeated identifiers, and `all` with identifiers, are errors.
std::variant<std::vector<BenchmarkID>, ArgumentError> benchmarksToRun(const std::vector<std::string>& names,
                                                                      bool all);

} // namespace quarbel::session
