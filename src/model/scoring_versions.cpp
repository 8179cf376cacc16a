// SPDX-License-Identifier: Apache-2.0
#include "model/scoring_versions.h"

#include <array>
#include <charconv>

namespace quarbel {
namespace {

// Major, minor and patch; nullopt for anything else ("", "dev", "1.2").
std::optional<std::array<unsigned, 3>> parsedVersion(std::string_view text) {
    std::array<unsigned, 3> parts{};
    const char* at = text.data();
    const char* end = text.data() + text.size();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            if (at == end || *at != '.') return std::nullopt;
            ++at;
        }
        const auto [next, error] = std::from_chars(at, end, parts[i]);
        if (error != std::errc{} || next == at) return std::nullopt;
        at = next;
    }
    // A suffix such as "-rc1" belongs to the same numbered version.
    if (at != end && *at != '-' && *at != '+') return std::nullopt;
    return parts;
}

} // namespace

// In catalogue order. Every benchmark still scores as the first release did; when one changes,
// its entry becomes the version that ships the change.
constexpr std::array<std::string_view, kBenchmarkCount> kScoredAlikeSince = {
    "0.1.0", "0.1.0", "0.1.0", "0.1.0", "0.1.0", "0.1.0", "0.1.0",
    "0.1.0", "0.1.0", "0.1.0", "0.1.0", "0.1.0", "0.1.0",
};

std::string_view scoredAlikeSince(BenchmarkID id) { return kScoredAlikeSince[indexOf(id)]; }

std::optional<bool> scoredAlike(BenchmarkID id, std::string_view a, std::string_view b) {
    const auto first = parsedVersion(a);
    const auto second = parsedVersion(b);
    const auto since = parsedVersion(scoredAlikeSince(id));
    if (!first || !second || !since) return std::nullopt;
    return (*first >= *since) == (*second >= *since);
}

} // namespace quarbel
