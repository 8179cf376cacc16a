// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/unit_of_work.h"

#include <atomic>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace quarbel::cpu {
namespace {

std::atomic<void (*)()> unitStartObserver{nullptr};

#if defined(__x86_64__) || defined(__i386__)
// VZEROUPPER is an AVX instruction: only CPUs (and kernels) with AVX state may run it.
const bool kCpuHasAvx = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx") != 0;
}();

__attribute__((target("avx"))) void zeroUpperHalves() noexcept { _mm256_zeroupper(); }
#endif

} // namespace

void beginUnitOfWork() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    if (kCpuHasAvx) zeroUpperHalves();
#endif
    if (auto* observer = unitStartObserver.load(std::memory_order_relaxed)) observer();
}

void testing::setUnitStartObserver(void (*observer)()) noexcept {
    unitStartObserver.store(observer, std::memory_order_relaxed);
}

} // namespace quarbel::cpu
