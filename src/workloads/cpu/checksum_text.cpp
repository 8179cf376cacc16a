// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/checksum_text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quarbel::cpu {

std::string checksumPrefix(std::uint64_t checksum) {
    std::array<char, 16> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), checksum, 16);
    const auto length = std::min<std::ptrdiff_t>(result.ptr - digits.data(), 8);
    return std::string(digits.data(), static_cast<std::size_t>(length));
}

} // namespace quarbel::cpu
