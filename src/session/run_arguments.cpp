#include "session/run_arguments.h"

#include <algorithm>

namespace quarbel::session {

std::variant<std::vector<BenchmarkID>, ArgumentError> benchmarksToRun(const std::vector<std::string>& names,
                                                                      bool all) {
    if (all && !names.empty())
        return ArgumentError{"--all runs every benchmark; leave out the identifiers or --all"};
    if (all) return std::vector<BenchmarkID>(kAllBenchmarks.begin(), kAllBenchmarks.end());
    if (names.empty()) return ArgumentError{"name the benchmarks to run, or pass --all (see 'quarbel list')"};

    std::vector<BenchmarkID> ids;
    for (const auto& name : names) {
        const auto id = benchmarkFromRawValue(name);
        if (!id) {
            std::string valid;
            for (BenchmarkID known : kAllBenchmarks)
                valid += (valid.empty() ? "" : ", ") + std::string(rawValue(known));
            return ArgumentError{"unknown benchmark '" + name + "'; valid identifiers: " + valid};
        }
        if (std::find(ids.begin(), ids.end(), *id) != ids.end()) {
            return ArgumentError{"benchmark '" + name + "' is named more than once"};
        }
        ids.push_back(*id);
    }
    return ids;
}

} // namespace quarbel::session
