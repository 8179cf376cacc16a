// SPDX-License-Identifier: Apache-2.0
#include "workloads/cpu/huge_page_allocator.h"

#include <cstdlib>
#include <sys/mman.h>

namespace quarbel::cpu {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

} // namespace

void* allocateOnHugePages(std::size_t bytes) {
    if (bytes < kHugePage) {
        void* block = std::malloc(bytes == 0 ? 1 : bytes);
        if (block == nullptr) throw std::bad_alloc();
        return block;
    }
    const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* block = nullptr;
    if (::posix_memalign(&block, kHugePage, rounded) != 0) throw std::bad_alloc();
    // Advice only: a kernel without transparent huge pages refuses it, and the block works
    // on ordinary pages as before.
    ::madvise(block, rounded, MADV_HUGEPAGE);
    return block;
}

void freeFromHugePages(void* block) noexcept { std::free(block); }

} // namespace quarbel::cpu
