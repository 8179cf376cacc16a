// SPDX-License-Identifier: Apache-2.0
// Large working sets on 2 MiB pages. A streaming kernel over arrays of 4 KiB pages spends a
// part of its time on page walks that depends on the kernel's transparent huge page default
// ("always" on some distributions, "madvise" on Debian and Ubuntu) and, under a hypervisor,
// on the host's page tables: a third of the memory stream's time on this project's virtual
// machines. Asking for huge pages makes the score the same kind of number on every machine
// where the kernel has them, and leaves it as before where it has none ("never").
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace quarbel::cpu {

// Allocates at a 2 MiB boundary, in whole 2 MiB pages, and asks the kernel to back the
// block with huge pages (MADV_HUGEPAGE) before anything touches it. Small requests get
// ordinary memory.
void* allocateOnHugePages(std::size_t bytes);
void freeFromHugePages(void* block) noexcept;

template <typename T> struct HugePageAllocator {
    using value_type = T;
    HugePageAllocator() = default;
    template <typename U> HugePageAllocator(const HugePageAllocator<U>&) noexcept {}
    T* allocate(std::size_t count) { return static_cast<T*>(allocateOnHugePages(count * sizeof(T))); }
    void deallocate(T* block, std::size_t) noexcept { freeFromHugePages(block); }
    template <typename U> bool operator==(const HugePageAllocator<U>&) const noexcept { return true; }
};

template <typename T> using HugePageVector = std::vector<T, HugePageAllocator<T>>;

} // namespace quarbel::cpu
