// SPDX-License-Identifier: Apache-2.0
// A plain stream triad, the yardstick for the memoryStream workload: the same three
// arrays of 16,000,000 floats with the same initial values, one thread, compiled at -O3.
// Usage: quarbel_triad_reference [seconds]; prints "bandwidth_gbs=<decimal GB/s> passes=<n>".
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 12.0;
    constexpr std::size_t n = 16'000'000;
    std::vector<float> a(n, 1.125f), b(n, 2.25f), c(n, 0.5f);

    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    long passes = 0;
    double elapsed = 0;
    do {
        const float scalar = static_cast<float>(1.01 + static_cast<double>(passes % 11) * 0.007);
        float* __restrict destination = c.data();
        const float* __restrict source = a.data();
        const float* __restrict scaled = b.data();
        for (std::size_t i = 0; i < n; ++i)
            destination[i] = source[i] + scalar * scaled[i];
        ++passes;
        elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    } while (elapsed < seconds);

    const double bandwidth = static_cast<double>(passes) * static_cast<double>(n) * 12 / elapsed / 1e9;
    std::printf("bandwidth_gbs=%.4f passes=%ld check=%g\n", bandwidth, passes, static_cast<double>(c[n / 2]));
    return 0;
}
