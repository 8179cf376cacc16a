// SPDX-License-Identifier: Apache-2.0
// How checksums appear in the detail texts.
#pragma once

#include <cstdint>
#include <string>

namespace quarbel::cpu {

// Lower-case hexadecimal without leading zeros, cut to its first 8 characters
// ("0" for zero).
std::string checksumPrefix(std::uint64_t checksum);

} // namespace quarbel::cpu
