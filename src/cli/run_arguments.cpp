#include "cli/run_arguments.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace quarbel::cli {

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

std::string jsonPathProblem(const std::string& path) {
    namespace fs = std::filesystem;
    if (path.empty()) return "--json needs a file name";
    const fs::path file(path);
    std::error_code error;
    if (fs::is_directory(file, error)) return "--json " + path + " is a directory, not a file";
    const fs::path directory = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (!fs::is_directory(directory, error))
        return "--json: directory " + directory.string() + " does not exist";
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        return "--json: directory " + directory.string() + " is not writable (" + std::strerror(errno) + ")";
    }
    return {};
}

} // namespace quarbel::cli
