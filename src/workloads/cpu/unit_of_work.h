// SPDX-License-Identifier: Apache-2.0
// The step every unit of work of every CPU workload starts with, on whichever thread
// runs it. repeatUntilBudget() takes it on the workload's own thread before each unit and
// parallelFor() on every thread before each index, so a kernel that uses either one
// cannot forget it.
#pragma once

namespace quarbel::cpu {

// Marks the upper halves of the AVX registers as unused (VZEROUPPER) where the CPU has
// them; does nothing elsewhere. About one cycle.
//
// Why: a new thread starts with its creator's register state. When the creator left the
// upper halves of the YMM registers in use (any AVX code without a closing VZEROUPPER:
// the Qt event loop, a libc routine), so do the workload thread and oneTBB's workers, and
// on many Intel cores every legacy-SSE instruction of our kernels then pays a merge
// dependency or a state transition: measured up to 16 times slower. The workloads cannot
// know who started their threads, so each unit starts from a clean state itself.
//
// Why not VEX-encoded builds of the kernels chosen at run time instead: they change the
// instructions of every kernel (and must be remembered for each new one), whereas this
// leaves the generated code, and so every checksum, exactly as it is, and also protects
// the library code the kernels call (SLEEF, OpenSSL, libm).
void beginUnitOfWork() noexcept;

namespace testing {
// Called at the end of every beginUnitOfWork() while set, on the thread that runs the
// unit: lets a test read the register state each unit starts from. nullptr removes it.
void setUnitStartObserver(void (*observer)()) noexcept;
} // namespace testing

} // namespace quarbel::cpu
