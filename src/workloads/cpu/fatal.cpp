// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace quarbel::cpu {

void fatalError(const char* what) noexcept {
    std::fprintf(stderr, "quarbel: fatal error in a CPU workload: %s\n", what);
    std::abort();
}

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) noexcept {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) fatalError("counter overflow");
    return sum;
}

std::int64_t checkedMultiply(std::int64_t a, std::int64_t b) noexcept {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) fatalError("counter overflow");
    return product;
}

} // namespace quarbel::cpu
