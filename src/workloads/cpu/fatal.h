// SPDX-License-Identifier: Apache-2.0
// Contract checks for conditions that only a programming error can break (negative
// counts, counter overflow). They stop the process with a message instead of letting a
// workload continue on corrupt state; conditions a user can cause never come here.
#pragma once

#include <cstdint>

namespace quarbel::cpu {

[[noreturn]] void fatalError(const char* what) noexcept;

inline void require(bool condition, const char* what) noexcept {
    if (!condition) [[unlikely]]
        fatalError(what);
}

// a + b and a * b on signed 64-bit counters; overflow is fatal.
std::int64_t checkedAdd(std::int64_t a, std::int64_t b) noexcept;
std::int64_t checkedMultiply(std::int64_t a, std::int64_t b) noexcept;

} // namespace quarbel::cpu
